// SPDX-License-Identifier: MIT
/// Collects the content of a report from the loaded project.
#pragma once
#include "core/export.h"
#include "core/report/reportModel.h"

namespace meridor {

struct ReportPlan {
    QString project; ///< the file of the project, whose name and size are shown
    QString title;   ///< empty: the file's name
    /// DATASET or GEOGRAPHY/DATASET; empty: all. The page of a geography opens on the first one
    /// that is named.
    QStringList datasets;
    /// From 1, of the datasets that have several.
    int realization = 1;
    QStringList times; ///< times and spans of the slider; empty: all
    /// Times of the small maps side by side, of grids and of polygons that change; empty: four are
    /// chosen for such polygons.
    QStringList sideMaps;
    /// Datasets, named as above, of grids or of polygons: their maps are side by side instead.
    QStringList beside;
    /// Groups of datasets of one geography with the classes of the first one, whose ends are moved
    /// so far outwards that they hold the values of all.
    QVector<QStringList> sameClasses;
    /// In map units: bends with an area below half its square are removed. Negative: chosen by the
    /// extent of the map.
    double simplify = -1;
    int permutations = 999;
    int seed = 1;
};

/// The lists of commands are left empty for the caller, which knows its own command line.
/// Raises a Failure for a dataset or a time that does not exist, and on a cancel.
MERIDOR_EXPORT ReportProject gatherReport(const ReportPlan &plan);

} // namespace meridor
