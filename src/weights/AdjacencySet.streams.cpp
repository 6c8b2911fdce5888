// SPDX-License-Identifier: MIT
// The stream form of a set: its definition, then for each span, the last first, the span and the
// ids of the blocks of its lists, by object, then the flag of cluster sets. The blocks themselves
// come after all geographies in a project file, so they cannot be checked here.
#include "datainterface/AdjacencySet.h"
#include <array>
#include <limits>
#include "Common/detail/streams.h"
#include "frame/loadContext.h"
#include "frame/notes.h"
#include "weights/egoNeighbors.h"

using namespace datainterface;

namespace {

constexpr qint64 kStampBytes = 24;
constexpr qint64 kCountBytes = 4;
constexpr qint64 kOldDatumBytes = 12; // the least: floats have 4 or 8 bytes by the stream version

// Reads an enumerator; a number that is not allowed marks the stream as corrupt.
template <class Enum, size_t n>
void readOneOf(QDataStream &in, Enum &value, const std::array<Enum, n> &allowed)
{
    qint32 number = 0;
    in >> number;
    for (const Enum candidate : allowed) {
        if (candidate == number) {
            value = candidate;
            return;
        }
    }
    in.setStatus(QDataStream::ReadCorruptData);
}

constexpr std::array<AdjacencySet::GeographyType, 3> kGeographyTypes{
    AdjacencySet::PointGeography, AdjacencySet::PolygonGeography, AdjacencySet::RasterGeography};
constexpr std::array<neighborMethodType, 6> kMethods{PolygonNeighbors, NearestNeighbors,
                                                     RangeNeighbors,   RookNeighbors,
                                                     QueenNeighbors,   CustomNeighbors};
constexpr std::array<spatialWeightType, 7> kWeightTypes{
    ConstantWeight,     RowStandardizedWeight, DistanceRankWeight, InverseDistanceWeight,
    BorderLengthWeight, BorderShareWeight,     CustomWeight};

template <class Wire> bool readFlag(QDataStream &in)
{
    Wire flag = 0;
    in >> flag;
    return flag != 0;
}

int readInt(QDataStream &in)
{
    qint32 number = 0;
    in >> number;
    return number;
}

/// The id, weight and angle of files that hold the lists themselves.
struct pre201042NeighborDatum {
    qint32 id = -1;
    float weight = 0.0F;
    float angle = 0.0F;
};

void readOldFloat(QDataStream &in, float &value, const LoadContext &context)
{
    if (context.since(fileVersions::kListFloatsAreFloats)) {
        in >> value;
        return;
    }
    double wide = 0.0;
    in >> wide;
    value = static_cast<float>(wide);
}

// Skips the lists of old files. All these files are older than 400002, whose lists are calculated
// again anyway.
bool skipOldLists(QDataStream &in, const LoadContext &context)
{
    const int count = readCount(in, kStampBytes + kCountBytes);
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        TimeStamp stamp;
        in >> stamp;
        const int egos = readCount(in, kCountBytes);
        for (int ego = 0; ego < egos && in.status() == QDataStream::Ok; ++ego) {
            QVector<pre201042NeighborDatum> list;
            readList(in, list, kOldDatumBytes, [&](pre201042NeighborDatum &datum) {
                in >> datum.id;
                readOldFloat(in, datum.weight, context);
                readOldFloat(in, datum.angle, context);
            });
        }
    }
    return in.status() == QDataStream::Ok;
}

} // namespace

QDataStream &operator<<(QDataStream &out, const AdjacencySet *set)
{
    set->SaveToStream(out);
    return out;
}

QDataStream &operator>>(QDataStream &in, AdjacencySet *set)
{
    set->RestoreFromStream(in);
    return in;
}

void AdjacencySet::AppendBlockIds(QVector<int> &ids) const
{
    for (const auto &entry : mWeights)
        for (const egoNeighbors &list : *entry.second)
            ids.append(list.blockId());
}

bool AdjacencySet::SaveToStream(QDataStream &out) const
{
    out << qint32(mId) << qint32(sNextId) << mName << qint32(mDefinition.geoType)
        << qint32(mDefinition.neighborType) << qint32(mDefinition.weightType)
        << qint32(mDefinition.neighborCount) << qint32(mDefinition.ringCount)
        << qint32(mDefinition.queenNeighbor) << mDefinition.range
        << mDefinition.inverseDistanceNumerator << mDefinition.inverseDistancePower
        << qint8(mDefinition.includeEgo) << mInformation;
    out << qint32(mWeights.size());
    for (auto entry = mWeights.rbegin(); entry != mWeights.rend(); ++entry) {
        out << entry->first << qint32(entry->second->size());
        for (const egoNeighbors &list : *entry->second)
            out << qint32(list.blockId());
    }
    out << qint8(mDefinition.isClusterSet);
    return out.status() == QDataStream::Ok;
}

bool AdjacencySet::RestoreFromStream(QDataStream &in)
{
    return Restore(in, loadContext());
}

bool AdjacencySet::Restore(QDataStream &in, const LoadContext &context)
{
    ClearSpatialWeights();
    const bool listsAreBlocks = context.since(fileVersions::kListsAreBlocks);
    if (!readDefinition(in, context)
        || !(listsAreBlocks ? readLists(in) : skipOldLists(in, context)))
        return false;
    mDefinition.isClusterSet = context.since(fileVersions::kHasClusterSets) && readFlag<qint8>(in);
    if (!context.since(fileVersions::kSetHasInformation))
        renumberWeights();
    return in.status() == QDataStream::Ok;
}

bool AdjacencySet::readDefinition(QDataStream &in, const LoadContext &context)
{
    if (context.since(fileVersions::kSetsHaveIds)) {
        mId = readInt(in);
        const int nextId = readInt(in);
        if (in.status() != QDataStream::Ok || nextId < 0 || nextId > kIdCount)
            return false;
        sNextId = nextId;
        in >> mName;
    }
    readOneOf(in, mDefinition.geoType, kGeographyTypes);
    readOneOf(in, mDefinition.neighborType, kMethods);
    readOneOf(in, mDefinition.weightType, kWeightTypes);
    mDefinition.neighborCount = readInt(in);
    mDefinition.ringCount = readInt(in);
    mDefinition.queenNeighbor = readFlag<qint32>(in);
    in >> mDefinition.range;
    mDefinition.inverseDistanceNumerator = 1.0;
    if (context.since(fileVersions::kSetHasNumerator))
        in >> mDefinition.inverseDistanceNumerator;
    in >> mDefinition.inverseDistancePower;
    mDefinition.includeEgo = context.since(fileVersions::kSetHasIncludeEgo)
                                 ? readFlag<qint8>(in)
                                 : context.version == fileVersions::kSetsIncludedEgo;
    if (context.between(fileVersions::kSetHasInformation, fileVersions::kSetHasNumerator))
        readFlag<qint8>(in);
    if (context.since(fileVersions::kSetHasInformation))
        in >> mInformation;
    return in.status() == QDataStream::Ok;
}

bool AdjacencySet::readLists(QDataStream &in)
{
    const int count = readCount(in, kStampBytes + kCountBytes);
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        TimeStamp stamp;
        in >> stamp;
        const int egos = readCount(in, sizeof(qint32));
        auto lists = std::make_shared<NeighborLists>();
        lists->reserve(static_cast<size_t>(egos));
        for (int ego = 0; ego < egos; ++ego)
            lists->emplace_back(readInt(in));
        if (in.status() != QDataStream::Ok || !stamp.isValid()
            || !mWeights.emplace(stamp, lists).second)
            in.setStatus(QDataStream::ReadCorruptData);
    }
    return in.status() == QDataStream::Ok;
}

// In these files 3 is a kind of weight that no longer exists, and 2 is the kind that is now 3.
void AdjacencySet::renumberWeights()
{
    if (mDefinition.weightType == InverseDistanceWeight) {
        mDefinition.weightType = ConstantWeight;
        ClearSpatialWeights();
        warnUser(QStringLiteral("Note: The weight-by-distance option is no longer available for a "
                                "spatial weight set being loaded.\nIt will be changed to use "
                                "constant weights."));
    }
    if (mDefinition.weightType == DistanceRankWeight)
        mDefinition.weightType = InverseDistanceWeight;
}
