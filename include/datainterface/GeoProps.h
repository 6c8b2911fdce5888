// SPDX-License-Identifier: MIT
/// The summary of a geography that a host is given.
#pragma once
#include <QMap>
#include <QRectF>
#include <QSet>
#include <QString>
#include <QVariant>
#include <limits>
#include "datainterface/SpatialWeightSetProps.h"
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"

/// An id of -1 means that there is no such geography.
struct GeoProps {
    /// Values of `type`, one bit each.
    enum Type : int { Polygons = 1, Points = 2, Lines = 4, Raster = 8 };

    int id = -1;
    QString name;
    QMap<QString, QVariant> metaData;
    int type = 0;
    bool isStatic = false;
    TimeFormat timeFormat = TF_Date;
    /// Crossed ends as far apart as possible while there is no time to show, so that any hull with
    /// it works.
    TimeStamp timeBounds{std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min(),
                         true, true};
    QRectF bounds; ///< Top left is the smallest x and the smallest y.
    int objectCount = 0;
    int rows = 0; ///< of a raster, as the three below
    int columns = 0;
    double pixelWidth = 0.0;
    double pixelHeight = 0.0;
    QSet<int> datasetIds;
    QMap<int, SpatialWeightSetProps> weightSets; ///< by id
};
