// SPDX-License-Identifier: MIT
/// The datasets of one geography. Registers them, notifies listeners, and gives the public
/// functions access to them.
#pragma once
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QVariant>
#include "datainterface/DataId.h"
#include "datainterface/DataType.h"
#include "datainterface/MDataset.h"
#include "datainterface/MDatum.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/dataContainer.h"
#include "datainterface/export.h"

class QDataStream;
class VariogramModel;
namespace datainterface {
struct LoadContext;
}

/// Owns its datasets, which are keyed by their full id. For an unknown dataset id an operation
/// returns false, 0 or an empty value without a message; only IsValid returns true. Signals are
/// direct calls.
class DATAINTERFACE_EXPORT MDataSource : public QObject {
    Q_OBJECT
public:
    /// Kinds of source, as written to project files. The tags of datasets (MDataset::Kind) are
    /// different.
    enum SourceKind : qint32 { RasterSource = 0, VectorSource = 1, BaseSource = 2 };

    /// @param idSeed  the first dataset's id: the geography's id in the upper 16 bits.
    MDataSource(const QString &directory, int idSeed);
    /// Deletes the datasets in order of id, without a signal.
    ~MDataSource() override;

    virtual bool SaveToStream(QDataStream &out);
    /// Reads the form of dataInterfaceVersionLoading. False for a dataset of the wrong kind, a
    /// corrupt stream and a cancel.
    virtual bool RestoreFromStream(QDataStream &in);
    /// Holds the values of a realization in memory; a negative realization means all of them. `arg`
    /// is not used.
    virtual bool CheckOutDataset(int id, int arg, int realization) const;
    /// Ends CheckOutDataset, with the same arguments.
    virtual bool CheckInDataset(int id, int arg, int realization) const;
    /// Connects the listener's slots DatasetsDyingSlot(const QList<DataId> &),
    /// DatasetsAddedSlot(const QList<DataId> &, bool), DatasetsChangedSlot(const QList<DataId> &),
    /// DatasetNameChangedSlot(const DataId &, const QString &), SuspendDataUsageSlot(MDataSource *)
    /// and ResumeDataUsageSlot(MDataSource *). A missing one raises "Can't connect signals".
    virtual bool AddListener(QObject *listener);
    /// Disconnects the first four slots only. A removed listener that still exists must go on
    /// releasing data when SuspendDataUsageSignal is emitted.
    virtual void RemoveListener(QObject *listener);
    virtual QList<DataId> GetDatasetIds(); ///< ascending
    /// The same for a constant source; calls the override.
    QList<DataId> GetDatasetIds() const { return const_cast<MDataSource *>(this)->GetDatasetIds(); }
    virtual unsigned int GetObjectCount() const = 0;
    virtual int GetDataCount(int id, int realization, qint64 t);
    virtual bool HasDataAtTime(int id, int realization, qint64 t) const;
    /// True when no dataset is valid.
    virtual bool IsEmpty();
    /// True for an unknown id. Hosts rely on that.
    virtual bool IsValid(int id);
    virtual bool IsDatasetIdValid(int id) const = 0;
    /// Advances to the next object that a display shows.
    /// @param index  the object index; the fraction is to be truncated.
    /// @param row, column  the row and column of the cell in a raster, with fractions to be
    ///                     truncated: a display that is smaller than the grid advances by more than
    ///                     one cell. A vector source leaves both unchanged.
    virtual void IncDisplayIndex(double &index, double &row, double &column) const = 0;
    /// Emits SuspendDataUsageSignal: listeners must release data until ResumeDataUsage.
    virtual void SuspendDataUsage();
    /// Emits ResumeDataUsageSignal: listeners may use data again.
    virtual void ResumeDataUsage();
    /// Emits DatasetsAddedSignal and passes the flag on.
    virtual void AnnounceNewDataset(const DataId &id, bool flag);
    /// The same for many at once.
    virtual void AnnounceNewDatasets(const QList<DataId> &ids, bool flag);
    /// Emits DatasetsChangedSignal.
    virtual void AnnounceChangedDataset(const DataId &id);
    /// The same for many at once.
    virtual void AnnounceChangedDatasets(const QList<DataId> &ids);
    /// Announces the whole list, including unknown ids, while the datasets still exist. Then
    /// removes those that exist, and every variogram model that refers to them. Always returns
    /// true.
    virtual bool RemoveDatasets(const QList<DataId> &ids);
    /// The same for one; an unknown id is not announced.
    virtual bool RemoveDataset(const DataId &id);
    /// False unless the container holds one value for each object.
    virtual bool AddTimeSliceValues(int id, int realization, const TimeStamp &stamp,
                                    VORN_DataContainer &values, bool overwrite,
                                    bool updateFrequencies);
    virtual QString GetDisplayName(int id);
    /// Emits DatasetNameChangedSignal unless the name is the present one.
    virtual bool SetDisplayName(int id, const char *name);
    virtual QVariant GetMetaData(int id, const QString &key);
    /// Also false for a value that MMetaData::setTag refuses.
    virtual bool SetMetaData(int id, const QString &key, const QVariant &value);
    virtual QString GetShortDescription(int id);
    virtual bool SetShortDescription(int id, const QString &text);
    virtual QString GetLongDescription(int id);
    virtual bool SetLongDescription(int id, const QString &text);
    /// Appends to the dataset's history.
    virtual bool AddToLongDescription(int id, const QString &text);
    virtual QList<TimeStamp> GetCommonTimeStamps(int id, int realization);
    virtual bool GetCommonTimeStamp(int id, int realization, qint64 t, TimeStamp &stamp) const = 0;
    virtual QList<double> GetIntervalBreaks(int id, int realization, int count,
                                            MDataset::ClassificationType type, bool flag) = 0;
    virtual QMap<MDatum, int> GetDataFrequencies(int id) = 0;
    virtual int GetUniqueValueCount(int id) const = 0;
    /// Whether the object's values at the two times belong to different intervals.
    virtual bool ObjectValueChanged(int id, int realization, unsigned int object, qint64 first,
                                    qint64 second);
    virtual bool SetHierarchyPath(int id, const QString &path) = 0;
    virtual bool SetHierarchyPath(int id, const QList<MDataset::pathLevel> &path) = 0;
    virtual bool GetHierarchyPath(int id, QList<MDataset::pathLevel> &path) const = 0;
    virtual bool GetHierarchyPathAsString(int id, QString &path) const = 0;
    virtual bool GetTimeBounds(int id, TimeStamp &bounds) const = 0;
    /// The hull over all datasets; TimeStamp::Invalid without data.
    virtual TimeStamp GetTimeBounds() = 0;
    virtual bool GetMean(int id, int realization, qint64 t, double &mean) = 0;
    virtual bool GetStddev(int id, int realization, qint64 t, double &deviation) = 0;
    virtual bool GetMax(int id, int realization, qint64 t, MDatum &value) = 0;
    virtual bool GetMin(int id, int realization, qint64 t, MDatum &value) = 0;
    virtual bool GetGlobalMin(int id, int realization, MDatum &value) = 0; ///< over all times
    virtual bool GetGlobalMax(int id, int realization, MDatum &value) = 0;
    virtual bool IsNumeric(int id) const = 0;
    virtual int GetSourceKind() const { return mKind; }

    MDataset *GetDataset(int id) { return mDatasets.value(id, nullptr); }
    const MDataset *GetDataset(int id) const { return mDatasets.value(id, nullptr); }
    int GetNewDatasetId() { return mNextDatasetId++; }
    bool GetDataType(int id, DataType &type) const;

    bool GetVariogramModel(const DataId &id, int modelId, VariogramModel &model) const;
    /// Adds the model under the next model id of the dataset.
    bool AddVariogramModel(const DataId &id, VariogramModel &model);
    /// Deletes a model of the dataset.
    bool RemoveVariogramModel(const DataId &id, int modelId);
    /// Stores a changed model under its id: see MDataset::ReplaceVariogramModel.
    bool ReplaceVariogramModel(const DataId &id, VariogramModel &model);
    /// Deletes the models of one dataset; the overload without an id deletes those of all datasets.
    bool RemoveAllVariogramModels(const DataId &id);
    void RemoveAllVariogramModels();
    /// Adds a copy with a new id and a new name.
    bool DuplicateVariogramModel(const DataId &id, int modelId);
    bool GetVariogramModelNames(const DataId &id, QList<QString> &names) const;
    bool GetVariogramModelIds(const DataId &id, QList<int> &ids) const;
    /// Whether a model of any dataset of this source names `id` as its dataset or its locations.
    bool HasAssociatedVariogramModels(const DataId &id) const;
    /// Deletes these models.
    void RemoveAssociatedVariogramModels(const DataId &id);

Q_SIGNALS:
    void DatasetsDyingSignal(const QList<DataId> &ids); ///< the datasets still exist
    void DatasetsAddedSignal(const QList<DataId> &ids, bool flag);
    void DatasetsChangedSignal(const QList<DataId> &ids);
    void DatasetNameChangedSignal(const DataId &id, const QString &name);
    void SuspendDataUsageSignal(MDataSource *source); ///< release data
    void ResumeDataUsageSignal(MDataSource *source);
    void VariogramModelAddedSignal(const DataId &id, qint32 modelId);
    void VariogramModelRemovedSignal(const DataId &id, qint32 modelId);
    void VariogramModelChangedSignal(const DataId &id, qint32 modelId);

protected:
    friend class MVectorData;
    friend class MRasterData;
    /// The work of RestoreFromStream. `context` carries the state of the load.
    virtual bool Restore(QDataStream &in, datainterface::LoadContext &context);
    /// Makes an empty dataset to restore into.
    /// @param kind  a number of MDataset::Kind.
    /// @return null for a kind that does not belong to this source.
    virtual MDataset *NewEmptyDataset(int kind);

    int mNextDatasetId;
    qint32 mKind = BaseSource;
    QMap<int, MDataset *> mDatasets;

private:
    void deleteDataset(int id);
    bool adoptRestored(MDataset *dataset, QDataStream &in, datainterface::LoadContext &context);
    bool restoreDatasets(QDataStream &in, datainterface::LoadContext &context);
    bool restoreLegacyDatasets(QDataStream &in, datainterface::LoadContext &context);
};
