// SPDX-License-Identifier: MIT
// A vector dataset in a project: the base's form, then
//
//   int32 storage type, int32 object count
//   frequencies: a byte array of three maps (integers, decimals, texts; value and int32 count)
//   int32 realizations, each, the last first: int32 index and a byte array of six maps (slices of
//   integers, decimals and texts by TimeStamp, series of the same by int32 object id), with the
//   int32 block id of every container
//
// Maps are written from the last key to the first. The values are in the block store. Files of
// version 180004 have block ids but no block store, so their datasets load without values. Older
// forms are in MVectorDataset.legacy.cpp.
#include <memory>
#include "Common/detail/failure.h"
#include "Common/detail/streams.h"
#include "datasets/elementTypes.h"
#include "datasets/oldForms.h"
#include "frame/loadContext.h"

using namespace datainterface;

namespace {

constexpr qint64 kMinRealizationBytes = 4 + 4;

template <class Key> constexpr qint64 keyBytes()
{
    return std::is_same_v<Key, TimeStamp> ? 24 : std::is_same_v<Key, OrderedDouble> ? 8 : 4;
}

template <class Map> void writeBlockIds(QDataStream &out, const Map &map)
{
    out << static_cast<qint32>(map.size());
    for (auto it = map.cend(); it != map.cbegin();) {
        --it;
        out << it.key() << static_cast<qint32>((*it)->BlockId());
    }
}

/// Reads containers that know only their block id. A key replaces an earlier key that it overlaps.
template <class Map> void readBlockIds(QDataStream &in, Map &map)
{
    using Key = typename Map::key_type;
    using Container = std::remove_pointer_t<typename Map::mapped_type>;
    QMap<Key, qint32> ids;
    readMap(in, ids, keyBytes<Key>() + 4);
    for (auto it = ids.cbegin(); it != ids.cend(); ++it) {
        // Stamps with crossed ends have no order: keys that were different in `ids` can be
        // equivalent here.
        auto container = std::make_unique<Container>(*it);
        Container *&entry = map[it.key()];
        delete entry;
        entry = container.release();
    }
}

template <class... Maps> void readTables(QDataStream &in, std::tuple<Maps...> &tables)
{
    const auto readTable = [&in](auto &table) {
        readMap(in, table, keyBytes<typename std::decay_t<decltype(table)>::key_type>() + 4);
    };
    std::apply([&](auto &...table) { (readTable(table), ...); }, tables);
}

void readFrequencies(QDataStream &in, RealizationVectorDataFrequencies &frequencies,
                     const LoadContext &context)
{
    if (!context.since(fileVersions::kFrequenciesAreArray)) {
        readTables(in, frequencies.tables);
    } else {
        QByteArray bytes;
        readBytes(in, bytes);
        BytesReader reader(bytes);
        readTables(reader, frequencies.tables);
        if (in.status() == QDataStream::Ok)
            in.setStatus(reader.status());
    }
    require(in.status() == QDataStream::Ok, "Realization reserialization error");
}

} // namespace

QDataStream &operator<<(QDataStream &out, const RealizationVectorDataFrequencies &frequencies)
{
    QByteArray bytes;
    BytesWriter writer(&bytes);
    std::apply([&writer](const auto &...table) { (writer << ... << table); }, frequencies.tables);
    return out << bytes;
}

QDataStream &operator>>(QDataStream &in, RealizationVectorDataFrequencies &frequencies)
{
    readFrequencies(in, frequencies, loadContext());
    return in;
}

QDataStream &operator<<(QDataStream &out, const MVectorDataRealization &realization)
{
    QByteArray bytes;
    BytesWriter writer(&bytes);
    const auto write = [&writer](const auto &...maps) { (writeBlockIds(writer, maps), ...); };
    std::apply(write, realization.maps());
    return out << bytes;
}

QDataStream &operator>>(QDataStream &in, MVectorDataRealization &realization)
{
    QByteArray bytes;
    readBytes(in, bytes);
    BytesReader reader(bytes);
    const auto read = [&reader](auto &...maps) { (readBlockIds(reader, maps), ...); };
    std::apply(read, realization.maps());
    if (in.status() == QDataStream::Ok)
        in.setStatus(reader.status());
    return in;
}

void MVectorDataset::AppendBlockIds(QVector<int> &ids) const
{
    const auto append = [&ids](const auto &...maps) {
        const auto appendMap = [&ids](const auto &map) {
            for (const auto *container : map)
                ids.append(container->BlockId());
        };
        (appendMap(maps), ...);
    };
    for (const MVectorDataRealization &realization : qAsConst(mRealizationData))
        std::apply(append, realization.maps());
}

bool MVectorDataset::SaveToStream(QDataStream &out)
{
    if (!MDataset::SaveToStream(out))
        return false;
    out << static_cast<qint32>(mStorageType) << static_cast<qint32>(mObjectCount) << mFrequencies
        << mRealizationData;
    return true;
}

bool MVectorDataset::RestoreFromStream(QDataStream &in)
{
    LoadContext context = loadContext();
    return MVectorDataset::Restore(in, context);
}

bool MVectorDataset::Restore(QDataStream &in, LoadContext &context)
{
    if (context.since(fileVersions::kVectorDatasetHasBase) && !MDataset::Restore(in, context))
        return false;
    if (!context.since(fileVersions::kDatasetHasRealizations))
        return restoreSingle(in, context);
    return context.since(fileVersions::kHasStorageType) ? restoreValues(in, context)
                                                        : restoreInline(in, context);
}

/// The form since 180004: containers as block ids.
bool MVectorDataset::restoreValues(QDataStream &in, const LoadContext &context)
{
    const qint32 storage = read<qint32>(in);
    if (!context.since(fileVersions::kDatasetHasType))
        mDataType = dataTypeFromOld(read<qint32>(in));
    const bool isKnownType =
        mDataType == DecimalType || mDataType == IntegerType || mDataType == StringType;
    if (!restoreObjectCount(in, context) || !isKnownType
        || (storage != TimeSeries && storage != TimeSlice))
        return false;
    mStorageType = static_cast<StorageType>(storage);
    if (context.since(fileVersions::kFrequenciesAreArray))
        readFrequencies(in, mFrequencies, context);
    else
        restoreOldFrequencies(in, context);
    return restoreRealizations(in, context);
}

// The memory of a container follows from this number, so a wrong one is refused before anything is
// allocated.
bool MVectorDataset::restoreObjectCount(QDataStream &in, const LoadContext &context)
{
    mObjectCount = read<qint32>(in);
    return in.status() == QDataStream::Ok && mObjectCount >= 0
           && (context.objectCount < 0 || mObjectCount == context.objectCount);
}

void MVectorDataset::restoreOldFrequencies(QDataStream &in, const LoadContext &context)
{
    using Tables = decltype(mFrequencies.tables);
    const int count = readOldFrequencies<Tables>(in, mFrequencies.tables, [&](Tables &tables) {
        RealizationVectorDataFrequencies realization;
        readFrequencies(in, realization, context);
        tables = realization.tables;
    });
    require(count == mRealizationCount, "Invalid realization count");
}

bool MVectorDataset::restoreRealizations(QDataStream &in, const LoadContext &context)
{
    const bool hasBlocks = context.since(fileVersions::kHasBlocks);
    const int count = readCount(in, kMinRealizationBytes);
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        const qint32 index = read<qint32>(in);
        const bool isNew =
            index >= 0 && index < mRealizationCount && !mRealizationData.contains(index);
        if (!isNew)
            return false;
        MVectorDataRealization &realization = realizationsToChange()[index];
        QByteArray lost;
        if (hasBlocks)
            in >> realization;
        else
            readBytes(in, lost);
    }
    if (in.status() != QDataStream::Ok)
        return false;
    require(count == mRealizationCount, "Invalid realization count");
    return hasBlocks || RecalculateFrequencies();
}
