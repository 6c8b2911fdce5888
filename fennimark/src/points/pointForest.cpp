// SPDX-License-Identifier: MIT
#include "points/pointForest.h"
#include <cmath>
#include "base/angle.h"

namespace fennimark {
namespace {

constexpr size_t kNewcomers = 64;
constexpr size_t kAbsorbed = 3; // a tree is merged up to this many times the points merged so far
constexpr int kFirstBatch = 12; // hits of a cursor's first batch; each following one is doubled
constexpr int kLargestBatch = 1 << 20;

double magnitude(double x, double y)
{
    return std::max(std::abs(x), std::abs(y));
}

bool isFinite(const QPointF &place)
{
    return std::isfinite(place.x()) && std::isfinite(place.y());
}

} // namespace

struct PointForest::Cursor {
    QPointF place;
    QSet<int> exclude;
    PointHit last; // the hit that was returned last
    bool hasLast;
    QVector<ptTreeQueryResult> batch;
    int next;
    int batchSize;
    quint64 version;
};

PointForest::PointForest() = default;
PointForest::~PointForest() = default;

PointForest::PointForest(const PointForest &other)
    : mTrees(other.mTrees),
      mNewcomers(other.mNewcomers),
      mLive(other.mLive),
      mQueries(other.mQueries)
{
}

PointForest &PointForest::operator=(const PointForest &other)
{
    mTrees = other.mTrees;
    mNewcomers = other.mNewcomers;
    mLive = other.mLive;
    changed();
    return *this;
}

void PointForest::changed()
{
    ++mVersion;
    mQueries = 0;
}

void PointForest::clear()
{
    mTrees.clear();
    mNewcomers.clear();
    mLive = 0;
    changed();
}

bool PointForest::setPoints(std::vector<IdPoint> points, const PointTree::PlacedReport &report)
{
    clear();
    if (points.empty())
        return true;
    auto tree = PointTree::build(points, report);
    if (!tree)
        return false;
    mLive = points.size();
    mTrees.push_back(std::move(tree));
    return true;
}

void PointForest::add(const IdPoint &point)
{
    mNewcomers.push_back(point);
    ++mLive;
    changed();
}

bool PointForest::remove(const IdPoint &point)
{
    if (mNewcomers.size() > kNewcomers)
        arrange();
    const auto same = [&point](const IdPoint &other) {
        return other.x == point.x && other.y == point.y && other.id == point.id;
    };
    const auto newcomer = std::find_if(mNewcomers.begin(), mNewcomers.end(), same);
    bool found = newcomer != mNewcomers.end();
    if (found)
        mNewcomers.erase(newcomer);
    for (size_t i = 0; i < mTrees.size() && !found; ++i) {
        const quint32 slot = mTrees[i]->find(point.x, point.y, point.id);
        found = slot < mTrees[i]->slotCount();
        if (!found)
            continue;
        if (mTrees[i].use_count() > 1)
            mTrees[i] = std::make_shared<PointTree>(*mTrees[i]);
        mTrees[i]->remove(slot);
    }
    if (!found)
        return false;
    --mLive;
    changed();
    return true;
}

// Called before every query; restores the invariants at the head of pointForest.h.
void PointForest::arrange()
{
    ++mQueries;
    for (size_t i = mTrees.size(); i-- > 0;) {
        if (2 * mTrees[i]->liveCount() < mTrees[i]->slotCount())
            rebuild(i);
    }
    if (mNewcomers.size() > kNewcomers)
        absorbNewcomers();
    if (mQueries > mLive / 2 && mTrees.size() + !mNewcomers.empty() > 1)
        rebuild(0);
}

void PointForest::absorbNewcomers()
{
    size_t points = mNewcomers.size();
    size_t first = mTrees.size();
    while (first > 0 && mTrees[first - 1]->liveCount() <= kAbsorbed * points)
        points += mTrees[--first]->liveCount();
    rebuild(first);
}

// Replaces the newcomers and the trees from `firstTree` on by one tree.
void PointForest::rebuild(size_t firstTree)
{
    std::vector<IdPoint> points;
    points.swap(mNewcomers);
    for (size_t i = firstTree; i < mTrees.size(); ++i)
        mTrees[i]->appendLive(points);
    mTrees.resize(firstTree);
    if (!points.empty())
        mTrees.push_back(PointTree::build(points));
}

// Adds the first slot of a tree: slots are numbered through all trees, then the newcomers.
template <class Sink> struct ShiftedSink {
    Sink &sink;
    quint32 base;
    double limit() const { return sink.limit(); }
    void offer(double distance, int id, quint32 slot) { sink.offer(distance, id, base + slot); }
};

template <class Sink> void PointForest::visitNear(const QPointF &place, Sink &sink) const
{
    quint32 base = 0;
    for (const auto &tree : mTrees) {
        ShiftedSink<Sink> shifted{sink, base};
        tree->visitNear(place.x(), place.y(), shifted);
        base += tree->slotCount();
    }
    for (const IdPoint &point : mNewcomers) {
        const double dx = point.x - place.x();
        const double dy = point.y - place.y();
        const double distance = dx * dx + dy * dy;
        if (distance <= sink.limit())
            sink.offer(distance, point.id, base);
        ++base;
    }
}

size_t PointForest::collectNearest(const QPointF &place, int count, const ExcludedIds &excluded,
                                   const PointHit *after)
{
    mHits.clear();
    if (count < 1 || mLive == 0 || !isFinite(place))
        return 0;
    arrange();
    NearestHits sink(mHits, mTies, std::min(static_cast<size_t>(count), mLive),
                     magnitude(place.x(), place.y()), excluded, after);
    visitNear(place, sink);
    return sink.finish([this](const PointHit &hit) {
        const IdPoint point = pointAt(hit.slot);
        return magnitude(point.x, point.y);
    });
}

// Writes the collected hits to `records`.
void PointForest::report(const QPointF &place, QVector<ptTreeQueryResult> &records) const
{
    const auto count = static_cast<int>(mHits.size());
    records.resize(count);
    ptTreeQueryResult *const out = records.data();
    double dx[kAngles] = {};
    double dy[kAngles] = {};
    double angles[kAngles];
    for (int begin = 0; begin < count; begin += kAngles) {
        const int chunk = std::min(count - begin, kAngles);
        for (int i = 0; i < chunk; ++i) {
            const PointHit &hit = mHits[static_cast<size_t>(begin + i)];
            const IdPoint point = pointAt(hit.slot);
            ptTreeQueryResult &record = out[begin + i];
            record.point = QPointF(point.x, point.y);
            record.id = hit.id;
            record.distance = hit.distance;
            dx[i] = point.x - place.x();
            dy[i] = point.y - place.y();
        }
        anglesOf(dy, dx, angles);
        for (int i = 0; i < chunk; ++i)
            out[begin + i].angle = angles[i];
    }
}

bool PointForest::nearest(const QPointF &place, int count, const QSet<int> &exclude,
                          QVector<ptTreeQueryResult> &hits)
{
    const size_t tied = collectNearest(place, count, ExcludedIds(exclude), nullptr);
    const size_t found = mHits.size();
    if (found > static_cast<size_t>(std::max(count, 0))) {
        // All points of the tie get one distance, because callers that count ties compare distances
        // exactly.
        const auto group = mHits.end() - static_cast<std::ptrdiff_t>(tied);
        const double distance = mHits[static_cast<size_t>(count) - 1].distance;
        std::for_each(group, mHits.end(), [distance](PointHit &hit) { hit.distance = distance; });
        std::sort(group, mHits.end());
    }
    report(place, hits);
    return found > 0;
}

void PointForest::within(const QPointF &place, double squaredRange, const QSet<int> &exclude,
                         QVector<ptTreeQueryResult> &hits)
{
    hits.clear();
    if (!isFinite(place))
        return;
    arrange();
    const ExcludedIds excluded(exclude);
    HitsWithin sink(mHits, squaredRange, excluded);
    visitNear(place, sink);
    std::sort(mHits.begin(), mHits.end());
    report(place, hits);
}

void *PointForest::openCursor(const QPointF &place, const QSet<int> &exclude)
{
    if (mClosedCursors.empty())
        mClosedCursors.push_back(std::make_unique<Cursor>());
    mCursors.push_back(std::move(mClosedCursors.back()));
    mClosedCursors.pop_back();
    Cursor &cursor = *mCursors.back();
    cursor.place = place;
    cursor.exclude = exclude;
    cursor.hasLast = false;
    cursor.batch.clear();
    cursor.next = 0;
    cursor.batchSize = kFirstBatch;
    return &cursor;
}

PointForest::Cursor *PointForest::findCursor(void *cursor) const
{
    for (auto it = mCursors.rbegin(); it != mCursors.rend(); ++it) {
        if (it->get() == cursor)
            return it->get();
    }
    return nullptr;
}

// Searches the next batch. A batch contains all ties of its last hit, so the next batch can begin
// after that hit in the order of distance and id.
bool PointForest::fetch(Cursor &cursor)
{
    collectNearest(cursor.place, cursor.batchSize, ExcludedIds(cursor.exclude),
                   cursor.hasLast ? &cursor.last : nullptr);
    report(cursor.place, cursor.batch);
    cursor.next = 0;
    cursor.batchSize = std::min(2 * cursor.batchSize, kLargestBatch);
    cursor.version = mVersion;
    return !cursor.batch.isEmpty();
}

bool PointForest::next(void *handle, ptTreeQueryResult &hit)
{
    Cursor *cursor = findCursor(handle);
    if (!cursor)
        return false;
    if ((cursor->next == cursor->batch.size() || cursor->version != mVersion) && !fetch(*cursor))
        return false;
    hit = cursor->batch.at(cursor->next++);
    cursor->last = {hit.distance, hit.id, 0};
    cursor->hasLast = true;
    return true;
}

void PointForest::closeCursor(void *handle)
{
    for (size_t i = mCursors.size(); i-- > 0;) {
        if (mCursors[i].get() != handle)
            continue;
        mCursors[i]->exclude.clear();
        mClosedCursors.push_back(std::move(mCursors[i]));
        mCursors.erase(mCursors.begin() + static_cast<std::ptrdiff_t>(i));
        return;
    }
}

} // namespace fennimark
