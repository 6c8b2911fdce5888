// SPDX-License-Identifier: MIT
/// A named collection of values over the objects of one geography: what vector and raster datasets
/// share.
#pragma once
#include <QDataStream>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QVariant>
#include <QVector>
#include "datainterface/DataId.h"
#include "datainterface/DataType.h"
#include "datainterface/MDatum.h"
#include "datainterface/MMetaData.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/VariogramModel.h"
#include "datainterface/dataContainer.h"
#include "datainterface/export.h"

class MDataSource;
class MGeoData;
struct DatasetProps;
namespace datainterface {
struct LoadContext;
}

/// Statistics of one set of values.
struct DATAINTERFACE_EXPORT DataSetStats {
    double mean = 0.0;
    double stdDev = 0.0; ///< population form
    MDatum minimum;      ///< empty when there were no values
    MDatum maximum;
    bool stdDevValid = false;
    bool meanValid = false; ///< mean, minimum and maximum are valid
};
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const DataSetStats &stats);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, DataSetStats &stats);

/// The statistics of one realization: by time, and of all its values.
struct DATAINTERFACE_EXPORT StatsRealization {
    QMap<TimeStamp, DataSetStats> perTime;
    DataSetStats whole; ///< up to date while its meanValid is set
};
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const StatsRealization &stats);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, StatsRealization &stats);

/// Holds the identity, the description, the time bounds, the statistics and the variogram models.
/// The derived classes hold the values. Realizations are numbered from 0, and objects from 0 in the
/// order of the geography. Only the data source creates and destroys a dataset. For use on one
/// thread.
class DATAINTERFACE_EXPORT MDataset : public QObject {
    Q_OBJECT
public:
    /// How class limits are chosen.
    enum ClassificationType : qint32 { EqualIntervals = 0, Quantiles = 1, Jenks = 2 };

    /// One level of the path under which a dataset is filed: a name, or with a null name the
    /// numbered node `id`.
    struct pathLevel {
        QString name;
        int id = 0;
        bool operator==(const pathLevel &other) const
        {
            return name == other.name && name.isNull() == other.name.isNull() && id == other.id;
        }
    };

    /// The class that holds the values. It is the first word of the stream form of a dataset.
    enum Kind : int { VectorKind = 1, RasterKind = 2 };

    virtual bool SaveToStream(QDataStream &out);
    /// Reads everything after the dataset kind, which the data source has read to choose the class.
    /// Returns false for a short or corrupt stream; the dataset must then be discarded.
    virtual bool RestoreFromStream(QDataStream &in);
    virtual DatasetProps GetProperties(const MGeoData *geography);
    /// Ends one CheckOutRealization. A check-out keeps values in memory across many reads and must
    /// be paired with a check-in. The last argument is not used.
    virtual bool CheckInRealization(int realization, int arg) const = 0;
    /// Keeps all values of one realization in memory until the check-in.
    virtual bool CheckOutRealization(int realization, int arg) const = 0;
    /// Checks out all realizations. Stops at the first one that returns false.
    virtual bool CheckOutAllRealizations(int arg) const;
    /// Ends CheckOutAllRealizations.
    virtual bool CheckInAllRealizations(int arg) const;
    /// Whether the object's values at the two times belong to different intervals. The values are
    /// not compared.
    virtual bool ObjectValueChanged(int realization, int id, qint64 first, qint64 second) = 0;
    /// Returns the `breakCount` limits of `breakCount` - 1 classes, ascending, calculated from the
    /// frequency table; empty when the user cancels. Raises "Invalid data type" for text and for an
    /// unknown classification.
    virtual QList<double> GetIntervalBreaks(int realization, int breakCount,
                                            MDataset::ClassificationType classification,
                                            bool showProgress) = 0;
    /// Counts the frequency table again; false for a dataset of an unknown type.
    virtual bool RecalculateFrequencies() = 0;
    virtual QMap<MDatum, int> GetDataFrequencies() = 0;
    /// The number of keys in the frequency table. `capped`, unless null, is set to whether the
    /// table is full.
    virtual int UniqueValueCount(bool *capped) const = 0;
    virtual int GetDatumFrequency(const MDatum &value) const = 0;
    virtual int GetDataCount(int realization, qint64 time) const = 0;
    virtual bool HasDataAtTime(int realization, qint64 time) const;
    virtual QList<TimeStamp> GetCommonTimeStamps(int realization) = 0;
    virtual QList<TimeStamp> GetDataIntervals(int realization, int id) = 0;
    virtual bool IsNormalScoreDataset(qint64 time, int realization) const = 0;
    virtual bool IsNumeric() const = 0;
    virtual bool IsDecimal() const = 0;
    virtual bool IsInteger() const = 0;
    virtual bool IsValid() const;
    virtual bool HasMissing(int realization) const = 0;
    virtual void SetStatic(bool isStatic);
    virtual QString GetDisplayName();
    virtual void SetDisplayName(const QString &name);
    virtual QString GetShortDescription();
    virtual void SetShortDescription(const QString &text);
    virtual QString GetLongDescription();
    virtual void SetLongDescription(const QString &text);
    /// Appends to the history, without a separator.
    virtual void AddToLongDescription(const QString &text);
    /// Copies the bounds. The result is false when there are no data; the bounds are copied all the
    /// same.
    virtual bool GetTimeBounds(TimeStamp &bounds) const;
    /// Computes and stores the statistics of a realization, or of one of its times.
    virtual bool CalcMinMaxMean(int realization) const = 0;
    virtual bool CalcMinMaxMean(int realization, qint64 time) const = 0;
    /// The statistics of one time, computed when needed. A stored record does not follow later
    /// changes of the values; CalcMinMaxMean renews it.
    virtual bool GetDataSetStats(int realization, qint64 time, DataSetStats &stats) const;
    virtual bool GetGlobalDataSetStats(int realization, DataSetStats &stats) const;
    virtual bool GetStdDev(int realization, qint64 time, double &result) const = 0;
    virtual MDatum GetValue(int id, qint64 time, bool interpolate, int realization) = 0;
    /// Empty when the value is missing.
    virtual MDatum GetValue(int id, qint64 time, int realization) = 0;
    /// @param overwrite  whether new values replace present ones; otherwise they are stored only
    ///                   where no value is present.
    virtual bool AddTimeSliceValues(int realization, const TimeStamp &stamp,
                                    VORN_DataContainer &values, bool overwrite,
                                    bool updateFrequencies) = 0;

    /// Appends the ids of the blocks that hold the values.
    virtual void AppendBlockIds(QVector<int> &) const {}
    /// Deletes all values of every realization, with their counts and statistics.
    virtual void DropValues() {}

    int GetId() const { return mId; }
    void SetId(int id) { mId = id; }
    /// A Kind: the first word of the stream form.
    int GetDatasetKind() const { return mDatasetKind; }
    DataType GetDataType() const { return mDataType; }
    /// Whether the values do not depend on time. Every time is then taken as 0.
    bool IsStatic() const { return mIsStatic; }
    int GetRealizationCount() const { return mRealizationCount; }

    MMetaData &GetMetaData() { return mMetaData; }
    MMetaData GetMetaData() const { return mMetaData; }
    QVariant GetMetaData(const QString &key) const { return mMetaData[key]; }
    void SetMetaData(const MMetaData &metaData) { mMetaData = metaData; }
    /// False for a value that MMetaData::setTag refuses.
    bool SetMetaData(const QString &key, const QVariant &value)
    {
        return mMetaData.setTag(key, value);
    }

    QList<pathLevel> GetHierarchyPath() const { return mHierarchyPath; }
    void SetHierarchyPath(const QList<pathLevel> &path) { mHierarchyPath = path; }
    /// "/a//b/<7>" is the level named "a/b" and the numbered level 7.
    void SetHierarchyPath(const QString &path);
    /// Slashes inside a name are not doubled, so SetHierarchyPath does not read such a text back as
    /// the same path. An empty name raises "Dataset path is empty".
    QString GetHierarchyPathAsString() const;

    QList<int> GetVariogramModelIds() const;
    QList<QString> GetVariogramModelNames() const;
    bool GetVariogramModel(int id, VariogramModel &model) const;
    /// Adds a model; false, with nothing changed, for a model of another dataset.
    /// @param assignId  whether the model gets the next id.
    bool AddVariogramModel(VariogramModel &model, bool assignId);
    /// Deletes a model; false for an unknown id.
    bool RemoveVariogramModel(int id);
    /// Stores a changed model. A model that now names another dataset of `source` is moved to that
    /// dataset and gets a new id; an unknown dataset raises "dataset".
    bool ReplaceVariogramModel(MDataSource *source, VariogramModel &model);
    /// Deletes all models, which is also done when the data that they were fitted to change.
    bool RemoveAllVariogramModels();
    /// Adds a copy with a new id and a new name; false for an unknown id.
    bool DuplicateVariogramModel(int id);

    /// All values of one time. False for an unknown realization.
    bool GetData(int realization, qint64 time, VORN_ConstDataContainer &values) const;
    /// The same for a static dataset; false for a dataset that is not static.
    bool GetStaticData(int realization, VORN_ConstDataContainer &values) const;

    /// Natural breaks: the classes with the least within-class sum of squares
    /// (Fisher 1958, JASA 53, 789-798). O(k n) memory for n different values in k classes.
    /// @param sorted  ascending, in the unit of the dataset, at least one value for each class.
    /// @return `breakCount` limits in the same unit: minimum, midpoints between neighbouring
    ///         classes, maximum; empty when the user cancels.
    static QList<double> GetJenksBreaks(int breakCount, const QVector<double> &sorted);

Q_SIGNALS:
    void VariogramModelAddedSignal(const DataId &dataset, qint32 model);
    void VariogramModelRemovedSignal(const DataId &dataset, qint32 model);
    void VariogramModelChangedSignal(const DataId &dataset, qint32 model);

protected:
    /// For loading: the fields are read from the stream. `directory` is not used, since the values
    /// are in the block store.
    MDataset(MDataSource *source, const QString &directory);
    MDataset(MDataSource *source, int id, DataType type, const QString &name, const QString &path,
             int realizationCount);
    ~MDataset() override;

    /// The time under which this dataset stores the values of `time`.
    qint64 timeOf(qint64 time) const { return mIsStatic ? 0 : time; }
    bool hasStatistics(int realization) const
    {
        return realization >= 0 && realization < mStatistics.size();
    }
    /// The work of RestoreFromStream. `context` carries the state of the load.
    virtual bool Restore(QDataStream &in, datainterface::LoadContext &context);
    /// Marks the statistics of the whole realization as out of date.
    void invalidateStatistics(int realization);
    /// Reads the number of realizations and the statistics of each.
    void readStatistics(QDataStream &in, const datainterface::LoadContext &context);

    int mId = 0;
    int mDatasetKind = 0;
    DataType mDataType = DecimalType;
    bool mIsStatic = false;
    QMap<int, VariogramModel> mVariogramModels;
    int mNextVariogramId = 0;
    MMetaData mMetaData;
    TimeStamp mTimeBounds;
    QList<pathLevel> mHierarchyPath;
    int mRealizationCount = 0;
    mutable QVector<StatsRealization> mStatistics; ///< filled on demand

private:
    friend class MDataSource;

    void forwardSignalsTo(MDataSource *source);
    void readTags(QDataStream &in, const datainterface::LoadContext &context);
    void readVariogramModels(QDataStream &in);
};

DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const MDataset::pathLevel &level);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, MDataset::pathLevel &level);
