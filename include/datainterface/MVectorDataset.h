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

/// How often each value is held, over all realizations and times: a value that stands at two times
/// counts twice. Only the table of the dataset's type is used. A table that holds more than
/// `kKeyLimit` keys is a partial view: it takes no further key and counts nothing up.
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
/// Raises "Realization reserialization error" when the stream ends bad.
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in,
                                             RealizationVectorDataFrequencies &frequencies);

/// The containers of one realization. Data type and storage type of the dataset pick the one map of
/// six that is in use. The maps own; the dataset deletes through MVectorDataset::ClearRealization.
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
/// Block ids alone: what is checked out and changed must be checked in before.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out,
                                             const MVectorDataRealization &realization);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, MVectorDataRealization &realization);

/// Values are cut into containers that page between memory and the block store on their own, so
/// that a dataset may be far larger than memory. Intervals of one slice map, and of one object's
/// series, never overlap: an added value cuts, splits or fills what is there.
///
/// The `overwrite` of the add calls lets a new value win over a present one; without it new values
/// fill holes alone. `updateFrequencies` keeps the frequency table current; who adds in bulk passes
/// false and runs RecalculateFrequencies once at the end.
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
    /// By the frequency table: a decimal dataset needs a finite key, the others any.
    bool IsValid() const override;
    bool HasMissing(int realization) const override;
    /// A change drops what does not fit: of slices the earliest stays when the dataset becomes
    /// static, nothing otherwise. Frequencies are counted anew.
    void SetStatic(bool isStatic) override;
    /// Objects added are missing. Series of objects cut off stay in their map, out of reach.
    virtual bool Resize(int objectCount);
    /// Drops the objects; the others move down in order. A listed series that is checked out raises
    /// "Time series still in use".
    virtual void RemoveObjects(const QSet<int> &ids);
    /// Destroys every container of the map in use.
    virtual void ClearRealization(MVectorDataRealization &realization);

    /// False for a realization without containers.
    bool CheckOutRealization(int realization, int arg) const override;
    bool CheckInRealization(int realization, int arg) const override;
    /// The slice that holds `time`; false without one and in TimeSeries storage.
    virtual bool CheckOutTimeSlice(int realization, qint64 time, int arg) const;
    /// Gives back what CheckOutTimeSlice took.
    virtual bool CheckInTimeSlice(int realization, qint64 time, int arg) const;
    /// Makes an empty series where the object has none. Raises "mStorageType == TimeSeries", "id <
    /// mObjectCount".
    virtual bool CheckOutTimeSeries(int realization, int id, int arg) const;
    /// Gives back what CheckOutTimeSeries took; false for an object without a series. Raises as it
    /// does.
    virtual bool CheckInTimeSeries(int realization, int id, int arg) const;

    /// The maps themselves, not to be changed; null for a realization that is not there.
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
    /// Replaces a realization and owns the containers from then on. False, with nothing taken, for
    /// another storage or a static dataset. The last argument is not used.
    bool SetTimeSliceData(int realization, const SliceMap<int> &slices, bool arg);
    bool SetTimeSliceData(int realization, const SliceMap<double> &slices, bool arg);
    bool SetTimeSliceData(int realization, const SliceMap<QString> &slices, bool arg);
    /// Replaces the series of one object; ownership and refusals as above.
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
    /// Deep copies, the caller's to delete. The argument is emptied first, what it pointed to left
    /// alone.
    bool CopyIntegerData(int realization, SliceMap<int> &slices) const;
    bool CopyIntegerData(int realization, SeriesMap<int> &series) const;
    /// The same of a dataset of decimals.
    bool CopyDecimalData(int realization, SliceMap<double> &slices) const;
    bool CopyDecimalData(int realization, SeriesMap<double> &series) const;
    /// The same of a dataset of texts.
    bool CopyStringData(int realization, SliceMap<QString> &slices) const;
    bool CopyStringData(int realization, SeriesMap<QString> &series) const;

    // Values. The add calls answer false for the wrong storage or type and for an unknown
    // realization.
    /// One value, in the storage that the dataset has.
    bool AddDataValue(int realization, int id, const TimeStamp &stamp, const MDatum &value,
                      bool overwrite, bool updateFrequencies);
    /// The kind of the value, not the type of the dataset, picks the slices that it enters.
    bool AddTimeSliceValue(int realization, int id, const TimeStamp &stamp, const MDatum &value,
                           bool overwrite, bool updateFrequencies);
    /// One value of one object in a dataset stored as series.
    bool AddTimeSeriesValue(int realization, int id, const TimeStamp &stamp, const MDatum &value,
                            bool overwrite, bool updateFrequencies);
    /// One value per object ("Invalid object count"). Decimals that are not finite count as
    /// missing; nothing but missing decimals answers true and adds nothing. False when nothing
    /// changed.
    bool AddTimeSliceValues(int realization, const TimeStamp &stamp, const QVector<int> &values,
                            const QSet<int> &missing, bool overwrite, bool updateFrequencies);
    bool AddTimeSliceValues(int realization, const TimeStamp &stamp, const QVector<double> &values,
                            const QSet<int> &missing, bool overwrite, bool updateFrequencies);
    bool AddTimeSliceValues(int realization, const TimeStamp &stamp, const QVector<QString> &values,
                            const QSet<int> &missing, bool overwrite, bool updateFrequencies);
    bool AddTimeSliceValues(int realization, const TimeStamp &stamp, VORN_DataContainer &values,
                            bool overwrite, bool updateFrequencies) override;
    /// Decimals that are not finite are left out.
    bool AddTimeSeriesValues(int realization, int id, const TimedValues<int> &values,
                             bool overwrite, bool updateFrequencies);
    bool AddTimeSeriesValues(int realization, int id, const TimedValues<double> &values,
                             bool overwrite, bool updateFrequencies);
    bool AddTimeSeriesValues(int realization, int id, const TimedValues<QString> &values,
                             bool overwrite, bool updateFrequencies);
    MDatum GetValue(int id, qint64 time, int realization) override;
    /// With `interpolate`, linear in time between the neighbouring values of the object; always a
    /// decimal then.
    MDatum GetValue(int id, qint64 time, bool interpolate, int realization) override;
    /// The same for a dataset of that type, without the variant: false, with `value` untouched,
    /// when the value is missing and for a dataset of another type. For reading one value after the
    /// other.
    bool ReadValue(int realization, int id, qint64 time, int &value) const;
    bool ReadValue(int realization, int id, qint64 time, double &value) const;
    /// All values of one object in order of time, each with the interval that it holds on.
    /// Intervals at which the object is missing are left out. Slices that nobody holds are not
    /// paged in for it.
    void GetObjectValues(int realization, int id, QVector<Interval> &intervals,
                         QVector<datum> &values);
    /// The object's first value in time.
    MDatum GetIdValue(int realization, unsigned int id);
    /// All objects at a time: one element each, 0 where the object is missing. False for another
    /// data type.
    bool GetValues(int realization, qint64 time, QVector<int> &values, QSet<int> &missing,
                   bool interpolate) const;
    bool GetValues(int realization, qint64 time, QVector<double> &values, QSet<int> &missing,
                   bool interpolate) const;
    bool GetValues(int realization, qint64 time, QVector<QString> &values,
                   QSet<int> &missing) const;
    /// Either numeric type.
    bool GetValuesAsDecimal(int realization, qint64 time, QVector<double> &values,
                            QSet<int> &missing) const;
    /// An unknown realization raises "Invalid realization index" in these three.
    bool IsMissing(int realization, int id, qint64 time) const;
    bool SetMissing(int realization, int id, const TimeStamp &stamp);
    int GetDataCount(int realization, qint64 time) const override;
    bool GetMissingTimeSliceValues(int realization, qint64 time, QSet<int> &missing);
    QList<TimeStamp> GetTimeSliceIntervals(int realization);
    QList<TimeStamp> GetTimeSeriesIntervals(int realization, int id);
    QList<TimeStamp> GetDataIntervals(int realization, int id) override;
    QList<TimeStamp> GetCommonTimeStamps(int realization) override;
    /// The interval at `time` that is common to all objects with a value there.
    bool GetCommonTimeStamp(int realization, qint64 time, TimeStamp &stamp) const;
    bool ObjectValueChanged(int realization, int id, qint64 first, qint64 second) override;

    // Frequencies and statistics.
    /// One occurrence more or less; false when the table is over its limit.
    bool UpdateFrequencies(int value, bool add);
    bool UpdateFrequencies(double value, bool add);
    bool UpdateFrequencies(const QString &value, bool add);
    bool RecalculateFrequencies() override;
    /// Counts the table of one type anew; the others stay as they are.
    bool RecalculateIntegerFrequencies();
    /// The same of decimals.
    bool RecalculateDecimalFrequencies();
    /// The same of texts.
    bool RecalculateStringFrequencies();
    const QMap<int, int> *GetIntegerFrequencies() const { return &mFrequencies.tableOf<int>(); }
    /// Without NaN, which GetDatumFrequency(MDatum(NaN)) counts.
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
    /// Whether the dataset can name its objects: each has one value and no two are equal.
    bool AllUniqueValues(int realization, bool *capped);
    bool CalcMinMaxMean(int realization) const override;
    bool CalcMinMaxMean(int realization, qint64 time) const override;
    /// The population form.
    bool GetStdDev(int realization, qint64 time, double &result) const override;
    /// Characters, and characters behind the decimal point, that a field of an export needs.
    void GetDataWidths(int &width, int &decimals);
    /// `realization` is not looked at: the table counts all of them.
    QList<double> GetIntervalBreaks(int realization, int breakCount,
                                    MDataset::ClassificationType classification,
                                    bool showProgress) override;
    /// Whether the values at a time look like the result of a normal-score transform: mean 0, and
    /// the middle value where the inverse normal distribution puts it, both within 1e-05.
    bool IsNormalScoreDataset(qint64 time, int realization) const override;

    // Conversion.
    /// Fills this new dataset with `source`'s values in this dataset's type; `precision` decimals
    /// when decimals become text. Missing objects stay missing. False when the user cancels, and
    /// for a dataset of another storage type or with fewer realizations. The same type raises
    /// "Invalid data type".
    bool ConvertDataset(const MVectorDataset *source, int precision);
    /// Takes the values of a dataset of another source over: `objectMap` gives the object there for
    /// each one here; one without an object there is missing. A vector dataset must have this one's
    /// type and storage type, or the result is false. Of a raster dataset each object takes the
    /// values of its cell, in this dataset's type. The long description tells the origin. Raises
    /// "Invalid data type" for other kinds of datasets.
    bool ImportDataset(const MDataset *source, const QVector<int> &objectMap);
    /// Raises "Time series still in use" for an object among `ids` whose series is checked out.
    void RequireReleased(const QSet<int> &ids) const;
    /// Frees the series that shrinking left behind.
    void CleanPre201044Data();

protected:
    friend class MDataSource;
    friend class MVectorDataSource;
    ~MVectorDataset() override;
    bool Restore(QDataStream &in, datainterface::LoadContext &context) override;

    /// The hull of one realization's intervals.
    virtual TimeStamp CalculateTimeBounds(const MVectorDataRealization &realization);
    /// Texts of files before 180004 (bytes up to the first NUL, in UTF-8) as views into `joined`.
    static void ProcessPre180005StringData(const QVector<std::string> &stored, QString &joined,
                                           QVector<QStringView> &texts);

private:
    bool isSliced() const { return mStorageType == TimeSlice; }
    bool holdsObject(int id) const { return id >= 0 && id < mObjectCount; }
    /// What the dataset files under `stamp`: a static one knows time 0 alone.
    TimeStamp stampOf(const TimeStamp &stamp) const;
    /// Null when the realization is not there.
    const MVectorDataRealization *realizationAt(int realization) const;
    MVectorDataRealization *realizationAt(int realization);
    /// For a change: what was remembered of the slices is forgotten.
    QMap<int, MVectorDataRealization> &realizationsToChange();
    /// Raises "Invalid realization index" instead.
    const MVectorDataRealization &knownRealization(int realization) const;
    /// A bulk change: statistics out of date, fitted models gone.
    void dataChanged(int realization);

    template <class T> const TimeSliceData<T> *sliceAt(int realization, qint64 time) const;
    template <class T> const TimeSeriesData<T> *seriesOf(int realization, int id) const;
    template <class T>
    bool findSlice(int realization, qint64 time, const TimeSliceData<T> *&slice) const;
    template <class T> bool takeSlices(int realization, const SliceMap<T> &slices);
    template <class T> bool takeSeries(int id, int realization, TimeSeriesData<T> *series);
    template <class T> bool takeAllSeries(int realization, const SeriesMap<T> &series);
    template <class T> bool copySlices(int realization, SliceMap<T> &slices) const;
    template <class T> bool copySeries(int realization, SeriesMap<T> &series) const;
    template <class T> void makeStatic(MVectorDataRealization &realization);
    template <class T>
    void removeObjects(MVectorDataRealization &realization, const QVector<int> &ids);

    template <class T>
    bool addCell(int realization, int id, const TimeStamp &stamp, const T &value, bool overwrite,
                 bool updateFrequencies);
    template <class T>
    void replaceCell(TimeSliceData<T> &slice, int id, const T &value, bool overwrite,
                     bool updateFrequencies);
    template <class T>
    bool addSlice(int realization, const TimeStamp &stamp, const QVector<T> &values,
                  const QSet<int> &missing, bool overwrite, bool updateFrequencies);
    template <class T>
    bool mergeSlice(SliceMap<T> &slices, const TimeStamp &stamp, const QVector<T> &values,
                    const QSet<int> &missing, bool overwrite, bool updateFrequencies);
    template <class T>
    void addToSeries(MVectorDataRealization &realization, int id, const TimedValues<T> &values,
                     bool overwrite, bool updateFrequencies);
    template <class T>
    bool addSeries(int realization, int id, const TimedValues<T> &values, bool overwrite,
                   bool updateFrequencies);
    template <class T> bool markMissing(SliceMap<T> &slices, int id, const TimeStamp &stamp);
    template <class T> bool markMissing(SeriesMap<T> &series, int id, const TimeStamp &stamp);

    template <class T> bool readCell(int realization, int id, qint64 time, T &value) const;
    template <class T, class Take> void visitObject(int realization, int id, Take take);
    template <class T> MDatum interpolated(int realization, int id, qint64 time) const;
    template <class T>
    bool readValues(int realization, qint64 time, QVector<T> &values, QSet<int> &missing,
                    bool interpolate) const;
    template <class T> TimeStamp stampOfValue(int realization, int id, qint64 time) const;

    template <class T> bool updateFrequency(const T &value, bool add);
    template <class T> bool recountFrequencies();
    template <class T, class Visit>
    void visitValuesAt(int realization, qint64 time, Visit visit) const;
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

    /// The slice that was asked for last. Values are read in runs, and a search by time is most of
    /// what one costs.
    template <class T> struct LastSlice {
        int realization = -1;
        TimeStamp stamp;
        const TimeSliceData<T> *slice = nullptr;
    };
    using LastSlices = std::tuple<LastSlice<int>, LastSlice<double>, LastSlice<QString>>;

    int mObjectCount = 0;
    StorageType mStorageType = TimeSlice;
    RealizationVectorDataFrequencies mFrequencies;
    mutable datainterface::PlainCounts<double> mDecimalCounts; ///< what was handed out last
    /// A check-out can make an empty series.
    mutable QMap<int, MVectorDataRealization> mRealizationData;
    mutable LastSlices mLastSlices; ///< cleared before slices change: see realizationsToChange()
};

/// A standard string, as files before 180004 hold texts: its length in bytes as 32 bits, then the
/// bytes. Reading takes no more than the stream has left.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const std::string &text);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, std::string &text);
