// SPDX-License-Identifier: MIT
// A raster dataset in a project: the base's form, then
//
//   int32 bit depth, rows, columns; the missing flag
//   frequencies: a byte array of seven maps (8, 16, 32, 64 bits, double, float, half; value and
//   int32 count) int32 realizations, each, the last first: int32 index, int32 grids, each, the last
//   first: the interval (24 bytes) and the header of the grid, which names its block
//
// Cells lie in the block store.
#include "datainterface/MRasterDataset.h"
#include <cmath>
#include <memory>
#include "Common/detail/streams.h"
#include "cells/cellFlag.h"
#include "cells/cellForms.h"
#include "cells/oldTypeCodes.h"
#include "datasets/oldForms.h"
#include "frame/loadContext.h"

using namespace datainterface;

namespace {

constexpr qint64 kMinRealizationBytes = 4 + 4;
constexpr qint64 kMinGridBytes = 24 + 6 * 4;

template <class Map> constexpr qint64 entryBytes()
{
    using Key = typename Map::key_type;
    // Floats are doubles on the wire.
    return (std::is_same_v<Key, OrderedFloat> ? 8 : static_cast<qint64>(sizeof(Key))) + 4;
}

template <class Map> void readTable(QDataStream &in, Map &map)
{
    readMap(in, map, entryBytes<Map>());
}

using OldTables = std::tuple<QMap<quint8, int>, QMap<quint16, int>, QMap<quint32, int>,
                             QMap<quint64, int>, QMap<OrderedDouble, int>>;

/// The first of a list of values in Qt's form; `otherwise` for an empty one.
template <class T> T firstOf(QDataStream &in, T otherwise)
{
    const int count = readCount(in, sizeof(T));
    T first = otherwise;
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        const T value = read<T>(in);
        first = i == 0 ? value : first;
    }
    return first;
}

void readFrequencies(QDataStream &in, RealizationRasterDataFrequencies &frequencies,
                     const LoadContext &context)
{
    frequencies = RealizationRasterDataFrequencies();
    if (!context.since(fileVersions::kFrequenciesAreArray)) {
        readOldFrequencies<OldTables>(in, frequencies.maps, [&in](OldTables &tables) {
            std::apply([&in](auto &...table) { (readTable(in, table), ...); }, tables);
        });
        return;
    }
    QByteArray bytes;
    readBytes(in, bytes);
    BytesReader reader(bytes);
    std::apply([&reader](auto &...map) { (readTable(reader, map), ...); }, frequencies.maps);
    if (in.status() == QDataStream::Ok)
        in.setStatus(reader.status());
}

} // namespace

QDataStream &operator<<(QDataStream &out, const RealizationRasterDataFrequencies &frequencies)
{
    QByteArray bytes;
    BytesWriter writer(&bytes);
    std::apply([&writer](const auto &...map) { (writer << ... << map); }, frequencies.maps);
    return out << bytes;
}

QDataStream &operator>>(QDataStream &in, RealizationRasterDataFrequencies &frequencies)
{
    readFrequencies(in, frequencies, loadContext());
    return in;
}

void MRasterDataset::AppendBlockIds(QVector<int> &ids) const
{
    for (const ObservationMap &grids : mRealizations)
        for (const MRasterObservation *grid : grids)
            ids.append(grid->BlockId());
}

bool MRasterDataset::SaveToStream(QDataStream &out)
{
    if (!MDataset::SaveToStream(out))
        return false;
    out << qint32(mBitDepth) << qint32(mRows) << qint32(mColumns) << mMissingFlag << mFrequencies
        << qint32(mRealizations.size());
    for (auto grids = mRealizations.cend(); grids != mRealizations.cbegin();) {
        --grids;
        out << qint32(grids.key()) << qint32(grids->size());
        for (auto grid = grids->cend(); grid != grids->cbegin();) {
            --grid;
            out << grid.key();
            (*grid)->SaveToStream(out);
        }
    }
    return true;
}

bool MRasterDataset::RestoreFromStream(QDataStream &in)
{
    LoadContext context = loadContext();
    return MRasterDataset::Restore(in, context);
}

bool MRasterDataset::Restore(QDataStream &in, LoadContext &context)
{
    if (!context.since(fileVersions::kGridsAreBlocks) || !MDataset::Restore(in, context))
        return false;
    if (!context.since(fileVersions::kDatasetHasType))
        mDataType = cellTypeOf(read<qint32>(in), context);
    mBitDepth = read<qint32>(in);
    const qint32 rows = read<qint32>(in);
    const qint32 columns = read<qint32>(in);
    if (rows <= 0 || columns <= 0 || rows > std::numeric_limits<int>::max() / columns
        || !isCellForm(mDataType, mBitDepth))
        return false;
    mRows = static_cast<unsigned int>(rows);
    mColumns = static_cast<unsigned int>(columns);
    if (!restoreFlag(in, context))
        return false;
    readFrequencies(in, mFrequencies, context);
    if (!restoreRealizations(in))
        return false;
    restoreStatistics();
    return true;
}

bool MRasterDataset::restoreFlag(QDataStream &in, const LoadContext &context)
{
    if (context.since(fileVersions::kHasMissingFlag)) {
        in >> mMissingFlag;
    } else {
        const double decimal = firstOf(in, -HUGE_VAL);
        const quint64 whole = firstOf(in, ~quint64(0));
        mMissingFlag = mDataType == RasterDecimalType ? MissingFlag(decimal) : MissingFlag(whole);
    }
    mCellFlag = cellFlag(mMissingFlag, mDataType, mBitDepth);
    return in.status() == QDataStream::Ok;
}

bool MRasterDataset::restoreRealizations(QDataStream &in)
{
    const int count = readCount(in, kMinRealizationBytes);
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        const qint32 index = read<qint32>(in);
        const bool isNew =
            index >= 0 && index < mRealizationCount && !mRealizations.contains(index);
        if (!isNew || !restoreObservations(in, mRealizations[index]))
            return false;
    }
    return in.status() == QDataStream::Ok && count == mRealizationCount;
}

// A grid of another form than its dataset's would be read beyond its end.
bool MRasterDataset::restoreObservations(QDataStream &in, ObservationMap &grids)
{
    const int count = readCount(in, kMinGridBytes);
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        TimeStamp stamp;
        in >> stamp;
        auto grid = std::make_unique<MRasterObservation>(in);
        const bool fits = grid->Rows() == static_cast<int>(mRows)
                          && grid->Columns() == static_cast<int>(mColumns)
                          && grid->Type() == mDataType && grid->BitDepth() == mBitDepth
                          && grid->GetByteLength() > 0 && grid->BlockId() >= 0;
        if (in.status() != QDataStream::Ok || !fits || stamp.startTime > stamp.endTime
            || grids.contains(stamp))
            return false;
        grids.insert(stamp, grid.release());
    }
    return in.status() == QDataStream::Ok;
}
