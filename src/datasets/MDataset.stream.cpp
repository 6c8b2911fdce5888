// SPDX-License-Identifier: MIT
// The part of a dataset's stream form that both kinds share. Numbers are big-endian; a map is its
// count and its pairs, from the last key to the first.
//
//   int32 kind, int32 id, int32 data type, int8 static, metadata, time bounds (24 bytes),
//   path: int32 count of (name, int32 id); int32 realizations;
//   statistics: int32 count of (map of TimeStamp to record, record); int32 next model id; map of
//   int32 to model
#include "datainterface/MDataset.h"
#include "Common/detail/streams.h"
#include "cells/oldTypeCodes.h"
#include "frame/loadContext.h"

using namespace datainterface;

namespace {

// The fewest bytes of an element in any version. A count is checked against them.
constexpr qint64 kMinStatsBytes = 8 + 8 + 2 * 16 + 2;
constexpr qint64 kMinTimedStatsBytes = 24 + kMinStatsBytes;
constexpr qint64 kMinRealizationBytes = 4 + kMinStatsBytes;
constexpr qint64 kMinLevelBytes = 4 + 4;
constexpr qint64 kMinModelBytes = 4 + 4;
constexpr qint64 kMinAttributeBytes = 4 + 16;

QVariant variantFrom(const MDatum &value)
{
    switch (value.type()) {
    case MDatum::Integer:
        return static_cast<int>(value.integerValue());
    case MDatum::Decimal:
        return value.decimalValue();
    case MDatum::String:
        return value.text();
    default:
        return QVariant();
    }
}

} // namespace

QDataStream &operator<<(QDataStream &out, const DataSetStats &stats)
{
    return out << stats.mean << stats.stdDev << stats.minimum << stats.maximum
               << static_cast<qint8>(stats.stdDevValid) << static_cast<qint8>(stats.meanValid);
}

QDataStream &operator>>(QDataStream &in, DataSetStats &stats)
{
    in >> stats.mean >> stats.stdDev >> stats.minimum >> stats.maximum;
    stats.stdDevValid = read<qint8>(in);
    stats.meanValid = read<qint8>(in);
    return in;
}

QDataStream &operator<<(QDataStream &out, const StatsRealization &stats)
{
    return out << stats.perTime << stats.whole;
}

QDataStream &operator>>(QDataStream &in, StatsRealization &stats)
{
    readMap(in, stats.perTime, kMinTimedStatsBytes);
    return in >> stats.whole;
}

QDataStream &operator<<(QDataStream &out, const MDataset::pathLevel &level)
{
    return out << level.name << static_cast<qint32>(level.id);
}

QDataStream &operator>>(QDataStream &in, MDataset::pathLevel &level)
{
    in >> level.name;
    level.id = read<qint32>(in);
    return in;
}

bool MDataset::SaveToStream(QDataStream &out)
{
    out << static_cast<qint32>(mDatasetKind) << static_cast<qint32>(mId)
        << static_cast<qint32>(mDataType) << static_cast<qint8>(mIsStatic) << mMetaData
        << mTimeBounds << mHierarchyPath << static_cast<qint32>(mRealizationCount) << mStatistics
        << static_cast<qint32>(mNextVariogramId) << mVariogramModels;
    return true;
}

bool MDataset::RestoreFromStream(QDataStream &in)
{
    LoadContext context = loadContext();
    return MDataset::Restore(in, context);
}

bool MDataset::Restore(QDataStream &in, LoadContext &context)
{
    if (context.since(fileVersions::kDatasetHasHead)) {
        mId = read<qint32>(in);
        if (context.since(fileVersions::kDatasetHasType))
            mDataType = cellTypeOf(read<qint32>(in), context);
        mIsStatic = context.since(fileVersions::kDatasetHasStatic) && read<qint8>(in);
        readTags(in, context);
        in >> mTimeBounds;
    }
    if (context.since(fileVersions::kDatasetHasPath))
        readList(in, mHierarchyPath, kMinLevelBytes);
    readStatistics(in, context);
    if (context.since(fileVersions::kDatasetHasRealizations))
        readVariogramModels(in);
    return in.status() == QDataStream::Ok;
}

void MDataset::readTags(QDataStream &in, const LoadContext &context)
{
    if (!context.since(fileVersions::kDatasetNameIsTag))
        SetDisplayName(read<QString>(in));
    if (!context.since(fileVersions::kAttributesAreTags)) {
        QMap<QString, MDatum> attributes;
        readMap(in, attributes, kMinAttributeBytes);
        for (auto attribute = attributes.cbegin(); attribute != attributes.cend(); ++attribute) {
            const QVariant value = variantFrom(*attribute);
            if (value.isValid())
                mMetaData.setTag(attribute.key(), value);
        }
    }
    if (!context.since(fileVersions::kDatasetHasTags)) {
        SetShortDescription(read<QString>(in));
        SetLongDescription(read<QString>(in));
    } else {
        MMetaData tags;
        in >> tags;
        for (auto tag = tags.values().cbegin(); tag != tags.values().cend(); ++tag)
            mMetaData.setTag(tag.key(), tag.value());
    }
}

void MDataset::readStatistics(QDataStream &in, const LoadContext &context)
{
    if (!context.since(fileVersions::kDatasetHasRealizations)) {
        mRealizationCount = 1;
        mStatistics.resize(1);
        in >> mStatistics[0];
        return;
    }
    mRealizationCount = read<qint32>(in);
    readList(in, mStatistics, kMinRealizationBytes);
    if (mStatistics.size() != mRealizationCount)
        in.setStatus(QDataStream::ReadCorruptData);
}

void MDataset::readVariogramModels(QDataStream &in)
{
    mNextVariogramId = read<qint32>(in);
    readMap(in, mVariogramModels, kMinModelBytes);
}
