// SPDX-License-Identifier: MIT
/// Datasets by id.
///
/// `id` is a dataset's id, whose upper 16 bits are the geography's; `realization` counts from 0;
/// `object` is an object index, 0 to the geography's object count - 1; `t` is a time of the
/// geography. An unknown id, and the id of a dataset of the wrong kind, returns false, -1, 0, an
/// empty value or a default record without a message, and leaves the outputs unchanged.
#pragma once
#include <QList>
#include <QMap>
#include <QPair>
#include <QSet>
#include <QString>
#include <QVariant>
#include <QVector>
#include "datainterface/DataType.h"
#include "datainterface/DatasetProps.h"
#include "datainterface/MissingData.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/dataContainer.h"
#include "datainterface/datum.h"
#include "datainterface/export.h"

// Identification
DATAINTERFACE_EXPORT int VORN_GetGeographyId(int id); ///< id >> 16
/// The summary of a dataset. Its id is -1 for an unknown dataset.
DATAINTERFACE_EXPORT DatasetProps VORN_GetDatasetProperties(int id);
/// The first dataset, in order of id, with exactly that display name.
DATAINTERFACE_EXPORT int VORN_GetDatasetByName(int geographyId, const QString &name);

// Time lists
/// In order of time: the intervals of the slices or grids, or the common refinement of the
/// intervals of all objects.
DATAINTERFACE_EXPORT bool VORN_GetAllDatasetTimes(int id, int realization,
                                                  QVector<Interval> &intervals);
/// The intervals of one object, in order of time.
DATAINTERFACE_EXPORT bool VORN_GetDataIntervals(int id, int realization, int object,
                                                QVector<Interval> &intervals);
/// Empty for a dataset stored as series.
DATAINTERFACE_EXPORT bool VORN_GetTimeSliceDataIntervals(int id, int realization,
                                                         QVector<Interval> &intervals);

// Values of all objects at one time. The vector's type must be the dataset's; a missing object's
// element has no meaning.
DATAINTERFACE_EXPORT bool VORN_GetDataValues(int id, int realization, qint64 t,
                                             QVector<double> &values, QSet<int> &missing);
DATAINTERFACE_EXPORT bool VORN_GetDataValues(int id, int realization, qint64 t,
                                             QVector<int> &values, QSet<int> &missing);
DATAINTERFACE_EXPORT bool VORN_GetDataValues(int id, int realization, qint64 t,
                                             QVector<QString> &values, QSet<int> &missing);
/// Values of any type.
DATAINTERFACE_EXPORT bool VORN_GetDataValues(int id, int realization, qint64 t,
                                             QVector<datum> &values, QSet<int> &missing);
/// Numbers of either type; integers are converted to double.
DATAINTERFACE_EXPORT bool VORN_GetNumericValues(int id, int realization, qint64 t,
                                                QVector<double> &values, QSet<int> &missing);
/// The class of each object's value. Class i has the values above breaks[i] up to and including
/// breaks[i + 1], class 0 also those equal to breaks[0]. -1 for a missing value, for NaN and for a
/// value outside all classes.
/// @param breaks  ascending, one more than there are classes.
DATAINTERFACE_EXPORT bool VORN_GetClassNumbers(int id, int realization, qint64 t,
                                               const QVector<double> &breaks,
                                               QVector<int> &classes);
/// The slice as it is stored. False for a dataset that is stored as series.
DATAINTERFACE_EXPORT bool VORN_GetTimeSliceData(int id, int realization, qint64 t,
                                                QVector<double> &values, QSet<int> &missing);
DATAINTERFACE_EXPORT bool VORN_GetTimeSliceData(int id, int realization, qint64 t,
                                                QVector<int> &values, QSet<int> &missing);
DATAINTERFACE_EXPORT bool VORN_GetTimeSliceData(int id, int realization, qint64 t,
                                                QVector<QString> &values, QSet<int> &missing);
/// One object's intervals and values, pairwise, in order of time.
DATAINTERFACE_EXPORT bool VORN_GetObjectDataValues(int id, int realization, unsigned int object,
                                                   QVector<Interval> &intervals,
                                                   QVector<datum> &values);

// One value; false when it is missing.
DATAINTERFACE_EXPORT bool VORN_GetDataValue(int id, int realization, unsigned int object, qint64 t,
                                            datum &value);
/// The decimal field of the value; 0 for a dataset of another type.
DATAINTERFACE_EXPORT bool VORN_GetDataValue(int id, int realization, unsigned int object, qint64 t,
                                            double &value);
/// The integer field of the value; 0 for a dataset of another type.
DATAINTERFACE_EXPORT bool VORN_GetDataValue(int id, int realization, unsigned int object, qint64 t,
                                            int &value);
/// Copies at most `maxLength` bytes of the text, as strncpy does: a text that fills the buffer is
/// not terminated.
DATAINTERFACE_EXPORT bool VORN_GetDataValue(int id, int realization, unsigned int object, qint64 t,
                                            int maxLength, char *buffer);

// The history of one object in a dataset stored as series.
/// One object's entries. False for an object without a series and for another element type.
DATAINTERFACE_EXPORT bool VORN_GetTimeSeriesData(int id, int realization, unsigned int object,
                                                 QMap<Interval, double> &values);
DATAINTERFACE_EXPORT bool VORN_GetTimeSeriesData(int id, int realization, unsigned int object,
                                                 QMap<Interval, int> &values);
DATAINTERFACE_EXPORT bool VORN_GetTimeSeriesData(int id, int realization, unsigned int object,
                                                 QMap<Interval, QString> &values);
/// Replaces the object's entries. False for another element type, a static dataset and one stored
/// as slices.
DATAINTERFACE_EXPORT bool VORN_SetTimeSeriesData(int id, int realization, unsigned int object,
                                                 const QMap<Interval, double> &values);
DATAINTERFACE_EXPORT bool VORN_SetTimeSeriesData(int id, int realization, unsigned int object,
                                                 const QMap<Interval, int> &values);
DATAINTERFACE_EXPORT bool VORN_SetTimeSeriesData(int id, int realization, unsigned int object,
                                                 const QMap<Interval, QString> &values);

// Adding values.
// @param overwrite  whether a new value replaces a present one; otherwise it is stored only where
//                   no value is present.
// @param updateFrequencies  whether the frequency table is kept current. After adding many values
//         without it, call VORN_RecalculateDataFrequencies.
// These functions announce nothing: call VORN_DatasetChanged when done.
/// A whole slice, with one element for each object. Another size raises "Invalid object count".
DATAINTERFACE_EXPORT bool VORN_AddDataValues(int id, int realization, const Interval &interval,
                                             const QVector<double> &values,
                                             const QSet<int> &missing, bool overwrite,
                                             bool updateFrequencies);
DATAINTERFACE_EXPORT bool VORN_AddDataValues(int id, int realization, const Interval &interval,
                                             const QVector<int> &values, const QSet<int> &missing,
                                             bool overwrite, bool updateFrequencies);
DATAINTERFACE_EXPORT bool VORN_AddDataValues(int id, int realization, const Interval &interval,
                                             const QVector<QString> &values,
                                             const QSet<int> &missing, bool overwrite,
                                             bool updateFrequencies);
/// A whole slice of any type; false for a container of another size.
DATAINTERFACE_EXPORT bool VORN_AddDataValues(int id, int realization, const Interval &interval,
                                             VORN_DataContainer &values, bool overwrite,
                                             bool updateFrequencies);
/// Many values of one object.
DATAINTERFACE_EXPORT bool VORN_AddDataValues(int id, int realization, unsigned int object,
                                             const QVector<QPair<Interval, double>> &values,
                                             bool overwrite, bool updateFrequencies);
DATAINTERFACE_EXPORT bool VORN_AddDataValues(int id, int realization, unsigned int object,
                                             const QVector<QPair<Interval, int>> &values,
                                             bool overwrite, bool updateFrequencies);
DATAINTERFACE_EXPORT bool VORN_AddDataValues(int id, int realization, unsigned int object,
                                             const QVector<QPair<Interval, QString>> &values,
                                             bool overwrite, bool updateFrequencies);
/// One value.
DATAINTERFACE_EXPORT bool VORN_AddDataValue(int id, int realization, unsigned int object,
                                            const Interval &interval, double value, bool overwrite,
                                            bool updateFrequencies);
DATAINTERFACE_EXPORT bool VORN_AddDataValue(int id, int realization, unsigned int object,
                                            const Interval &interval, int value, bool overwrite,
                                            bool updateFrequencies);
DATAINTERFACE_EXPORT bool VORN_AddDataValue(int id, int realization, unsigned int object,
                                            const Interval &interval, const QString &value,
                                            bool overwrite, bool updateFrequencies);

// Creating and removing. A host creates a dataset, fills it, and then announces it to the views.
/// @param geographyId  the id of a vector geography.
/// @param path  "/level/level"; see MDataset::SetHierarchyPath.
/// @return the new id; -1 for an unknown geography and for an invalid type, storage type or number
///         of realizations.
DATAINTERFACE_EXPORT int VORN_NewVectorDataset(int geographyId, const QString &name,
                                               StorageType storage, DataType type, int realizations,
                                               const QString &path);
/// Announces a dataset that was created and filled.
DATAINTERFACE_EXPORT bool VORN_NewDatasetCreated(int id);
/// Makes one announcement for each geography, in order of its id. VORN_DatasetsChanged and
/// VORN_RemoveDatasets do the same.
DATAINTERFACE_EXPORT bool VORN_NewDatasetsCreated(const QVector<int> &ids);
/// Announces that values of the dataset have changed.
DATAINTERFACE_EXPORT bool VORN_DatasetChanged(int id);
/// The same for many.
DATAINTERFACE_EXPORT bool VORN_DatasetsChanged(const QVector<int> &ids);
/// Announces the removal while the dataset is alive, then deletes it.
DATAINTERFACE_EXPORT bool VORN_RemoveDataset(int id);
/// The same for many. An unknown geography in the list raises "gd".
DATAINTERFACE_EXPORT bool VORN_RemoveDatasets(const QVector<int> &ids);
/// Copies a dataset to a geography of the same kind and the same number of objects. The source does
/// not change.
/// @return the new id; -1 when an id is unknown or the geographies differ.
DATAINTERFACE_EXPORT int VORN_MigrateDataset(int id, int targetGeographyId, bool announce);

// Descriptions
/// False for an absent key.
DATAINTERFACE_EXPORT bool VORN_GetDatasetAttribute(int id, const QString &key, QVariant &value);
/// Sets a tag of the metadata. Also false, with nothing changed, for a value that MMetaData::setTag
/// refuses.
DATAINTERFACE_EXPORT bool VORN_SetDatasetAttribute(int id, const QString &key,
                                                   const QVariant &value);
/// A tag of the metadata as text; empty for an absent key.
DATAINTERFACE_EXPORT QString VORN_GetDatasetMetaData(int id, const QString &key);
/// Sets a tag of the metadata to a text.
DATAINTERFACE_EXPORT bool VORN_SetDatasetMetaData(int id, const QString &key, const QString &value);
/// Sets the one-line description.
DATAINTERFACE_EXPORT bool VORN_SetShortDescription(int id, const QString &text);
/// The history of the dataset.
DATAINTERFACE_EXPORT bool VORN_GetLongDescription(int id, QString &text);
/// Replaces the history of the dataset.
DATAINTERFACE_EXPORT bool VORN_SetLongDescription(int id, const QString &text);
/// Appends to the history without a separator.
DATAINTERFACE_EXPORT bool VORN_AppendToLongDescription(int id, const QString &text);

// Frequencies and statistics
/// Counts the frequency table again.
DATAINTERFACE_EXPORT bool VORN_RecalculateDataFrequencies(int id);
/// The number of keys in the frequency table.
/// @param isCapped  set to whether the table is full, in which case the dataset may hold more
///                  values.
DATAINTERFACE_EXPORT int VORN_GetUniqueDataCount(int id, bool &isCapped);
/// Ascending.
DATAINTERFACE_EXPORT bool VORN_GetUniqueDataValues(int id, QList<datum> &values);
/// The mean of the values present at `t`; false when there is none.
DATAINTERFACE_EXPORT bool VORN_GetMean(int id, int realization, qint64 t, double &mean);
/// The population standard deviation.
DATAINTERFACE_EXPORT bool VORN_GetStddev(int id, int realization, qint64 t, double &deviation);
/// The largest value at `t`; false when there is none.
DATAINTERFACE_EXPORT bool VORN_GetMax(int id, int realization, qint64 t, double &value);
/// The smallest value at `t`; false when there is none.
DATAINTERFACE_EXPORT bool VORN_GetMin(int id, int realization, qint64 t, double &value);
/// Over all times.
DATAINTERFACE_EXPORT bool VORN_GetMax(int id, int realization, double &value);
DATAINTERFACE_EXPORT bool VORN_GetMin(int id, int realization, double &value);
/// The number of objects with a value at `t` in realization 0.
DATAINTERFACE_EXPORT unsigned int VORN_GetDataCount(int id, qint64 t);
/// Whether any object has a value at `t` in realization 0.
DATAINTERFACE_EXPORT bool VORN_HasDataAtTime(int id, qint64 t);
/// Whether the values at `t` look like normal scores: their mean is 0 and their median is that of
/// the normal distribution.
DATAINTERFACE_EXPORT bool VORN_IsNormalScoreDataset(int id, qint64 t);
/// Transforms simulated normal scores back. If the dataset holds normal scores, the k-th smallest
/// value of `result` (the values of the realization) becomes the k-th smallest of `scores`;
/// otherwise `result` holds the values of the realization. The test for normal scores is made once;
/// its result is kept in the metadata under "Normal scores".
DATAINTERFACE_EXPORT bool VORN_GetRealizationValues(int id, int realization, qint64 t,
                                                    const VORN_DataContainer &scores,
                                                    VORN_DataContainer &result);

// Missing data
/// Whether the object has no value at `t`.
DATAINTERFACE_EXPORT bool VORN_IsVectorDataMissing(int id, int realization, unsigned int object,
                                                   qint64 t);
/// The objects without a value at `t`, including those that do not exist at `t`.
DATAINTERFACE_EXPORT bool VORN_GetMissingVectorIds(int id, int realization, qint64 t,
                                                   QSet<int> &missing);
/// Marks the object as missing over the interval.
DATAINTERFACE_EXPORT bool VORN_SetMissingVectorId(int id, int realization, unsigned int object,
                                                  const Interval &interval);
/// The objects that are missing in any realization at `t`. An unknown dataset raises "Invalid
/// dataset id".
DATAINTERFACE_EXPORT bool VORN_GetAllMissingRealizationLocations(int id, qint64 t,
                                                                 VORN_MissingData &missing);
