// SPDX-License-Identifier: MIT
/// From the loaded project to what its report shows.
#pragma once
#include "core/export.h"
#include "core/report/reportModel.h"

namespace meridor {

struct ReportPlan {
    QString project;      ///< the file that was loaded, for the command lines
    QString title;        ///< empty: the file's name
    QStringList datasets; ///< DATASET or GEOGRAPHY/DATASET; empty: all
    QStringList times;    ///< times and spans of the slider; empty: all
    double simplify = -1; ///< map units; bends of less than half its square go; negative: by itself
    int permutations = 999;
    int seed = 1;
};

/// Raises a Failure for a dataset or a time that is not there, and the cancel.
MERIDOR_EXPORT ReportProject gatherReport(const ReportPlan &plan);

} // namespace meridor
