// SPDX-License-Identifier: MIT
/// Results as datasets, for vector geographies and grids alike.
#pragma once
#include <QString>
#include <optional>
#include <vector>
#include "core/export.h"
#include "core/geostatistics/simulation.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

/// A new dataset of decimals in a geography. Destroying it without finish() removes the dataset, so
/// that work which fails leaves nothing behind.
class MERIDOR_EXPORT StoredValues {
public:
    /// Raises a Failure if the name is taken.
    /// @param isStatic  values that always hold. In a grid with times they hold over all of these.
    StoredValues(int geography, const QString &name, int realizations, bool isStatic);
    ~StoredValues();
    StoredValues(const StoredValues &) = delete;
    StoredValues &operator=(const StoredValues &) = delete;

    /// @param given   when the values hold, unless they always do.
    /// @param values  by object index or number of the cell; NaN is missing.
    void add(int realization, const Interval &given, const std::vector<double> &values);
    /// Announces the dataset. @param history  one line. @return its id.
    int finish(const QString &history);

private:
    int mId = -1;
    bool mRaster = false;
    std::optional<Interval> mAlways; ///< all times of a grid whose times have an end
    bool mFinished = false;
};

/// Adds a grid of square cells that covers the bounds. Raises a Failure for a cell size that is not
/// above 0 and for more than 100,000,000 cells.
/// @param dataset  the grid takes over the projection of its geography, and its times.
MERIDOR_EXPORT int makeGrid(const QString &name, double cell, const QRectF &bounds, int dataset);

/// The cells of a raster geography. Raises a Failure for another one.
MERIDOR_EXPORT SimulationGrid gridOf(int geography);

/// Raises a Failure if values at the times of the dataset cannot be stored in the geography. A
/// static geography without values over time takes the time format of the dataset.
MERIDOR_EXPORT void alignTimeFormat(int dataset, int geography);

} // namespace meridor
