// SPDX-License-Identifier: MIT
// Calculates all lists of one span of time. For each kind of geography one class finds the
// neighbours of every object: PointLists searches a tree of all points, PolygonLists the
// contiguities of the geometry, and PixelLists the grid. Each passes the weighted list of one
// object after another to `store`, which stores the list as a block and returns false to stop.
//
// PointLists works in two orders. It searches in the order of record ids, which follow a
// space-filling curve, so that successive searches use the same parts of the tree, which are then
// in the processor's cache. It stores in the order of objects, in which a reader's loop later reads
// the blocks. Batches of at most kBatchEgos objects and about kBatchNeighbors neighbours are sorted
// from one order to the other.
#include "datainterface/AdjacencySet.h"
#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <memory>
#include <utility>
#include <vector>
#include "Common/detail/failure.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/MVectorData.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/FM_PointTree.h"
#include "fennimark/Fennims.h"
#include "frame/progressSection.h"
#include "geography/shapeFrame.h"
#include "weights/egoNeighbors.h"
#include "weights/weighting.h"

using namespace datainterface;

namespace {

constexpr char kCalculating[] = "Calculating spatial weights...";
constexpr qint64 kReports = 1000; // about the largest number of progress reports

class Report {
public:
    Report(bool isWanted, qint64 count)
        : mStep(isWanted ? std::max<qint64>(count / kReports, 1) : 0), mCount(count)
    {
    }
    /// Returns false when the user cancelled.
    bool operator()(qint64 done) const
    {
        return mStep == 0 || done % mStep != 0
               || reportProgress(static_cast<int>(done * 100 / mCount), kCalculating);
    }

private:
    const qint64 mStep; ///< objects from one report to the next; 0: no reports
    const qint64 mCount;
};

using Pixel = MRasterDataSource::Pixel;

neighborDatum datumOf(int id, double angle, double distance)
{
    return {id, 0.0F, static_cast<float>(angle), narrowed(distance)};
}

class PointLists {
public:
    PointLists(const AdjacencySet &set, const WeightRule &rule, MVectorData &geography, qint64 t)
        : mSet(set), mRule(rule)
    {
        const HilbertTree &tree = *geography.GetFennims()->mTree;
        for (int record : geography.GetFennims()->GetObservationsAtTime(t)) {
            const HeldObject held(tree, record, false);
            const auto *point = held.as<FMObject>();
            const Rect2D box = point ? point->GetBounds() : Rect2D();
            require(box.xMin == box.xMax && box.yMin == box.yMax, "Invalid point bounds");
            mEgos.push_back(
                {record, geography.GetObjectId(held.chainId()), QPointF(box.xMin, box.yMin)});
        }
        std::sort(mEgos.begin(), mEgos.end(),
                  [](const Ego &a, const Ego &b) { return a.object < b.object; });
        QVector<QPointF> points;
        QVector<int> ids;
        for (const Ego &ego : mEgos) {
            points.append(ego.point);
            ids.append(ego.object);
        }
        mTree.SetPoints(points, ids, nullptr, 0, 100);
    }

    template <class Store> bool build(Store store)
    {
        for (size_t begin = 0; begin < mEgos.size(); begin += kBatchEgos) {
            const size_t end = std::min(begin + kBatchEgos, mEgos.size());
            std::vector<Ego> batch(mEgos.begin() + static_cast<std::ptrdiff_t>(begin),
                                   mEgos.begin() + static_cast<std::ptrdiff_t>(end));
            // Record ids follow a space-filling curve.
            std::sort(batch.begin(), batch.end(),
                      [](const Ego &a, const Ego &b) { return a.record < b.record; });
            for (const Ego &ego : batch) {
                find(ego);
                if (mNeighbors.size() >= kBatchNeighbors && !flush(store))
                    return false;
            }
            if (!flush(store))
                return false;
        }
        return true;
    }

private:
    static constexpr size_t kBatchEgos = 1 << 16;
    static constexpr size_t kBatchNeighbors = 1 << 20;
    struct Ego {
        int record;
        int object;
        QPointF point;
    };
    struct List {
        int object;
        int count;
        size_t first; ///< in mNeighbors
    };

    void find(const Ego &ego)
    {
        mExcluded.clear();
        if (!mSet.IncludeEgo())
            mExcluded.insert(ego.object);
        if (mSet.NeighborType() == NearestNeighbors)
            mTree.GetNearestNeighbors(ego.point, mSet.NeighborCount(), mExcluded, mHits, true);
        else
            mTree.GetRangeNeighbors(ego.point, mSet.Range(), mExcluded, mHits, true);
        const List list{ego.object, mHits.size(), mNeighbors.size()};
        for (const ptTreeQueryResult &hit : std::as_const(mHits))
            mNeighbors.push_back(datumOf(hit.id, hit.angle, hit.distance));
        mRule.apply(mNeighbors.data() + list.first, list.count);
        mLists.push_back(list);
    }

    template <class Store> bool flush(Store &store)
    {
        std::sort(mLists.begin(), mLists.end(),
                  [](const List &a, const List &b) { return a.object < b.object; });
        for (const List &list : mLists)
            if (!store(list.object, mNeighbors.data() + list.first, list.count))
                return false;
        mLists.clear();
        mNeighbors.clear();
        return true;
    }

    const AdjacencySet &mSet;
    const WeightRule &mRule;
    std::vector<Ego> mEgos; ///< in order of objects
    FM_PointTree mTree;
    QSet<int> mExcluded;
    QVector<ptTreeQueryResult> mHits;
    std::vector<List> mLists; ///< of the batch
    std::vector<neighborDatum> mNeighbors;
};

class PolygonLists {
public:
    PolygonLists(const AdjacencySet &set, const WeightRule &rule, MVectorData &geography, qint64 t)
        : mSet(set),
          mRule(rule),
          mFennims(*geography.GetFennims()),
          mTime(t),
          mNeedsBorders(rule.type == BorderLengthWeight || rule.type == BorderShareWeight),
          mRecords(mFennims.GetObservationsAtTime(t))
    {
        const int last =
            mRecords.isEmpty() ? 0 : *std::max_element(mRecords.cbegin(), mRecords.cend());
        mPlaces.resize(static_cast<size_t>(last) + 1);
        const HilbertTree &tree = *mFennims.mTree;
        for (int record : std::as_const(mRecords)) {
            Place &place = mPlaces[static_cast<size_t>(record)];
            place.object = geography.GetObjectId(HeldRecord(tree, record, false).chainId());
            if (mNeedsBorders) // held until the end, so that each geometry is made once
                place.polygon = mHeld.emplace_back(tree, record).as<FMPolygon>();
        }
    }

    template <class Store> bool build(Store store)
    {
        QSet<int> excluded;
        std::vector<neighborDatum> list;
        for (int record : std::as_const(mRecords)) {
            excluded.clear();
            if (!mSet.IncludeEgo())
                excluded.insert(record);
            list.clear();
            for (int neighbor : mFennims.CalculatePolygonAdjacencies(
                     record, mTime, mSet.QueenNeighbor(), mSet.RingCount(), excluded))
                list.push_back(datumOf(placeOf(neighbor).object, 0.0, borderOf(record, neighbor)));
            mRule.apply(list.data(), static_cast<int>(list.size()));
            if (!store(placeOf(record).object, list.data(), static_cast<int>(list.size())))
                return false;
        }
        return true;
    }

private:
    struct Place {
        int object = -1;
        const FMPolygon *polygon = nullptr;
    };

    const Place &placeOf(int record) const { return mPlaces[static_cast<size_t>(record)]; }
    double borderOf(int record, int neighbor) const
    {
        constexpr double kNoBorder = -1.0;
        const FMPolygon *a = placeOf(record).polygon;
        const FMPolygon *b = placeOf(neighbor).polygon;
        return a && b ? a->GetBorderEdges(*b, nullptr) : kNoBorder;
    }

    const AdjacencySet &mSet;
    const WeightRule &mRule;
    Fennims &mFennims;
    const qint64 mTime;
    const bool mNeedsBorders;
    const QVector<int> mRecords;
    std::vector<Place> mPlaces; ///< by record id
    std::deque<HeldObject> mHeld;
};

class PixelLists {
public:
    PixelLists(const AdjacencySet &set, const MRasterDataSource &source)
        : mSource(source),
          mMethod(set.NeighborType()),
          mRange(set.Range()),
          mIncludeEgo(set.IncludeEgo()),
          mNeedsDistances(set.WeightType() == DistanceRankWeight
                          || set.WeightType() == InverseDistanceWeight)
    {
        source.GetRasterDims(mColumns, mRows);
    }

    template <class Store> bool build(const WeightRule &rule, Store store)
    {
        QVector<neighborDatum> list;
        int id = 0;
        for (unsigned int y = 0; y < mRows; ++y) {
            for (unsigned int x = 0; x < mColumns; ++x, ++id) {
                find(centerOf({x, y}), {x, y}, list);
                rule.apply(list.data(), list.size());
                if (!store(id, list.constData(), list.size()))
                    return false;
            }
        }
        return true;
    }

    void find(const QPointF &centre, const Pixel &ego, QVector<neighborDatum> &list)
    {
        findPixels(centre, ego);
        list.resize(mPixels.size());
        mAngles.resize(static_cast<size_t>(mPixels.size()));
        neighborDatum *out = list.data();
        Angle *angle = mAngles.data();
        for (const Pixel &pixel : std::as_const(mPixels)) {
            const QPointF way = centerOf(pixel) - centre;
            const double distance =
                mNeedsDistances ? std::sqrt(way.x() * way.x() + way.y() * way.y()) : 0.0;
            *out++ = datumOf(static_cast<int>(mSource.IndexFromColRow(pixel.first, pixel.second)),
                             (angle++)->of(way), distance);
        }
    }

private:
    /// The direction of the neighbour at one position of the list. It is usually the same as for
    /// the previous cell, so the last angle is kept.
    class Angle {
    public:
        double of(const QPointF &way)
        {
            if (way.x() != mWay.x() || way.y() != mWay.y()) {
                mWay = way;
                mAngle = std::atan2(way.y(), way.x());
            }
            return mAngle;
        }

    private:
        QPointF mWay;
        double mAngle = 0.0;
    };

    QPointF centerOf(const Pixel &pixel) const
    {
        QPointF centre;
        require(mSource.GetPixelCenter(pixel.first, pixel.second, centre), "Invalid pixel id");
        return centre;
    }

    void findPixels(const QPointF &centre, const Pixel &ego)
    {
        switch (mMethod) {
        case RangeNeighbors:
            require(mSource.CircleQuery(centre, mRange, mPixels), "Invalid pixel id");
            if (!mIncludeEgo)
                mPixels.removeOne(ego);
            return;
        case RookNeighbors:
            return findAdjacent(ego, 4);
        case QueenNeighbors:
            return findAdjacent(ego, 8);
        default:
            fail("Invalid weight set type");
        }
    }

    void findAdjacent(const Pixel &ego, int count)
    {
        // West, east, north, south, then the corners. A step beyond the left or upper side wraps to
        // a number that is larger than any column or row.
        constexpr int kAround[8][2] = {{-1, 0},  {1, 0},  {0, -1}, {0, 1},
                                       {-1, -1}, {1, -1}, {-1, 1}, {1, 1}};
        mPixels.resize(0); // keeps the memory
        if (mIncludeEgo)
            mPixels.append(ego);
        for (int i = 0; i < count; ++i) {
            const Pixel pixel(ego.first + static_cast<unsigned int>(kAround[i][0]),
                              ego.second + static_cast<unsigned int>(kAround[i][1]));
            if (pixel.first < mColumns && pixel.second < mRows)
                mPixels.append(pixel);
        }
    }

    const MRasterDataSource &mSource;
    const neighborMethodType mMethod;
    const double mRange;
    const bool mIncludeEgo;
    const bool mNeedsDistances;
    unsigned int mColumns = 0;
    unsigned int mRows = 0;
    QVector<Pixel> mPixels;
    std::vector<Angle> mAngles; ///< by position in the list
};

} // namespace

bool AdjacencySet::PrecalculateSpatialWeights(qint64 t, bool showProgress)
{
    if (HasPrecalculatedSpatialWeights(t))
        return true;
    if (!showProgress || VORN_Progress::UsingProgressBar())
        return PrecalcSpatialWeights(t, showProgress);
    const VORN_Progress progress("Spatial weights", kCalculating, "Cancel");
    return PrecalcSpatialWeights(t, showProgress);
}

bool AdjacencySet::PrecalcSpatialWeights(qint64 t, bool showProgress)
{
    if (IsCustom())
        return HasPrecalculatedSpatialWeights(t);
    require(mGeoData != nullptr, "Geography not defined");
    if (auto *vector = dynamic_cast<MVectorData *>(mGeoData))
        return calculateVector(*vector, t, showProgress);
    auto *raster = dynamic_cast<MRasterData *>(mGeoData);
    require(raster != nullptr, "rd");
    return calculateRaster(*raster, t, showProgress);
}

// Stores all lists of a span, which `build` passes to its argument. After a failure or a cancel the
// lists of the span are removed, so that they are not taken for complete; only a cancelled raster
// keeps its first rows. A data source that was resized to fewer objects than the geometry has does
// not store the lists of the last objects.
template <class Build>
bool AdjacencySet::calculate(const TimeStamp &stamp, bool showProgress, bool keepsCancelled,
                             Build build)
{
    const ListsPointer lists = prepareLists(stamp, true);
    require(lists != nullptr, "Invalid time stamp");
    const Report report(showProgress, static_cast<qint64>(lists->size()));
    qint64 done = 0;
    bool isWhole = false;
    try {
        isWhole = build([&](int object, const neighborDatum *list, int count) {
            if (static_cast<size_t>(object) < lists->size())
                store(*lists, object, list, count);
            return report(done++);
        });
    } catch (...) {
        mWeights.erase(stamp);
        throw;
    }
    if (!isWhole && !keepsCancelled)
        mWeights.erase(stamp);
    return isWhole;
}

bool AdjacencySet::calculateVector(MVectorData &geography, qint64 t, bool showProgress)
{
    Fennims &fennims = *geography.GetFennims();
    timeRange range;
    range.start = std::numeric_limits<double>::infinity();
    range.end = -range.start;
    fennims.GetCommonStaticTimeStamp(t, range);
    const TimeStamp stamp(range);
    require(stamp.isValid(), "Invalid time stamp");

    const WeightRule rule = weightRule();
    const auto calculateBy = [&](auto lists) {
        return calculate(stamp, showProgress, false,
                         [&lists](auto store) { return lists.build(store); });
    };
    if (fennims.GetGeographyType() == Fennims::PointGeography)
        return calculateBy(PointLists(*this, rule, geography, t));
    if (!calculateBy(PolygonLists(*this, rule, geography, t)))
        return false;
    geography.SpatialWeightSetChanged(this);
    return true;
}

bool AdjacencySet::calculateRaster(MRasterData &geography, qint64 t, bool showProgress)
{
    const MRasterDataSource *source = geography.GetRasterDataSource();
    require(source != nullptr, "Empty raster geography");
    // For a time outside its own, a raster has the lists of its own time and no others.
    if (!geography.GetTimeStamp().contains(t)
        && mWeights.find(geography.GetTimeStamp()) != mWeights.end())
        return true;
    const WeightRule rule = weightRule();
    const ProgressSection section(100);
    PixelLists lists(*this, *source);
    const auto eachPixel = [&](auto store) { return lists.build(rule, store); };
    if (!calculate(geography.GetTimeStamp(), showProgress, true, eachPixel))
        return false;
    geography.SpatialWeightSetChanged(this);
    return true;
}

QVector<neighborDatum> AdjacencySet::CalculatePixelNeighbors(const MRasterDataSource *source,
                                                             const QPointF &centre, int x,
                                                             int y) const
{
    QVector<neighborDatum> list;
    PixelLists(*this, *source)
        .find(centre, {static_cast<unsigned int>(x), static_cast<unsigned int>(y)}, list);
    return list;
}
