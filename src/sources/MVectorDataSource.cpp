// SPDX-License-Identifier: MIT
#include "datainterface/MVectorDataSource.h"
#include "Common/detail/streams.h"
#include "frame/loadContext.h"
#include "sources/askStatistics.h"
#include "sources/askVector.h"

using namespace datainterface;

MVectorDataSource::MVectorDataSource(const QString &directory) : MVectorDataSource(directory, 0, 0)
{
}

MVectorDataSource::MVectorDataSource(const QString &directory, unsigned int objectCount, int idSeed)
    : MDataSource(directory, idSeed), mObjectCount(objectCount)
{
    mKind = VectorSource;
}

bool MVectorDataSource::SaveToStream(QDataStream &out)
{
    if (!MDataSource::SaveToStream(out))
        return false;
    out << qint32(mObjectCount);
    return out.status() == QDataStream::Ok;
}

bool MVectorDataSource::RestoreFromStream(QDataStream &in)
{
    LoadContext context = loadContext();
    return MVectorDataSource::Restore(in, context);
}

bool MVectorDataSource::Restore(QDataStream &in, LoadContext &context)
{
    if (!MDataSource::Restore(in, context))
        return false;
    qint32 objectCount = context.tableObjectCount;
    if (context.between(fileVersions::kVectorSourceHasSpareTable,
                        fileVersions::kVectorSourceHasNoSpareTable)) {
        QMap<int, QString> unused;
        readMap(in, unused, 2 * sizeof(qint32));
    }
    if (context.since(fileVersions::kSourceEndsWithCount))
        in >> objectCount;
    if (in.status() != QDataStream::Ok || objectCount < 0)
        return false;
    mObjectCount = static_cast<unsigned int>(objectCount);
    // Reading a dataset of another size would run past its end.
    return std::all_of(
        mDatasets.cbegin(), mDatasets.cend(), [objectCount](const MDataset *dataset) {
            return static_cast<const MVectorDataset *>(dataset)->GetObjectCount() == objectCount;
        });
}

MDataset *MVectorDataSource::NewEmptyDataset(int kind)
{
    return kind == MDataset::VectorKind ? new MVectorDataset(this, QString()) : nullptr;
}

MVectorDataset *MVectorDataSource::GetVectorDataset(int id)
{
    return static_cast<MVectorDataset *>(GetDataset(id)); // no other kind is registered here
}

const MVectorDataset *MVectorDataSource::GetVectorDataset(int id) const
{
    return static_cast<const MVectorDataset *>(GetDataset(id));
}

bool MVectorDataSource::IsDatasetIdValid(int id) const
{
    return GetVectorDataset(id) != nullptr;
}

void MVectorDataSource::IncDisplayIndex(double &index, double &, double &) const
{
    index += 1.0;
}

bool MVectorDataSource::Resize(unsigned int objectCount)
{
    const int newCount = static_cast<int>(objectCount);
    QList<MVectorDataset *> done;
    for (MDataset *dataset : std::as_const(mDatasets)) {
        auto *vector = static_cast<MVectorDataset *>(dataset);
        if (newCount < 0 || !vector->Resize(newCount)) {
            for (MVectorDataset *resized : std::as_const(done))
                resized->Resize(static_cast<int>(mObjectCount));
            return false;
        }
        done.append(vector);
    }
    mObjectCount = objectCount;
    return true;
}

void MVectorDataSource::RemoveObjects(const QSet<int> &objects)
{
    QSet<int> present;
    for (int object : objects)
        if (object >= 0 && static_cast<unsigned int>(object) < mObjectCount)
            present.insert(object);
    RequireReleased(present); // raises before any dataset has changed
    for (MDataset *dataset : std::as_const(mDatasets))
        static_cast<MVectorDataset *>(dataset)->RemoveObjects(present);
    mObjectCount -= static_cast<unsigned int>(present.size());
}

void MVectorDataSource::RequireReleased(const QSet<int> &objects) const
{
    for (const MDataset *dataset : std::as_const(mDatasets))
        static_cast<const MVectorDataset *>(dataset)->RequireReleased(objects);
}

void MVectorDataSource::CleanPre201044Data()
{
    for (MDataset *dataset : std::as_const(mDatasets))
        static_cast<MVectorDataset *>(dataset)->CleanPre201044Data();
}

template <class Path>
int MVectorDataSource::makeDataset(const QString &name, DataType type,
                                   MVectorDataset::StorageType storage, int realizations,
                                   const Path &path)
{
    const int id = GetNewDatasetId();
    auto *dataset = new MVectorDataset(this, storage, id, type, name, QString(), realizations,
                                       static_cast<int>(mObjectCount));
    dataset->SetHierarchyPath(path);
    mDatasets.insert(id, dataset);
    return id;
}

int MVectorDataSource::NewVectorDataset(const QString &name, DataType type,
                                        MVectorDataset::StorageType storage, int realizations,
                                        const QString &path)
{
    return makeDataset(name, type, storage, realizations, path);
}

int MVectorDataSource::NewVectorDataset(const QString &name, DataType type,
                                        MVectorDataset::StorageType storage, int realizations,
                                        const QList<MDataset::pathLevel> &path)
{
    return makeDataset(name, type, storage, realizations, path);
}

bool MVectorDataSource::GetCommonTimeStamp(int id, int realization, qint64 t,
                                           TimeStamp &stamp) const
{
    return askVector(*this, id, [&](const MVectorDataset &dataset) {
        return dataset.GetCommonTimeStamp(realization, t, stamp);
    });
}

QList<double> MVectorDataSource::GetIntervalBreaks(int id, int realization, int count,
                                                   MDataset::ClassificationType type, bool flag)
{
    return askVector(*this, id, [=](MVectorDataset &dataset) {
        return dataset.GetIntervalBreaks(realization, count, type, flag);
    });
}

QMap<MDatum, int> MVectorDataSource::GetDataFrequencies(int id)
{
    return askVector(*this, id,
                     [](MVectorDataset &dataset) { return dataset.GetDataFrequencies(); });
}

int MVectorDataSource::GetUniqueValueCount(int id) const
{
    return askVector(
        *this, id, [](const MVectorDataset &dataset) { return dataset.UniqueValueCount(nullptr); });
}

unsigned int MVectorDataSource::GetUniqueCount(int id)
{
    return static_cast<unsigned int>(GetUniqueValueCount(id));
}

bool MVectorDataSource::SetHierarchyPath(int id, const QString &path)
{
    return tell(*this, id, [&path](MDataset &dataset) { dataset.SetHierarchyPath(path); });
}

bool MVectorDataSource::SetHierarchyPath(int id, const QList<MDataset::pathLevel> &path)
{
    return tell(*this, id, [&path](MDataset &dataset) { dataset.SetHierarchyPath(path); });
}

bool MVectorDataSource::GetHierarchyPath(int id, QList<MDataset::pathLevel> &path) const
{
    return tell(*this, id, [&path](const MDataset &dataset) { path = dataset.GetHierarchyPath(); });
}

bool MVectorDataSource::GetHierarchyPathAsString(int id, QString &path) const
{
    return tell(*this, id,
                [&path](const MDataset &dataset) { path = dataset.GetHierarchyPathAsString(); });
}

bool MVectorDataSource::GetTimeBounds(int id, TimeStamp &bounds) const
{
    return askVector(*this, id, [&bounds](const MVectorDataset &dataset) {
        return dataset.GetTimeBounds(bounds);
    });
}

TimeStamp MVectorDataSource::GetTimeBounds()
{
    return hullOf(mDatasets);
}

bool MVectorDataSource::GetMean(int id, int realization, qint64 t, double &mean)
{
    return askStatistics(*this, id, realization, t, &DataSetStats::mean, mean);
}

bool MVectorDataSource::GetStddev(int id, int realization, qint64 t, double &deviation)
{
    return askVector(*this, id, [&](const MVectorDataset &dataset) {
        return dataset.GetStdDev(realization, t, deviation);
    });
}

bool MVectorDataSource::GetMax(int id, int realization, qint64 t, MDatum &value)
{
    return askStatistics(*this, id, realization, t, &DataSetStats::maximum, value);
}

bool MVectorDataSource::GetMin(int id, int realization, qint64 t, MDatum &value)
{
    return askStatistics(*this, id, realization, t, &DataSetStats::minimum, value);
}

bool MVectorDataSource::GetGlobalMin(int id, int realization, MDatum &value)
{
    return askGlobalStatistics(*this, id, realization, &DataSetStats::minimum, value);
}

bool MVectorDataSource::GetGlobalMax(int id, int realization, MDatum &value)
{
    return askGlobalStatistics(*this, id, realization, &DataSetStats::maximum, value);
}

bool MVectorDataSource::IsNumeric(int id) const
{
    return askVector(*this, id, [](const MVectorDataset &dataset) { return dataset.IsNumeric(); });
}

bool MVectorDataSource::GetDataWidths(int id, int &width, int &decimals)
{
    return tell(*this, id, [&](MDataset &dataset) {
        static_cast<MVectorDataset &>(dataset).GetDataWidths(width, decimals);
    });
}

QList<TimeStamp> MVectorDataSource::GetTimeSliceIntervals(int id, int realization)
{
    return askVector(*this, id, [=](MVectorDataset &dataset) {
        return dataset.GetTimeSliceIntervals(realization);
    });
}

QList<TimeStamp> MVectorDataSource::GetDataIntervals(int id, int realization, unsigned int object)
{
    return askVector(*this, id, [=](MVectorDataset &dataset) {
        return dataset.GetDataIntervals(realization, static_cast<int>(object));
    });
}
