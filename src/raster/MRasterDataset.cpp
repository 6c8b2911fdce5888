// SPDX-License-Identifier: MIT
#include "datainterface/MRasterDataset.h"
#include <QDateTime>
#include <memory>
#include <vector>
#include "Common/detail/failure.h"
#include "cells/cellFlag.h"
#include "datainterface/DatasetProps.h"
#include "datainterface/MRasterDataSource.h"
#include "datasets/intervalCuts.h"

using namespace datainterface;

namespace {

/// The one interval of a static dataset.
const TimeStamp kStaticStamp(0, 0, true, true);

const MRasterDataSource &rasterSource(const MDataSource *source)
{
    const auto *raster = dynamic_cast<const MRasterDataSource *>(source);
    require(raster, "Invalid data source type");
    return *raster;
}

} // namespace

MRasterDataset::MRasterDataset(MDataSource *source, const QString &directory)
    : MDataset(source, directory), mSource(source)
{
    rasterSource(source);
    mDatasetKind = RasterKind;
}

MRasterDataset::MRasterDataset(MDataSource *source, int realizationCount, DataType type,
                               const QString &name, const QString &path, int id, int bitDepth)
    : MDataset(source, id, type, name, path, realizationCount), mBitDepth(bitDepth), mSource(source)
{
    rasterSource(source).GetRasterDims(mColumns, mRows);
    mDatasetKind = RasterKind;
    SetMetaData(QStringLiteral("Creation date"), QDateTime::currentDateTime().toString());
    for (int i = 0; i < realizationCount; ++i)
        mRealizations.insert(i, ObservationMap());
}

MRasterDataset::~MRasterDataset()
{
    for (const ObservationMap &grids : qAsConst(mRealizations))
        qDeleteAll(grids);
}

void MRasterDataset::GetRasterDims(unsigned int &columns, unsigned int &rows) const
{
    columns = mColumns;
    rows = mRows;
}

void MRasterDataset::SetMissingFlag(const MissingFlag &flag)
{
    mMissingFlag = flag;
    mCellFlag = cellFlag(flag, mDataType, mBitDepth);
    for (int realization = 0; realization < mRealizationCount; ++realization)
        dropStatistics(realization);
}

TimeStamp MRasterDataset::stampOf(const TimeStamp &stamp) const
{
    if (mIsStatic)
        return kStaticStamp;
    return TimeStamp(stamp.startTime, stamp.endTime, stamp.inclusiveStart, stamp.inclusiveEnd);
}

void MRasterDataset::DropValues()
{
    for (ObservationMap &grids : mRealizations) {
        qDeleteAll(grids);
        grids.clear();
    }
    mFrequencies = RealizationRasterDataFrequencies();
    mStatistics.fill(StatsRealization());
    mTimeBounds = TimeStamp();
    RemoveAllVariogramModels();
}

void MRasterDataset::dropStatistics(int realization)
{
    if (hasStatistics(realization))
        mStatistics[realization] = StatsRealization();
}

void MRasterDataset::dataChanged(int realization)
{
    dropStatistics(realization);
    RemoveAllVariogramModels();
}

DatasetProps MRasterDataset::GetProperties(const MGeoData *geography)
{
    DatasetProps props = MDataset::GetProperties(geography);
    props.bitDepth = mBitDepth;
    return props;
}

bool MRasterDataset::CheckOutRealization(int realization, int) const
{
    const ObservationMap grids = mRealizations.value(realization);
    for (auto grid = grids.cbegin(); grid != grids.cend(); ++grid) {
        try {
            (*grid)->CheckOutObservation();
        } catch (...) { // all or none: after a failure no check-in is due
            (*grid)->CheckInObservation();
            while (grid != grids.cbegin())
                (*--grid)->CheckInObservation();
            throw;
        }
    }
    return true;
}

bool MRasterDataset::CheckInRealization(int realization, int) const
{
    const auto found = mRealizations.constFind(realization);
    require(found != mRealizations.constEnd(), "Invalid realization index");
    for (const MRasterObservation *grid : *found)
        grid->CheckInObservation();
    return true;
}

bool MRasterDataset::ObjectValueChanged(int realization, int, qint64 first, qint64)
{
    if (!GetConstRasterInfo(realization, first))
        return false;
    mSource->AnnounceChangedDataset(mId);
    return true;
}

bool MRasterDataset::AddRasterValues(int realization, const TimeStamp &requested,
                                     const MRasterBand &band, bool overwrite, bool recalculate)
{
    const auto found = mRealizations.find(realization);
    const TimeStamp stamp = stampOf(requested);
    const bool fits = band.Columns() == static_cast<int>(mColumns)
                      && band.Rows() == static_cast<int>(mRows) && band.Type() == mDataType
                      && band.BitDepth() == mBitDepth;
    if (!fits || found == mRealizations.end() || stamp.startTime > stamp.endTime
        || !holdsTick(stamp))
        return false;
    if (overwrite)
        overwriteGrids(*found, stamp, band);
    else if (!fillFreeTime(*found, stamp, band))
        return false;
    if (recalculate)
        RecalculateFrequencies();
    dataChanged(realization);
    mTimeBounds += stamp;
    return true;
}

// Parts of present grids outside the new interval are kept under shorter stamps; a grid with parts
// on both sides is copied. All steps that store blocks, and so can fail, come before the map is
// changed.
void MRasterDataset::overwriteGrids(ObservationMap &grids, const TimeStamp &stamp,
                                    const MRasterBand &band)
{
    struct Present {
        TimeStamp key;
        MRasterObservation *grid;
        Cut cut;
        std::unique_ptr<MRasterObservation> tail; ///< the copy of a grid with parts on both sides
    };
    std::vector<Present> overlapped;
    for (auto it = qAsConst(grids).lowerBound(stamp); it != grids.constEnd() && !(stamp < it.key());
         ++it) {
        const Cut cut = cutBy(stamp, it.key());
        overlapped.push_back(
            {it.key(), *it, cut, cut == Cut::HeadAndTail ? (*it)->clone() : nullptr});
    }
    auto added = std::make_unique<MRasterObservation>(band);
    for (const Present &present : overlapped)
        grids.remove(present.key);
    for (Present &present : overlapped) {
        if (present.cut == Cut::Nothing)
            delete present.grid;
        else
            grids.insert(present.cut == Cut::Tail ? tailOf(present.key, stamp)
                                                  : headOf(present.key, stamp),
                         present.grid);
        if (present.tail)
            grids.insert(tailOf(present.key, stamp), present.tail.release());
    }
    grids.insert(stamp, added.release());
}

bool MRasterDataset::fillFreeTime(ObservationMap &grids, const TimeStamp &stamp,
                                  const MRasterBand &band)
{
    std::vector<std::pair<TimeStamp, std::unique_ptr<MRasterObservation>>> pieces;
    const auto addPiece = [&](const TimeStamp &piece) {
        if (piece.isValid())
            pieces.emplace_back(piece, std::make_unique<MRasterObservation>(band));
    };
    PieceCursor cursor(stamp);
    for (auto it = qAsConst(grids).lowerBound(stamp); it != grids.constEnd() && !(stamp < it.key());
         ++it) {
        addPiece(cursor.upTo(it.key()));
        cursor.through(it.key());
    }
    addPiece(cursor.rest());
    for (auto &piece : pieces)
        grids.insert(piece.first, piece.second.release());
    return !pieces.empty();
}

void MRasterDataset::SetStatic(bool isStatic)
{
    const bool wasStatic = mIsStatic;
    MDataset::SetStatic(isStatic);
    if (!isStatic || wasStatic)
        return;
    mFrequencies = RealizationRasterDataFrequencies();
    for (auto grids = mRealizations.begin(); grids != mRealizations.end(); ++grids) {
        dropStatistics(grids.key());
        if (grids->isEmpty())
            continue;
        MRasterObservation *first = grids->take(grids->firstKey());
        qDeleteAll(*grids);
        grids->clear();
        grids->insert(kStaticStamp, first);
        mTimeBounds = kStaticStamp;
    }
    RecalculateFrequencies();
}

MRasterObservation *MRasterDataset::GetRasterInfo(int realization, const TimeStamp &requested)
{
    const TimeStamp stamp = stampOf(requested);
    const auto grids = mRealizations.constFind(realization);
    if (grids == mRealizations.constEnd())
        return nullptr;
    const auto found = grids->constFind(stamp);
    if (found == grids->constEnd())
        return nullptr;
    require(found.key() == stamp, "Time stamp mismatch");
    return *found;
}

const MRasterObservation *MRasterDataset::GetConstRasterInfo(int realization, qint64 time) const
{
    const auto grids = mRealizations.constFind(realization);
    if (grids == mRealizations.constEnd())
        return nullptr;
    const auto found = grids->constFind(TimeStamp(timeOf(time)));
    return found != grids->constEnd() && found.key().contains(timeOf(time)) ? *found : nullptr;
}

QList<TimeStamp> MRasterDataset::GetRasterIntervals(int realization) const
{
    return mRealizations.value(realization).keys();
}

QList<TimeStamp> MRasterDataset::GetCommonTimeStamps(int realization)
{
    return GetRasterIntervals(realization);
}

QList<TimeStamp> MRasterDataset::GetDataIntervals(int realization, int)
{
    return GetRasterIntervals(realization);
}

bool MRasterDataset::GetContainingTimeStamp(int realization, qint64 time, TimeStamp &stamp) const
{
    const auto grids = mRealizations.constFind(realization);
    if (!GetConstRasterInfo(realization, time))
        return false;
    stamp = grids->constFind(TimeStamp(timeOf(time))).key();
    return true;
}
