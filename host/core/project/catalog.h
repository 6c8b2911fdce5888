// SPDX-License-Identifier: MIT
/// Access to the loaded project: geographies and datasets by name, objects by key, and times.
#pragma once
#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <QVector>
#include <optional>
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
/// Null if the dataset is no raster.
MERIDOR_EXPORT MRasterDataset *rasterOf(int dataset);
MERIDOR_EXPORT QVector<int> geographyIds();
/// Ascending; empty for an unknown geography.
MERIDOR_EXPORT QVector<int> datasetIds(int geography);

/// A value as text from which the same value can be read.
MERIDOR_EXPORT QString textOf(const datum &value);
MERIDOR_EXPORT QJsonValue jsonValue(const datum &value);

MERIDOR_EXPORT QString geographyName(int id);
MERIDOR_EXPORT QString datasetName(int id);
MERIDOR_EXPORT TimeAxis axisOf(int geography);
MERIDOR_EXPORT const char *typeName(DataType type);
MERIDOR_EXPORT const char *storageName(MVectorDataset::StorageType storage);
/// "decimal"; for a raster with its depth in bits, "decimal 32".
MERIDOR_EXPORT QString typeText(const DatasetProps &props);
MERIDOR_EXPORT const char *shapeName(int geographyType);
/// "33 rows, 81 columns".
MERIDOR_EXPORT QString gridText(const GeoProps &props);

/// The id for a name; an empty name means the only geography. Raises a Failure that lists the names
/// of the project if there is no match.
MERIDOR_EXPORT int findGeography(const QString &name);
/// @param name  "DATASET" if only one geography has a dataset of this name, else
///              "GEOGRAPHY/DATASET". Raises a Failure if there is no match or more than one.
MERIDOR_EXPORT int findDataset(const QString &name);
MERIDOR_EXPORT int findDataset(int geography, const QString &name);

/// Raises a Failure if the name is empty or a dataset of the geography has it.
MERIDOR_EXPORT void requireNewDatasetName(int geography, const QString &name);
/// Raises a Failure if a geography has this name.
MERIDOR_EXPORT void requireNewGeographyName(const QString &name);

/// The dataset that holds the objects' keys; -1 if there is none. Its id is a metadata tag of the
/// geography, so it is saved with the project.
MERIDOR_EXPORT int keyDataset(int geography);
MERIDOR_EXPORT void setKeyDataset(int geography, int dataset);
/// The values of a static dataset that identifies objects, by object. Raises a Failure if the
/// dataset changes over time, if an object has no value, or if two objects have the same one.
MERIDOR_EXPORT QStringList uniqueTexts(int dataset);
/// The key of every object, by object index; without a key dataset the index plus 1.
MERIDOR_EXPORT QStringList objectKeys(int geography);
/// Those of some objects. Without a key dataset, as in most grids, no other ones are made.
MERIDOR_EXPORT QStringList objectKeys(int geography, const QVector<int> &objects);
/// The dataset of texts that names the objects for people: one that is called "name", else one whose
/// name contains it, else a static one whose texts are all different; -1 if there is none. It is
/// never the key dataset.
MERIDOR_EXPORT int nameDataset(int geography);
/// The name of every object, by object index: the text at `time`, else the latest; null for an object
/// without one. Empty if there is no name dataset.
MERIDOR_EXPORT QStringList objectNames(int geography, std::optional<qint64> time = std::nullopt);
/// The index of an object: by key, else by its value in any static text dataset, such as a name.
/// Raises a Failure if no object matches, or several match by value.
MERIDOR_EXPORT int findObject(int geography, const QString &text);

/// The time at which to ask for the shapes that belong to values at `time`: the start of the bounds
/// for a static vector geography, else `time`.
MERIDOR_EXPORT qint64 shapeTime(int geography, qint64 time);
/// The indices of the objects that exist at a time, ascending; all cells of a grid.
MERIDOR_EXPORT QVector<int> objectsAt(int geography, qint64 time);

/// Every time at which the dataset has data, in order.
MERIDOR_EXPORT QVector<Interval> dataTimes(int dataset, int realization = 0);
/// The intervals of the dataset that contain the given times, so that derived data can be stored
/// under the same intervals; all intervals if `times` is empty. Raises a Failure for a time without
/// data.
MERIDOR_EXPORT QVector<Interval> dataTimesAt(int dataset, const QStringList &times,
                                             int realization = 0);
/// The same for results that depend on the shapes: those of a static dataset have the intervals over
/// which the objects of its geography do not change.
MERIDOR_EXPORT QVector<Interval> shapeTimesAt(int dataset, const QStringList &times,
                                              int realization = 0);
/// The index, from 0, of the realization with this number, from 1. Raises a Failure of the setting
/// "realization" if the dataset has no such realization.
MERIDOR_EXPORT int realizationIndex(int dataset, int number);
/// The same for one of several datasets that are shown together: a dataset with a single
/// realization is shown as it is beside one that has several.
MERIDOR_EXPORT int realizationIndex(int dataset, int number, const QVector<int> &together);
/// An instant inside the interval.
MERIDOR_EXPORT qint64 instantOf(const Interval &interval);
/// The last instant of the interval.
MERIDOR_EXPORT qint64 lastInstantOf(const Interval &interval);
/// The span of a text; raises a Failure if the text is no time of this axis.
MERIDOR_EXPORT Interval requireSpan(const TimeAxis &axis, const QString &text);
/// The first instant of a text; for an empty text an instant in the last interval in which no
/// object changes. Raises a Failure.
MERIDOR_EXPORT qint64 chooseTimeOf(int geography, const QString &text);
/// The first instant of a text; for an empty text an instant in the last interval of the dataset.
/// Raises a Failure.
MERIDOR_EXPORT qint64 chooseTime(int dataset, const QString &text, int realization = 0);

} // namespace meridor
