// SPDX-License-Identifier: MIT
/// Where the sample data are.
#pragma once
#include <QString>

namespace meridor {

/// The directory of samples: `wanted`, else $MERIDOR_SAMPLES, else beside the installed program
/// (../share/meridor/samples), else where the build tree's note beside the program points. Raises a
/// Failure.
QString samplesDirectory(const QString &wanted);

} // namespace meridor
