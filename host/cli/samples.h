// SPDX-License-Identifier: MIT
/// The location of the sample data.
#pragma once
#include <QString>

namespace meridor {

/// The directory of samples, the first that exists of: `wanted`, $MERIDOR_SAMPLES,
/// ../share/meridor/samples beside the installed program, and the directory named in the file
/// samples-directory beside a program in the build tree. Raises a Failure if there is none.
QString samplesDirectory(const QString &wanted);

} // namespace meridor
