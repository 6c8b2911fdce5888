// SPDX-License-Identifier: MIT
/// Geographies and datasets of grids, for the imports of rasters and of cubes.
#pragma once
#include <QRectF>
#include <QString>
#include "core/import/importOptions.h"
#include "datainterface/DataType.h"
#include "datainterface/MRasterBand.h"
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

/// A grid whose cells are written in place, so that a reader needs no buffer beside it.
class GridBuffer : public MRasterBand {
public:
    using MRasterBand::MRasterBand;
    char *bytes() { return mData.data(); }
};

struct GridPlace {
    int rows = 0;
    int columns = 0;
    QRectF bounds;
    QString projection;
    Interval hull{0, 0, true, true};
    TimeFormat format = TF_Integer;
    bool isStatic = false;
};

/// Raise a Failure.
int addGridGeography(const ImportOptions &options, const GridPlace &place);
int addGridDataset(int geography, const QString &name, DataType type, int bits, int realizations,
                   const QString &unit);
/// Counts the distinct values of a dataset, unless they are too many, and announces it.
/// @param cells  of all its grids.
void finishGridDataset(int dataset, qint64 cells);

} // namespace meridor
