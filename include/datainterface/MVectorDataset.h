// SPDX-License-Identifier: MIT
/// The values of one attribute on the objects of a vector geography, over time and over several
/// realizations.
#pragma once
#include <QMap>
#include <QPair>
#include <QSet>
#include <QString>
#include <QStringView>
#include <QVector>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>
#include "datainterface/MDataset.h"
#include "datainterface/OrderedDouble.h"
#include "datainterface/TimeContainers.h"
#include "datainterface/datum.h"
#include "datainterface/export.h"

namespace datainterface {
struct ValueRun;
}

/// How often each value occurs, over all realizations and times: a value at two times counts twice.
/// Only the table of the dataset's type is used. A table with more than `kKeyLimit` keys is
/// incomplete: it takes no further key and increments no count.
struct DATAINTERFACE_EXPORT RealizationVectorDataFrequencies {
    template <class T> using Key = std::conditional_t<std::is_same_v<T, double>, OrderedDouble, T>;
    template <class T> using Table = QMap<Key<T>, int>;

    static constexpr int kKeyLimit = 5000;

    std::tuple<Table<int>, Table<double>, Table<QString>> tables;

    /// The table of an element type.
    template <class T> Table<T> &tableOf() { return std::get<Table<T>>(tables); }
    template <class T> const Table<T> &tableOf() const { return std::get<Table<T>>(tables); }
};
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out,
                                             const RealizationVectorDataFrequencies &frequencies);
/// Raises "Realization reserialization error" when the status of the stream is bad afterwards.
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in,
                                             RealizationVectorDataFrequencies &frequencies);

/// The containers of one realization. The data type and the storage type of the dataset determine
/// which of the six maps is in use. The maps own the containers; MVectorDataset::ClearRealization
/// deletes them.
struct DATAINTERFACE_EXPORT MVectorDataRealization {
    template <class T> using SliceMap = QMap<TimeStamp, TimeSliceData<T> *>;
    template <class T> using SeriesMap = QMap<int, TimeSeriesData<T> *>;

    // In the order of the stream.
    SliceMap<int> integerSlices;
    SliceMap<double> decimalSlices;
    SliceMap<QString> stringSlices;
    SeriesMap<int> integerSeries;
    SeriesMap<double> decimalSeries;
    SeriesMap<QString> stringSeries;

    // The same maps for generic code.
    /// All six.
    auto maps()
    {
        return std::tie(integerSlices, decimalSlices, stringSlices, integerSeries, decimalSeries,
                        stringSeries);
    }
    auto maps() const
    {
        return std::tie(integerSlices, decimalSlices, stringSlices, integerSeries, decimalSeries,
                        stringSeries);
    }
    /// The slices of an element type.
    template <class T> SliceMap<T> &slicesOf() { return std::get<SliceMap<T> &>(maps()); }
    template <class T> const SliceMap<T> &slicesOf() const
    {
        return std::get<const SliceMap<T> &>(maps());
    }
    /// The series of an element type.
    template <class T> SeriesMap<T> &seriesOf() { return std::get<SeriesMap<T> &>(maps()); }
    template <class T> const SeriesMap<T> &seriesOf() const
    {
        return std::get<const SeriesMap<T> &>(maps());
    }
};
/// Writes only block ids: containers with changes must be checked in before.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out,
                                             const MVectorDataRealization &realization);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, MVectorDataRealization &realization);

/// Values are divided into containers, each of which is paged between memory and the block store
/// independently, so a dataset may be far larger than memory. The intervals of one slice map, and
/// those of the series of one object, never overlap: an added value shortens, splits or fills what
/// is present.
///
/// `overwrite` in the add calls lets a new value replace a present one; without it new values are
/// stored only where no value is present. `updateFrequencies` keeps the frequency table current; a
/// caller that adds many values passes false and calls RecalculateFrequencies once at the end.
class DATAINTERFACE_EXPORT MVectorDataset : public MDataset {
    Q_OBJECT
public:
    enum StorageType : qint32 {
        TimeSeries = 0, ///< one container per object
        TimeSlice = 1   ///< one container per interval, a value per object
    };
    template <class T> using SliceMap = MVectorDataRealization::SliceMap<T>;
    template <class T> using SeriesMap = MVectorDataRealization::SeriesMap<T>;
    template <class T> using TimedValues = QVector<QPair<TimeStamp, T>>;
    template <class T> using FrequencyTable = RealizationVectorDataFrequencies::Table<T>;

    /// For loading.
    MVectorDataset(MDataSource *source, const QString &directory);
    MVectorDataset(MDataSource *source, StorageType storage, int id, DataType type,
                   const QString &name, const QString &path, int realizationCount, int objectCount);

    StorageType GetStorageType() const { return mStorageType; }
    int GetObjectCount() const { return mObjectCount; }

    // Storage.
    bool SaveToStream(QDataStream &out) override;
    bool RestoreFromStream(QDataStream &in) override;
    DatasetProps GetProperties(const MGeoData *geography) override;
    void AppendBlockIds(QVector<int> &ids) const override;
    void DropValues() override;
    bool IsNumeric() const override { return mDataType != StringType; }
    bool IsDecimal() const override { return mDataType == DecimalType; }
    bool IsInteger() const override { return mDataType == IntegerType; }
    /// Decided by the frequency table: a decimal dataset needs a finite key, the others need any
    /// key.
    bool IsValid() const override;
    bool HasMissing(int realization) const override;
    /// A change deletes the values, except that a dataset of slices that becomes static keeps its
    /// earliest slice. Frequencies are counted again.
    void SetStatic(bool isStatic) override;
    /// Objects that are added are missing. Series of objects that are cut off stay in their map but
    /// cannot be reached.
    virtual bool Resize(int objectCount);
    /// Removes the objects; the indices of later objects decrease. Raises "Time series still in
    /// use" when the series of one of them is checked out.
    virtual void RemoveObjects(const QSet<int> &ids);
    /// Deletes every container of the map in use.
    virtual void ClearRealization(MVectorDataRealization &realization);

    /// False for a realization without containers.
    bool CheckOutRealization(int realization, int arg) const override;
    bool CheckInRealization(int realization, int arg) const override;
    /// Checks out the slice whose interval contains `time`; false without one and in TimeSeries
    /// storage.
    virtual bool CheckOutTimeSlice(int realization, qint64 time, int arg) const;
    /// Ends CheckOutTimeSlice.
    virtual bool CheckInTimeSlice(int realization, qint64 time, int arg) const;
    /// Checks out the series of one object, and creates an empty one if it has none. Raises
    /// "mStorageType == TimeSeries" and "id < mObjectCount".
    virtual bool CheckOutTimeSeries(int realization, int id, int arg) const;
    /// Ends CheckOutTimeSeries; false for an object without a series. Raises as CheckOutTimeSeries
    /// does.
    virtual bool CheckInTimeSeries(int realization, int id, int arg) const;

    /// The maps themselves, for reading; null for an unknown realization. Valid until the dataset
    /// changes.
    const SliceMap<int> *GetTimeSliceIntegerData(int realization) const;
    const SliceMap<double> *GetTimeSliceDecimalData(int realization) const;
    const SliceMap<QString> *GetTimeSliceStringData(int realization) const;
    const SeriesMap<int> *GetTimeSeriesIntegerData(int realization) const;
    const SeriesMap<double> *GetTimeSeriesDecimalData(int realization) const;
    const SeriesMap<QString> *GetTimeSeriesStringData(int realization) const;
    /// The slice at `time`; false without one.
    bool GetTimeSliceData(int realization, qint64 time, const TimeSliceData<int> *&slice) const;
    bool GetTimeSliceData(int realization, qint64 time, const TimeSliceData<double> *&slice) const;
    bool GetTimeSliceData(int realization, qint64 time, const TimeSliceData<QString> *&slice) const;
    /// Replaces a realization and takes ownership of the containers. False, with nothing taken, for
    /// another storage type and for a static dataset. The last argument is not used.
    bool SetTimeSliceData(int realization, const SliceMap<int> &slices, bool arg);
    bool SetTimeSliceData(int realization, const SliceMap<double> &slices, bool arg);
    bool SetTimeSliceData(int realization, const SliceMap<QString> &slices, bool arg);
    /// Replaces the series of one object. Ownership and results are as above.
    bool SetTimeSeriesData(int id, int realization, TimeSeriesData<int> *series, bool arg);
    bool SetTimeSeriesData(int id, int realization, TimeSeriesData<double> *series, bool arg);
    bool SetTimeSeriesData(int id, int realization, TimeSeriesData<QString> *series, bool arg);
    bool SetTimeSeriesData(int id, int realization, const QMap<TimeStamp, int> &values, bool arg);
    bool SetTimeSeriesData(int id, int realization, const QMap<TimeStamp, double> &values,
                           bool arg);
    bool SetTimeSeriesData(int id, int realization, const QMap<TimeStamp, QString> &values,
                           bool arg);
    bool SetTimeSeriesData(int realization, const SeriesMap<int> &series, bool arg);
    bool SetTimeSeriesData(int realization, const SeriesMap<double> &series, bool arg);
    bool SetTimeSeriesData(int realization, const SeriesMap<QString> &series, bool arg);
    /// Deep copies, which the caller deletes. The argument is cleared first; the containers that it
    /// pointed to are not deleted.
    bool CopyIntegerData(int realization, SliceMap<int> &slices) const;
    bool CopyIntegerData(int realization, SeriesMap<int> &series) const;
    /// The same for a dataset of decimals.
    bool CopyDecimalData(int realization, SliceMap<double> &slices) const;
    bool CopyDecimalData(int realization, SeriesMap<double> &series) const;
    /// The same for a dataset of texts.
    bool CopyStringData(int realization, SliceMap<QString> &slices) const;
    bool CopyStringData(int realization, SeriesMap<QString> &series) const;

    // Values. The add calls return false for the wrong storage or type and for an unknown
    // realization.
    /// Adds one value, in either storage type.
    bool AddDataValue(int realization, int id, const TimeStamp &stamp, const MDatum &value,
                      bool overwrite, bool updateFrequencies);
    /// Adds one value to a dataset stored as slices. The type of the value, not that of the
    /// dataset, determines the slice map.
    bool AddTimeSliceValue(int realization, int id, const TimeStamp &stamp, const MDatum &value,
                           bool overwrite, bool updateFrequencies);
    /// Adds one value to a dataset stored as series.
    bool AddTimeSeriesValue(int realization, int id, const TimeStamp &stamp, const MDatum &value,
                            bool overwrite, bool updateFrequencies);
    /// Adds a slice with one value for each object; another size raises "Invalid object count".
    /// Decimals that are not finite are missing; a slice in which all decimals are missing returns
    /// true and adds nothing. Otherwise the result is false when nothing changed.
    bool AddTimeSliceValues(int realization, const TimeStamp &stamp, const QVector<int> &values,
                            const QSet<int> &missing, bool overwrite, bool updateFrequencies);
    bool AddTimeSliceValues(int realization, const TimeStamp &stamp, const QVector<double> &values,
                            const QSet<int> &missing, bool overwrite, bool updateFrequencies);
    bool AddTimeSliceValues(int realization, const TimeStamp &stamp, const QVector<QString> &values,
                            const QSet<int> &missing, bool overwrite, bool updateFrequencies);
    bool AddTimeSliceValues(int realization, const TimeStamp &stamp, VORN_DataContainer &values,
                            bool overwrite, bool updateFrequencies) override;
    /// Adds values of one object. Decimals that are not finite are ignored.
    bool AddTimeSeriesValues(int realization, int id, const TimedValues<int> &values,
                             bool overwrite, bool updateFrequencies);
    bool AddTimeSeriesValues(int realization, int id, const TimedValues<double> &values,
                             bool overwrite, bool updateFrequencies);
    bool AddTimeSeriesValues(int realization, int id, const TimedValues<QString> &values,
                             bool overwrite, bool updateFrequencies);
    MDatum GetValue(int id, qint64 time, int realization) override;
    /// With `interpolate` the result is a decimal, interpolated linearly in time between the
    /// neighbouring values of the object.
    MDatum GetValue(int id, qint64 time, bool interpolate, int realization) override;
    /// Reads one value without the cost of an MDatum, for loops. False, with `value` unchanged,
    /// when the value is missing and for a dataset of another type.
    bool ReadValue(int realization, int id, qint64 time, int &value) const;
    bool ReadValue(int realization, int id, qint64 time, double &value) const;
    /// All values of one object in order of time, each with its interval. Intervals at which the
    /// object is missing are left out. Slices that are not checked out are not paged in.
    void GetObjectValues(int realization, int id, QVector<Interval> &intervals,
                         QVector<datum> &values);
    /// The object's first value in time.
    MDatum GetIdValue(int realization, unsigned int id);
    /// The values of all objects at a time, 0 where the object is missing. False for another data
    /// type.
    bool GetValues(int realization, qint64 time, QVector<int> &values, QSet<int> &missing,
                   bool interpolate) const;
    bool GetValues(int realization, qint64 time, QVector<double> &values, QSet<int> &missing,
                   bool interpolate) const;
    bool GetValues(int realization, qint64 time, QVector<QString> &values,
                   QSet<int> &missing) const;
    /// The same for both numeric types.
    bool GetValuesAsDecimal(int realization, qint64 time, QVector<double> &values,
                            QSet<int> &missing) const;
    /// In these three an unknown realization raises "Invalid realization index".
    bool IsMissing(int realization, int id, qint64 time) const;
    bool SetMissing(int realization, int id, const TimeStamp &stamp);
    int GetDataCount(int realization, qint64 time) const override;
    bool GetMissingTimeSliceValues(int realization, qint64 time, QSet<int> &missing);
    QList<TimeStamp> GetTimeSliceIntervals(int realization);
    QList<TimeStamp> GetTimeSeriesIntervals(int realization, int id);
    QList<TimeStamp> GetDataIntervals(int realization, int id) override;
    QList<TimeStamp> GetCommonTimeStamps(int realization) override;
    /// The intersection of the intervals that the objects' values have at `time`.
    bool GetCommonTimeStamp(int realization, qint64 time, TimeStamp &stamp) const;
    bool ObjectValueChanged(int realization, int id, qint64 first, qint64 second) override;

    // Frequencies and statistics.
    /// Adds or removes one occurrence; false when the table is over its limit.
    bool UpdateFrequencies(int value, bool add);
    bool UpdateFrequencies(double value, bool add);
    bool UpdateFrequencies(const QString &value, bool add);
    bool RecalculateFrequencies() override;
    /// Counts the table of one type again; the others do not change.
    bool RecalculateIntegerFrequencies();
    /// The same for decimals.
    bool RecalculateDecimalFrequencies();
    /// The same for texts.
    bool RecalculateStringFrequencies();
    const QMap<int, int> *GetIntegerFrequencies() const { return &mFrequencies.tableOf<int>(); }
    /// Leaves out NaN, whose count is GetDatumFrequency(MDatum(NaN)).
    const QMap<double, int> *GetDoubleFrequencies() const
    {
        return mDecimalCounts.of(mFrequencies.tableOf<double>());
    }
    const QMap<QString, int> *GetStringFrequencies() const
    {
        return &mFrequencies.tableOf<QString>();
    }
    QMap<MDatum, int> GetDataFrequencies() override;
    int GetDatumFrequency(const MDatum &value) const override;
    int UniqueValueCount(bool *capped) const override;
    /// Whether the values can identify the objects: each object has one value and no two are equal.
    bool AllUniqueValues(int realization, bool *capped);
    bool CalcMinMaxMean(int realization) const override;
    bool CalcMinMaxMean(int realization, qint64 time) const override;
    /// The population standard deviation.
    bool GetStdDev(int realization, qint64 time, double &result) const override;
    /// The width of an export field, and the number of its characters after the decimal point.
    void GetDataWidths(int &width, int &decimals);
    /// `realization` is not used: the frequency table covers all realizations.
    QList<double> GetIntervalBreaks(int realization, int breakCount,
                                    MDataset::ClassificationType classification,
                                    bool showProgress) override;
    /// Whether the values at a time look like the result of a normal-score transform: the mean is 0
    /// and the median is the value that the inverse normal distribution gives, both within 1e-05.
    bool IsNormalScoreDataset(qint64 time, int realization) const override;

    // Conversion.
    /// Fills this new dataset with the values of `source`, converted to the type of this dataset;
    /// decimals become text with `precision` decimals. Missing objects stay missing. False when the
    /// user cancels, and for a dataset of another storage type or with fewer realizations. A
    /// dataset of the same type raises "Invalid data type".
    bool ConvertDataset(const MVectorDataset *source, int precision);
    /// Copies the values of a dataset of another source. `objectMap` gives for each object of this
    /// dataset the index of its object in `source`; objects without one are missing. The result is
    /// false for a vector dataset of another type or storage type. From a raster dataset each
    /// object takes the values of its cell, converted to the type of this dataset. Notes the origin
    /// in the long description. Raises "Invalid data type" for other kinds of datasets.
    bool ImportDataset(const MDataset *source, const QVector<int> &objectMap);
    /// Raises "Time series still in use" for an object among `ids` whose series is checked out.
    void RequireReleased(const QSet<int> &ids) const;
    /// Frees the series of objects that Resize cut off.
    void CleanPre201044Data();

protected:
    friend class MDataSource;
    friend class MVectorDataSource;
    ~MVectorDataset() override;
    bool Restore(QDataStream &in, datainterface::LoadContext &context) override;

    /// The hull of the intervals of one realization.
    virtual TimeStamp CalculateTimeBounds(const MVectorDataRealization &realization);
    /// Texts of files before 180004 (bytes up to the first NUL, in UTF-8) as views into `joined`.
    static void ProcessPre180005StringData(const QVector<std::string> &stored, QString &joined,
                                           QVector<QStringView> &texts);

private:
    bool isSliced() const { return mStorageType == TimeSlice; }
    bool holdsObject(int id) const { return id >= 0 && id < mObjectCount; }
    /// The interval under which the dataset stores `stamp`: a static dataset has only time 0.
    TimeStamp stampOf(const TimeStamp &stamp) const;
    bool holdsRealization(int realization) const { return mRealizationData.contains(realization); }
    /// Null for an unknown realization.
    const MVectorDataRealization *realizationAt(int realization) const;
    /// The same, but raises "Invalid realization index" for an unknown realization.
    const MVectorDataRealization &knownRealization(int realization) const;
    /// The realizations, for a change that no store makes. The stores forget the slices that they
    /// read last.
    QMap<int, MVectorDataRealization> &realizationsToChange();
    /// Called after a bulk change: marks the statistics as out of date and deletes the variogram
    /// models.
    void dataChanged(int realization);

    std::vector<datainterface::ValueRun> sortedValues() const;
    bool restoreValues(QDataStream &in, const datainterface::LoadContext &context);
    bool restoreObjectCount(QDataStream &in, const datainterface::LoadContext &context);
    void restoreOldFrequencies(QDataStream &in, const datainterface::LoadContext &context);
    bool restoreRealizations(QDataStream &in, const datainterface::LoadContext &context);
    class OldValues;
    bool restoreSingle(QDataStream &in, const datainterface::LoadContext &context);
    bool restoreInline(QDataStream &in, const datainterface::LoadContext &context);
    bool restoreOldHead(QDataStream &in, const datainterface::LoadContext &context);
    bool restoreInlineRealization(QDataStream &in, const datainterface::LoadContext &context,
                                  MVectorDataRealization &realization);
    bool settleStorage();

    /// One store per element type and storage type, with the rules of its containers: how they are
    /// found, cut, merged and removed.
    class Stores;

    int mObjectCount = 0;
    StorageType mStorageType = TimeSlice;
    RealizationVectorDataFrequencies mFrequencies;
    mutable datainterface::PlainCounts<double> mDecimalCounts; ///< the map that was returned last
    QMap<int, MVectorDataRealization> mRealizationData;
    const std::unique_ptr<Stores> mStores; ///< refer to mRealizationData
};

/// A std::string as files before 180004 hold texts: the length in bytes as 32 bits, then the bytes.
/// A length beyond the end of the stream is not allocated.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const std::string &text);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, std::string &text);
