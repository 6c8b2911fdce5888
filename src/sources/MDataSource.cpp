// SPDX-License-Identifier: MIT
#include "datainterface/MDataSource.h"
#include <utility>
#include "Common/detail/failure.h"
#include "datainterface/dataContainer.h"
#include "frame/listeners.h"
#include "sources/askDataset.h"

using namespace datainterface;

namespace {

// RemoveListener does not disconnect kSuspensionConnections.
const Connection kListenerConnections[] = {
    {SIGNAL(DatasetsDyingSignal(const QList<DataId> &)),
     SLOT(DatasetsDyingSlot(const QList<DataId> &))},
    {SIGNAL(DatasetsAddedSignal(const QList<DataId> &, bool)),
     SLOT(DatasetsAddedSlot(const QList<DataId> &, bool))},
    {SIGNAL(DatasetsChangedSignal(const QList<DataId> &)),
     SLOT(DatasetsChangedSlot(const QList<DataId> &))},
    {SIGNAL(DatasetNameChangedSignal(const DataId &, const QString &)),
     SLOT(DatasetNameChangedSlot(const DataId &, const QString &))},
};
const Connection kSuspensionConnections[] = {
    {SIGNAL(SuspendDataUsageSignal(MDataSource *)), SLOT(SuspendDataUsageSlot(MDataSource *))},
    {SIGNAL(ResumeDataUsageSignal(MDataSource *)), SLOT(ResumeDataUsageSlot(MDataSource *))},
};

} // namespace

MDataSource::MDataSource(const QString &, int idSeed) : mNextDatasetId(idSeed)
{
}

MDataSource::~MDataSource()
{
    const QMap<int, MDataset *> datasets = std::exchange(mDatasets, {});
    for (MDataset *dataset : datasets) // mDatasets is empty for listeners of destroyed()
        delete dataset;
}

bool MDataSource::CheckOutDataset(int id, int arg, int realization) const
{
    return ask(*this, id, false, [=](const MDataset &dataset) {
        return realization < 0 ? dataset.CheckOutAllRealizations(arg)
                               : dataset.CheckOutRealization(realization, arg);
    });
}

bool MDataSource::CheckInDataset(int id, int arg, int realization) const
{
    return ask(*this, id, false, [=](const MDataset &dataset) {
        return realization < 0 ? dataset.CheckInAllRealizations(arg)
                               : dataset.CheckInRealization(realization, arg);
    });
}

bool MDataSource::AddListener(QObject *listener)
{
    require(connectAll(this, listener, kListenerConnections)
                && connectAll(this, listener, kSuspensionConnections),
            "Can't connect signals");
    return true;
}

void MDataSource::RemoveListener(QObject *listener)
{
    disconnectAll(this, listener, kListenerConnections);
}

QList<DataId> MDataSource::GetDatasetIds()
{
    QList<DataId> ids;
    for (auto entry = mDatasets.cbegin(); entry != mDatasets.cend(); ++entry)
        ids.append(DataId(entry.key()));
    return ids;
}

int MDataSource::GetDataCount(int id, int realization, qint64 t)
{
    return ask(*this, id, 0,
               [=](const MDataset &dataset) { return dataset.GetDataCount(realization, t); });
}

bool MDataSource::HasDataAtTime(int id, int realization, qint64 t) const
{
    return ask(*this, id, false,
               [=](const MDataset &dataset) { return dataset.HasDataAtTime(realization, t); });
}

bool MDataSource::IsEmpty()
{
    return std::none_of(mDatasets.cbegin(), mDatasets.cend(),
                        [](MDataset *dataset) { return dataset->IsValid(); });
}

bool MDataSource::IsValid(int id)
{
    return ask(*this, id, true, [](const MDataset &dataset) { return dataset.IsValid(); });
}

void MDataSource::SuspendDataUsage()
{
    Q_EMIT SuspendDataUsageSignal(this);
}

void MDataSource::ResumeDataUsage()
{
    Q_EMIT ResumeDataUsageSignal(this);
}

void MDataSource::AnnounceNewDataset(const DataId &id, bool flag)
{
    Q_EMIT DatasetsAddedSignal({id}, flag);
}

void MDataSource::AnnounceNewDatasets(const QList<DataId> &ids, bool flag)
{
    Q_EMIT DatasetsAddedSignal(ids, flag);
}

void MDataSource::AnnounceChangedDataset(const DataId &id)
{
    Q_EMIT DatasetsChangedSignal({id});
}

void MDataSource::AnnounceChangedDatasets(const QList<DataId> &ids)
{
    Q_EMIT DatasetsChangedSignal(ids);
}

bool MDataSource::RemoveDatasets(const QList<DataId> &ids)
{
    Q_EMIT DatasetsDyingSignal(ids);
    for (const DataId &id : ids)
        deleteDataset(id);
    return true;
}

bool MDataSource::RemoveDataset(const DataId &id)
{
    if (mDatasets.contains(id)) {
        Q_EMIT DatasetsDyingSignal({id});
        deleteDataset(id);
    }
    return true;
}

// Variogram models are removed first, while the dataset can still announce the removal of its own.
void MDataSource::deleteDataset(int id)
{
    if (!mDatasets.contains(id))
        return;
    RemoveAssociatedVariogramModels(id);
    delete mDatasets.take(id);
}

bool MDataSource::AddTimeSliceValues(int id, int realization, const TimeStamp &stamp,
                                     VORN_DataContainer &values, bool overwrite,
                                     bool updateFrequencies)
{
    if (values.count() < 0 || static_cast<unsigned int>(values.count()) != GetObjectCount())
        return false;
    return ask(*this, id, false, [&](MDataset &dataset) {
        return dataset.AddTimeSliceValues(realization, stamp, values, overwrite, updateFrequencies);
    });
}

QString MDataSource::GetDisplayName(int id)
{
    return ask(*this, id, QString(), [](MDataset &dataset) { return dataset.GetDisplayName(); });
}

bool MDataSource::SetDisplayName(int id, const char *name)
{
    return ask(*this, id, false, [&](MDataset &dataset) {
        const QString text = QString::fromLocal8Bit(name);
        if (dataset.GetDisplayName() != text) {
            dataset.SetDisplayName(text);
            Q_EMIT DatasetNameChangedSignal(id, text);
        }
        return true;
    });
}

QVariant MDataSource::GetMetaData(int id, const QString &key)
{
    return ask(*this, id, QVariant(),
               [&key](const MDataset &dataset) { return dataset.GetMetaData(key); });
}

bool MDataSource::SetMetaData(int id, const QString &key, const QVariant &value)
{
    MDataset *dataset = GetDataset(id);
    return dataset && dataset->SetMetaData(key, value);
}

QString MDataSource::GetShortDescription(int id)
{
    return ask(*this, id, QString(),
               [](MDataset &dataset) { return dataset.GetShortDescription(); });
}

bool MDataSource::SetShortDescription(int id, const QString &text)
{
    return tell(*this, id, [&text](MDataset &dataset) { dataset.SetShortDescription(text); });
}

QString MDataSource::GetLongDescription(int id)
{
    return ask(*this, id, QString(),
               [](MDataset &dataset) { return dataset.GetLongDescription(); });
}

bool MDataSource::SetLongDescription(int id, const QString &text)
{
    return tell(*this, id, [&text](MDataset &dataset) { dataset.SetLongDescription(text); });
}

bool MDataSource::AddToLongDescription(int id, const QString &text)
{
    return tell(*this, id, [&text](MDataset &dataset) { dataset.AddToLongDescription(text); });
}

QList<TimeStamp> MDataSource::GetCommonTimeStamps(int id, int realization)
{
    return ask(*this, id, QList<TimeStamp>(), [realization](MDataset &dataset) {
        return dataset.GetCommonTimeStamps(realization);
    });
}

bool MDataSource::ObjectValueChanged(int id, int realization, unsigned int object, qint64 first,
                                     qint64 second)
{
    return ask(*this, id, false, [=](MDataset &dataset) {
        return dataset.ObjectValueChanged(realization, static_cast<int>(object), first, second);
    });
}

bool MDataSource::GetDataType(int id, DataType &type) const
{
    return tell(*this, id, [&type](const MDataset &dataset) { type = dataset.GetDataType(); });
}
