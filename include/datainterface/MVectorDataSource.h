// SPDX-License-Identifier: MIT
/// The data source of a vector geography.
#pragma once
#include <QPair>
#include <QSet>
#include <QVector>
#include "datainterface/MDataSource.h"
#include "datainterface/MVectorDataset.h"
#include "datainterface/TimeFormat.h"

/// Adds the number of objects, new datasets, typed values, conversions, imports and exports. An
/// unknown id returns false, 0 or an empty value unless a comment here says that it raises.
class DATAINTERFACE_EXPORT MVectorDataSource : public MDataSource {
    Q_OBJECT
public:
    explicit MVectorDataSource(const QString &directory);
    MVectorDataSource(const QString &directory, unsigned int objectCount, int idSeed);

    bool SaveToStream(QDataStream &out) override;
    bool RestoreFromStream(QDataStream &in) override;
    unsigned int GetObjectCount() const override { return mObjectCount; }
    bool IsDatasetIdValid(int id) const override;
    /// Increments the index; row and column do not change.
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

    /// Resizes all datasets or none: if one cannot be resized, the others get their old size back.
    virtual bool Resize(unsigned int objectCount);
    /// Adds a dataset without announcing it, so that the caller can fill it first.
    /// The arguments are not checked.
    /// @return the id of the dataset.
    virtual int NewVectorDataset(const QString &name, DataType type,
                                 MVectorDataset::StorageType storage, int realizations,
                                 const QString &path);
    virtual int NewVectorDataset(const QString &name, DataType type,
                                 MVectorDataset::StorageType storage, int realizations,
                                 const QList<MDataset::pathLevel> &path);

    // Exports write one row for each object and each interval between `start` and `end`, both
    // included, at which a dataset has data. `missing` is written for a missing value. False when
    // the file cannot be created or written, for an id that is not of a vector dataset of this
    // source, and after a cancel.
    /// A dBASE table. Blanks in names become underscores, and names are cut to ten bytes and made
    /// unique with a number; the log notes each cut name. Dates and times are the integers yyyymmdd
    /// and hhmmss.
    virtual bool ExportDatasetsAsDBF(const QString &fileName, const QList<DataId> &ids,
                                     TimeFormat format, qint64 start, qint64 end,
                                     const QString &missing, int realization);
    /// GeoEAS text. A cancel leaves no file.
    virtual bool ExportDatasetsAsGeoeas(const QString &fileName, const QString &title,
                                        const QList<DataId> &ids, TimeFormat format, qint64 start,
                                        qint64 end, const QString &missing, int realization);
    /// Comma-separated text with a header line. Numbers have seven significant digits.
    virtual bool ExportDatasetsAsCSV(const QString &fileName, const QList<DataId> &ids,
                                     TimeFormat format, qint64 start, qint64 end,
                                     const QString &missing, int realization);

    /// Copies every dataset of `source`.
    /// @param objectMap  for each object of this source its index in `source`.
    virtual void ImportFromDataSource(MDataSource *source, const QVector<int> &objectMap);
    /// @return the new dataset's id, -1 when it cannot be copied. Raises "Invalid dataset id" and
    /// "bad dataset type".
    virtual int ImportDatasetFromDataSource(MDataSource *source, int id,
                                            const QVector<int> &objectMap, bool announce);
    /// Makes a dataset of another type with the values of `id`, which does not change.
    /// @param precision  the number of decimals of a number that becomes text.
    /// @return the new id, announced; -1 after a cancel. Raises "Invalid dataset id" and "Invalid
    ///         dataset type".
    virtual int ConvertDataset(int id, const QString &name, DataType type, int precision);

    /// The number of characters of the longest value, and how many of them are after the decimal
    /// point.
    virtual bool GetDataWidths(int id, int &width, int &decimals);
    virtual unsigned int GetUniqueCount(int id);
    virtual QList<TimeStamp> GetTimeSliceIntervals(int id, int realization);
    virtual QList<TimeStamp> GetDataIntervals(int id, int realization, unsigned int object);
    virtual MDatum GetVectorDataValue(int id, int realization, unsigned int object, qint64 t,
                                      bool interpolate);
    /// Adds one value of one object. The add functions work as those of MVectorDataset.
    virtual bool AddDataValue(int id, int realization, unsigned int object, const TimeStamp &stamp,
                              const MDatum &value, bool overwrite, bool updateFrequencies);
    /// Adds many values of one object.
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
    /// The frequency table of the dataset; null for an unknown id, empty for a dataset of another
    /// type.
    virtual const QMap<int, int> *GetIntegerFrequencies(int id);
    virtual const QMap<QString, int> *GetStringFrequencies(int id);
    /// Leaves out NaN, whose count is MVectorDataset::GetDatumFrequency(MDatum(NaN)).
    virtual const QMap<double, int> *GetDecimalFrequencies(int id);
    /// Whether the values can identify the objects: each object has a value and no two are equal.
    virtual bool CanBeId(int id);
    virtual MDatum GetIdDataValue(int id, int realization, unsigned int object);
    virtual bool HasMissingValues(int id);
    virtual bool IsMissing(int id, int realization, unsigned int object, qint64 t);
    virtual bool GetMissingValues(int id, int realization, qint64 t, QSet<int> &missing);
    virtual bool SetMissingValue(int id, int realization, unsigned int object,
                                 const TimeStamp &stamp);

    MVectorDataset *GetVectorDataset(int id);
    const MVectorDataset *GetVectorDataset(int id) const;
    /// Removes the values of the objects from all datasets. Indices out of range are ignored.
    void RemoveObjects(const QSet<int> &objects);
    /// Calls MVectorDataset::RequireReleased for every dataset.
    void RequireReleased(const QSet<int> &objects) const;
    /// Frees the series that datasets of files before 201044 have for objects that were removed.
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
