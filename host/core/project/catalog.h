// SPDX-License-Identifier: MIT
/// The loaded project as people name it: geographies and datasets by name, objects by key.
#pragma once
#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <QVector>
#include "core/export.h"
#include "core/project/times.h"
#include "datainterface/DataType.h"
#include "datainterface/MVectorDataset.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/datum.h"

class ControllerBase;
class MGeoData;
class MRasterDataset;
struct DatasetProps;
struct GeoProps;

namespace meridor {

/// The library's controller; there is one at a time.
MERIDOR_EXPORT ControllerBase &controller();

/// Null for an unknown id.
MERIDOR_EXPORT MGeoData *geographyOf(int id);
MERIDOR_EXPORT MDataset *datasetOf(int id);
/// Null for other kinds.
MERIDOR_EXPORT MRasterDataset *rasterOf(int dataset);
MERIDOR_EXPORT QVector<int> geographyIds();
/// Ascending; empty for an unknown geography.
MERIDOR_EXPORT QVector<int> datasetIds(int geography);

/// A value as text that reads back.
MERIDOR_EXPORT QString textOf(const datum &value);
MERIDOR_EXPORT QJsonValue jsonValue(const datum &value);

MERIDOR_EXPORT QString geographyName(int id);
MERIDOR_EXPORT QString datasetName(int id);
MERIDOR_EXPORT TimeAxis axisOf(int geography);
MERIDOR_EXPORT const char *typeName(DataType type);
MERIDOR_EXPORT const char *storageName(MVectorDataset::StorageType storage);
/// "decimal"; of a raster with its depth, "decimal 32".
MERIDOR_EXPORT QString typeText(const DatasetProps &props);
MERIDOR_EXPORT const char *shapeName(int geographyType);
/// "33 rows, 81 columns".
MERIDOR_EXPORT QString gridText(const GeoProps &props);

/// By name; raises a Failure that lists what there is. An empty name stands for the only geography.
MERIDOR_EXPORT int findGeography(const QString &name);
/// "DATASET" when the name is there once, else "GEOGRAPHY/DATASET".
MERIDOR_EXPORT int findDataset(const QString &name);
MERIDOR_EXPORT int findDataset(int geography, const QString &name);

/// Raises a Failure for an empty name and one that a dataset of the geography has.
MERIDOR_EXPORT void requireNewDatasetName(int geography, const QString &name);

/// Calls with a value of the type that a dataset holds.
template <class Visit> void visitType(DataType type, Visit visit)
{
    if (type == DecimalType)
        visit(double());
    else if (type == IntegerType)
        visit(int());
    else
        visit(QString());
}

/// The dataset that holds the objects' keys, -1 when they have none. Kept with the geography.
MERIDOR_EXPORT int keyDataset(int geography);
MERIDOR_EXPORT void setKeyDataset(int geography, int dataset);
/// The values of a dataset that name the objects: one each, for good, no two alike. Raises a
/// Failure.
MERIDOR_EXPORT QStringList uniqueTexts(int dataset);
/// Every object's key; without a key dataset its number from 1.
MERIDOR_EXPORT QStringList objectKeys(int geography);
/// By key, else by an unambiguous value of a text dataset that holds for good (a name). Raises a
/// Failure.
MERIDOR_EXPORT int findObject(int geography, const QString &text);

/// The time of the shapes that belong to values at `time`: a geography that holds for good has one.
MERIDOR_EXPORT qint64 shapeTime(int geography, qint64 time);
/// The objects that exist at a time, ascending; of a grid all cells.
MERIDOR_EXPORT QVector<int> objectsAt(int geography, qint64 time);

/// Every time at which the dataset has data, in order.
MERIDOR_EXPORT QVector<Interval> dataTimes(int dataset);
/// The spans of data that hold at the times named, so that what is made of them holds as long; all
/// of them when none is named. Raises a Failure for a time without data.
MERIDOR_EXPORT QVector<Interval> dataTimesAt(int dataset, const QStringList &times);
/// An instant inside.
MERIDOR_EXPORT qint64 instantOf(const Interval &interval);
/// The last instant that belongs to it.
MERIDOR_EXPORT qint64 lastInstantOf(const Interval &interval);
/// The span that a text names; raises a Failure for a text that is no time.
MERIDOR_EXPORT Interval requireSpan(const TimeAxis &axis, const QString &text);
/// The instant that a text names; without one the last span of time in which objects stay as
/// they are.
MERIDOR_EXPORT qint64 chooseTimeOf(int geography, const QString &text);
/// The instant that a text names; without one the dataset's only time, or its last.
MERIDOR_EXPORT qint64 chooseTime(int dataset, const QString &text);

} // namespace meridor
