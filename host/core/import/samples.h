// SPDX-License-Identifier: MIT
/// The sample data, and how each sample is imported.
#pragma once
#include <QString>
#include "core/export.h"
#include "core/import/importOptions.h"

namespace meridor {

/// The directory of samples, the first that exists of: those in `wanted`, ../share/meridor/samples
/// beside the installed program, and the directory named in the file samples-directory beside a
/// program in the build tree. Raises a Failure if there is none.
MERIDOR_EXPORT QString samplesDirectory(const QStringList &wanted);

enum class Sample {
    History,     ///< states and territories of two centuries
    Income,      ///< income per head of the contiguous states
    Rain,        ///< a grid of twelve months
    Temperature, ///< of the same months
    Counties     ///< of North Carolina
};
/// @param directory  see samplesDirectory().
MERIDOR_EXPORT ImportOptions sampleImport(Sample sample, const QString &directory);

} // namespace meridor
