// SPDX-License-Identifier: MIT
/// The loaded project as people name it: geographies and datasets by name, objects by key.
#pragma once
#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <QVector>
#include "datainterface/DataType.h"
#include "datainterface/MVectorDataset.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/datum.h"
#include "core/project/times.h"

class MGeoData;
class MRasterDataset;
struct DatasetProps;
struct GeoProps;

namespace meridor {

class HostController;

/// The controller of the running session; there is one at a time.
HostController &controller();
void setController(HostController *controller);

/// Null for an unknown id.
MGeoData *geographyOf(int id);
MDataset *datasetOf(int id);
/// Null for other kinds.
MRasterDataset *rasterOf(int dataset);
QVector<int> geographyIds();
/// Ascending; empty for an unknown geography.
QVector<int> datasetIds(int geography);

/// A value as text that reads back.
QString textOf(const datum &value);
QJsonValue jsonValue(const datum &value);

QString geographyName(int id);
QString datasetName(int id);
TimeAxis axisOf(int geography);
const char *typeName(DataType type);
const char *storageName(MVectorDataset::StorageType storage);
/// "decimal"; of a raster with its depth, "decimal 32".
QString typeText(const DatasetProps &props);
const char *shapeName(int geographyType);
/// "33 rows, 81 columns".
QString gridText(const GeoProps &props);

/// By name; raises a Failure that lists what there is. An empty name stands for the only geography.
int findGeography(const QString &name);
/// "DATASET" when the name is there once, else "GEOGRAPHY/DATASET".
int findDataset(const QString &name);
int findDataset(int geography, const QString &name);

/// Raises a Failure for an empty name and one that a dataset of the geography has.
void requireNewDatasetName(int geography, const QString &name);

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
int keyDataset(int geography);
void setKeyDataset(int geography, int dataset);
/// The values of a dataset that name the objects: one each, for good, no two alike. Raises a
/// Failure.
QStringList uniqueTexts(int dataset);
/// Every object's key; without a key dataset its number from 1.
QStringList objectKeys(int geography);
/// By key, else by an unambiguous value of a text dataset that holds for good (a name). Raises a
/// Failure.
int findObject(int geography, const QString &text);

/// The time of the shapes that belong to values at `time`: a geography that holds for good has one.
qint64 shapeTime(int geography, qint64 time);
/// The objects that exist at a time, ascending; of a grid all cells.
QVector<int> objectsAt(int geography, qint64 time);

/// Every time at which the dataset has data, in order.
QVector<Interval> dataTimes(int dataset);
/// An instant inside.
qint64 instantOf(const Interval &interval);
/// The span that an option names; raises a Failure for a text that is no time.
Interval timeOption(const TimeAxis &axis, const char *option, const QString &text);
/// The instant that an option names; without one the last span of time in which objects stay as
/// they are.
qint64 chooseTimeOf(int geography, const QString &text);
/// The instant that an option names; without one the dataset's only time, or its last.
qint64 chooseTime(int dataset, const QString &text);

} // namespace meridor
