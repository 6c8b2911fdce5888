// SPDX-License-Identifier: MIT
/// The data source of a vector geography.
#pragma once
#include <QPair>
#include <QSet>
#include <QVector>
#include "datainterface/MDataSource.h"
#include "datainterface/MVectorDataset.h"
#include "datainterface/TimeFormat.h"

/// Adds the number of objects, the making of datasets, the typed values, conversions, imports and
/// exports. An unknown id gives false, 0 or an empty value; a text here names what raises.
class DATAINTERFACE_EXPORT MVectorDataSource : public MDataSource {
    Q_OBJECT
public:
    explicit MVectorDataSource(const QString &directory);
    MVectorDataSource(const QString &directory, unsigned int objectCount, int idSeed);

    bool SaveToStream(QDataStream &out) override;
    bool RestoreFromStream(QDataStream &in) override;
    unsigned int GetObjectCount() const override { return mObjectCount; }
    bool IsDatasetIdValid(int id) const override;
    /// The next index; row and column stay.
    void IncDisplayIndex(double &index, double &row, double &column) const override;
    using MDataSource::AddTimeSliceValues;
    bool GetCommonTimeStamp(int id, int realization, qint64 t, TimeStamp &stamp) const override;
    QList<double> GetIntervalBreaks(int id, int realization, int count,
                                    MDataset::ClassificationType type, bool flag) override;
    QMap<MDatum, int> GetDataFrequencies(int id) override;
    int GetUniqueValueCount(int id) const override;
    bool SetHierarchyPath(int id, const QString &path) override;
    bool SetHierarchyPath(int id, const QList<MDataset::pathLevel> &path) override;
    bool GetHierarchyPath(int id, QList<MDataset::pathLevel> &path) const override;
    bool GetHierarchyPathAsString(int id, QString &path) const override;
    bool GetTimeBounds(int id, TimeStamp &bounds) const override;
    TimeStamp GetTimeBounds() override;
    bool GetMean(int id, int realization, qint64 t, double &mean) override;
    bool GetStddev(int id, int realization, qint64 t, double &deviation) override;
    bool GetMax(int id, int realization, qint64 t, MDatum &value) override;
    bool GetMin(int id, int realization, qint64 t, MDatum &value) override;
    bool GetGlobalMin(int id, int realization, MDatum &value) override;
    bool GetGlobalMax(int id, int realization, MDatum &value) override;
    bool IsNumeric(int id) const override;

    /// All datasets or none: after a refusal each has its old size again.
    virtual bool Resize(unsigned int objectCount);
    /// @return the new dataset's id. Nothing is announced: the caller fills it first.
    virtual int NewVectorDataset(const QString &name, DataType type,
                                 MVectorDataset::StorageType storage, int realizations,
                                 const QString &path);
    virtual int NewVectorDataset(const QString &name, DataType type,
                                 MVectorDataset::StorageType storage, int realizations,
                                 const QList<MDataset::pathLevel> &path);

    // One row for each object and interval at which a dataset has data between `start` and `end`,
    // both included. `missing` stands for a missing value. False when the file cannot be made or
    // written, for an id that is no vector dataset of this source, and after a cancel.
    /// A dBASE table. Blanks in names become underscores, names are cut to ten characters and kept
    /// distinct with a number; a cut name is told to the log. Dates and times are the integers
    /// yyyymmdd and hhmmss.
    virtual bool ExportDatasetsAsDBF(const QString &fileName, const QList<DataId> &ids,
                                     TimeFormat format, qint64 start, qint64 end,
                                     const QString &missing, int realization);
    /// GeoEAS text. A cancel leaves no file.
    virtual bool ExportDatasetsAsGeoeas(const QString &fileName, const QString &title,
                                        const QList<DataId> &ids, TimeFormat format, qint64 start,
                                        qint64 end, const QString &missing, int realization);
    /// Comma-separated text with a header line; numbers in seven significant digits.
    virtual bool ExportDatasetsAsCSV(const QString &fileName, const QList<DataId> &ids,
                                     TimeFormat format, qint64 start, qint64 end,
                                     const QString &missing, int realization);

    /// Copies every dataset of `source`. @param objectMap  for each object here its position there.
    virtual void ImportFromDataSource(MDataSource *source, const QVector<int> &objectMap);
    /// @return the new dataset's id, -1 when it cannot be copied. Raises "Invalid dataset id" and
    /// "bad dataset type".
    virtual int ImportDatasetFromDataSource(MDataSource *source, int id,
                                            const QVector<int> &objectMap, bool announce);
    /// A new dataset of another type with the values of `id`, which stays as it is.
    /// @param precision  decimals of a number that becomes text.
    /// @return the new id, announced; -1 after a cancel. Raises "Invalid dataset id" and "Invalid
    /// dataset type".
    virtual int ConvertDataset(int id, const QString &name, DataType type, int precision);

    /// Characters that the dataset's longest value takes, and the digits of them behind the point.
    virtual bool GetDataWidths(int id, int &width, int &decimals);
    virtual unsigned int GetUniqueCount(int id);
    virtual QList<TimeStamp> GetTimeSliceIntervals(int id, int realization);
    virtual QList<TimeStamp> GetDataIntervals(int id, int realization, unsigned int object);
    virtual MDatum GetVectorDataValue(int id, int realization, unsigned int object, qint64 t,
                                      bool interpolate);
    /// One value of one object; see MVectorDataset, also for the two below.
    virtual bool AddDataValue(int id, int realization, unsigned int object, const TimeStamp &stamp,
                              const MDatum &value, bool overwrite, bool updateFrequencies);
    /// Many values of one object.
    virtual bool AddTimeSeriesValues(int id, int realization, unsigned int object,
                                     const QVector<QPair<TimeStamp, QString>> &values,
                                     bool overwrite, bool updateFrequencies);
    virtual bool AddTimeSeriesValues(int id, int realization, unsigned int object,
                                     const QVector<QPair<TimeStamp, int>> &values, bool overwrite,
                                     bool updateFrequencies);
    virtual bool AddTimeSeriesValues(int id, int realization, unsigned int object,
                                     const QVector<QPair<TimeStamp, double>> &values,
                                     bool overwrite, bool updateFrequencies);
    virtual bool AddTimeSliceValues(int id, int realization, const TimeStamp &stamp,
                                    const QVector<QString> &values, const QSet<int> &missing,
                                    bool overwrite, bool updateFrequencies);
    virtual bool AddTimeSliceValues(int id, int realization, const TimeStamp &stamp,
                                    const QVector<int> &values, const QSet<int> &missing,
                                    bool overwrite, bool updateFrequencies);
    virtual bool AddTimeSliceValues(int id, int realization, const TimeStamp &stamp,
                                    const QVector<double> &values, const QSet<int> &missing,
                                    bool overwrite, bool updateFrequencies);
    /// The counts that the dataset keeps; null for an unknown id. Empty for a dataset of another
    /// type.
    virtual const QMap<int, int> *GetIntegerFrequencies(int id);
    virtual const QMap<QString, int> *GetStringFrequencies(int id);
    /// Without NaN, which MVectorDataset::GetDatumFrequency counts.
    virtual const QMap<double, int> *GetDecimalFrequencies(int id);
    /// Whether the values can name the objects: each has one and no two are equal.
    virtual bool CanBeId(int id);
    virtual MDatum GetIdDataValue(int id, int realization, unsigned int object);
    virtual bool HasMissingValues(int id);
    virtual bool IsMissing(int id, int realization, unsigned int object, qint64 t);
    virtual bool GetMissingValues(int id, int realization, qint64 t, QSet<int> &missing);
    virtual bool SetMissingValue(int id, int realization, unsigned int object,
                                 const TimeStamp &stamp);

    MVectorDataset *GetVectorDataset(int id);
    const MVectorDataset *GetVectorDataset(int id) const;
    /// Removes the objects' values from all datasets; indices out of range are left out.
    void RemoveObjects(const QSet<int> &objects);
    /// MVectorDataset::RequireReleased of every dataset.
    void RequireReleased(const QSet<int> &objects) const;
    /// Frees the series that datasets of files before 201044 hold of objects that are gone.
    void CleanPre201044Data();
    bool GetDataValues(int id, int realization, qint64 t, QVector<double> &values,
                       QSet<int> &missing);
    bool GetDataValues(int id, int realization, qint64 t, QVector<int> &values, QSet<int> &missing);
    bool GetDataValues(int id, int realization, qint64 t, QVector<QString> &values,
                       QSet<int> &missing);

protected:
    bool Restore(QDataStream &in, datainterface::LoadContext &context) override;
    MDataset *NewEmptyDataset(int kind) override;

private:
    template <class Path>
    int makeDataset(const QString &name, DataType type, MVectorDataset::StorageType storage,
                    int realizations, const Path &path);

    unsigned int mObjectCount = 0;
};
