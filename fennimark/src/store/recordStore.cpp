// SPDX-License-Identifier: MIT
#include "store/recordStore.h"
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"

namespace fennimark {
namespace {

constexpr quint64 kAlignment = 64;

constexpr quint64 verticesAt(quint64 partCount)
{
    return (4 * (partCount + 1) + 7) & ~quint64(7);
}

/// Sets `view` to the payload that begins at `bytes`.
void lookAt(const uchar *bytes, GeometryView &view)
{
    const auto *sizes = reinterpret_cast<const quint32 *>(bytes);
    view.partCount = sizes[0];
    view.partSizes = sizes + 1;
    view.vertexCount = 0;
    for (quint32 i = 0; i < view.partCount; ++i)
        view.vertexCount += view.partSizes[i];
    view.vertices = reinterpret_cast<const QPointF *>(bytes + verticesAt(view.partCount));
    const quint32 boxes = runBoxCount(view.vertexCount);
    view.runBoxes =
        boxes > 0 ? reinterpret_cast<const RunBox *>(view.vertices + view.vertexCount) : nullptr;
}

/// A box as its lower and upper corner, so that both axes are tested at the same time.
class Corners {
public:
    explicit Corners(const QPointF &point)
        : Corners(Rect2D{point.x(), point.x(), point.y(), point.y()})
    {
    }
#ifdef __SSE2__
    explicit Corners(const Rect2D &rect)
    {
        const __m128d x = _mm_loadu_pd(&rect.xMin), y = _mm_loadu_pd(&rect.yMin);
        mLow = _mm_unpacklo_pd(x, y);
        mHigh = _mm_unpackhi_pd(x, y);
    }
    bool meet(const Corners &other) const
    {
        return _mm_movemask_pd(
                   _mm_and_pd(_mm_cmple_pd(mLow, other.mHigh), _mm_cmpge_pd(mHigh, other.mLow)))
               == 3;
    }

private:
    __m128d mLow, mHigh;
#else
    explicit Corners(const Rect2D &rect) : mRect(rect)
    {
    }
    bool meet(const Corners &other) const
    {
        return fennimark::meet(mRect, other.mRect);
    }

private:
    Rect2D mRect;
#endif
};

template <class Item> unsigned itemsIn(const Item *items, quint32 count, const Rect2D &window)
{
    const Corners wanted(window);
    unsigned bits = 0;
    for (quint32 i = 0; i < count; ++i)
        bits |= unsigned(Corners(items[i]).meet(wanted)) << i;
    return bits;
}

} // namespace

void StoreContent::expect(std::size_t records, quint64 payloadBytes)
{
    boxes.reserve(records);
    mPayloads.reserve(records);
    space.expect(payloadBytes);
}

bool StoreContent::addPayload(const GeometryView &view)
{
    mRuns.resize(runBoxCount(view.vertexCount));
    if (!mRuns.empty())
        buildRunBoxes(view, kind, mRuns.data());
    if (!space.align(8))
        return false;
    mPayloads.push_back(space.size());
    boxes.push_back(view.bounds);
    const quint32 counts[2] = {view.partCount, view.partSizes[0]};
    const bool counted = view.partCount == 1
                             ? space.append(counts, sizeof counts)
                             : space.append(&view.partCount, 4)
                                   && space.append(view.partSizes, 4 * quint64(view.partCount))
                                   && space.align(8);
    return counted && space.append(view.vertices, sizeof(QPointF) * quint64(view.vertexCount))
           && space.append(mRuns.data(), sizeof(RunBox) * mRuns.size());
}

unsigned boxesIn(const Rect2D *boxes, quint32 count, const Rect2D &window)
{
    return itemsIn(boxes, count, window);
}

unsigned pointsIn(const QPointF *points, quint32 count, const Rect2D &window)
{
    return itemsIn(points, count, window);
}

RecordStore::RecordStore() : mLive(this)
{
}

void RecordStore::clear()
{
    mLive.clear();
    mKind = ObjectKind::Point;
    mTolerance = 0.0;
    mCount = mTimeCount = 0;
    mTimes = nullptr;
    mTimeIndex = mObservations = nullptr;
    mChainOf = nullptr;
    mPoints = nullptr;
    mBoxes = nullptr;
    mPayloads = nullptr;
    mTree = BoxTree();
    mBounds = kNoBox;
    mRemoved = 0;
    mFlags.clear();
    mLaterObservations.clear();
    mLaterChains.clear();
    mSpace = ScratchSpace();
    ++mVersion;
}

/// The offsets of the columns.
struct RecordStore::Layout {
    quint64 times = 0, timeIndex = 0, chainOf = 0, observations = 0, points = 0, boxes = 0,
            payloads = 0, nodes = 0;
};

template <class T> bool RecordStore::appendColumn(const std::vector<T> &values, quint64 &offset)
{
    if (!mSpace.align(kAlignment))
        return false;
    offset = mSpace.size();
    return mSpace.append(values.data(), sizeof(T) * values.size());
}

/// Appends the columns to the payloads and freezes the space.
bool RecordStore::layOut(const StoreContent &content, const std::vector<BoxNode> &nodes, Layout &at)
{
    mPayloadEnd = mSpace.size();
    const quint64 columnsAt = (mPayloadEnd + kAlignment - 1) / kAlignment * kAlignment;
    if (!(appendColumn(content.times, at.times) && appendColumn(content.timeIndex, at.timeIndex)
          && appendColumn(content.chainOf, at.chainOf)
          && appendColumn(content.observations, at.observations)
          && appendColumn(content.points, at.points) && appendColumn(content.boxes, at.boxes)
          && appendColumn(content.payloads(), at.payloads) && appendColumn(nodes, at.nodes)
          && mSpace.align(kAlignment))) // so that the offset of an empty last column is valid
        return false;
    mColumnBytes = mSpace.size() - columnsAt + content.recordCount();
    return mSpace.freeze(columnsAt);
}

bool RecordStore::assign(StoreContent &&content)
{
    clear();
    const std::vector<LeafHull> hulls = leafHulls(content);
    if (content.times.size() <= 1)
        content.timeIndex.clear();
    mSpace = std::move(content.space);
    Layout at;
    if (!layOut(content, BoxTree::build(hulls), at)) {
        clear();
        return false;
    }
    mKind = content.kind;
    mTolerance = content.tolerance;
    mCount = quint32(content.recordCount());
    mTimes = column<timeRange>(at.times);
    mTimeCount = quint32(content.times.size());
    mTimeIndex = content.timeIndex.empty() ? nullptr : column<quint32>(at.timeIndex);
    mChainOf = column<qint32>(at.chainOf);
    mObservations = column<quint32>(at.observations);
    mPoints = mKind == ObjectKind::Point ? column<QPointF>(at.points) : nullptr;
    mBoxes = column<Rect2D>(at.boxes);
    mPayloads = column<quint64>(at.payloads);
    mTree = BoxTree(column<BoxNode>(at.nodes), quint32(hulls.size()));
    for (const LeafHull &hull : hulls)
        widen(mBounds, hull.box);
    mFlags.assign(mCount, typeCode(mKind));
    return true;
}

std::vector<LeafHull> RecordStore::leafHulls(const StoreContent &content) const
{
    const std::size_t count = content.recordCount();
    std::vector<LeafHull> hulls((count + kRecordsPerLeaf - 1) / kRecordsPerLeaf);
    for (std::size_t i = 0; i < count; ++i) {
        LeafHull &hull = hulls[i / kRecordsPerLeaf];
        if (content.kind == ObjectKind::Point) {
            const QPointF &p = content.points[i];
            widen(hull.box, Rect2D{p.x(), p.x(), p.y(), p.y()});
        } else {
            widen(hull.box, content.boxes[i]);
        }
        const timeRange &range = content.times[content.timeIndex[i]];
        hull.start = std::min(hull.start, range.start);
        hull.end = std::max(hull.end, range.end);
    }
    return hulls;
}

int RecordStore::chainId(quint32 record) const
{
    return mLaterChains.isEmpty() ? mChainOf[record] : mLaterChains.value(record, mChainOf[record]);
}

QPair<timeRange, int> RecordStore::observation(quint32 first, quint32 index) const
{
    // The column has one entry for each record; later positions belong to revived chains.
    const quint32 at = first + index;
    const quint32 id = at < mCount ? mObservations[at] : mLaterObservations[at - mCount];
    return {range(id - 1), int(id)};
}

bool RecordStore::view(quint32 record, GeometryView &view, std::vector<quint64> &buffer) const
{
    const quint64 offset = mPayloads[record];
    view.bounds = mBoxes[record];
    view.tolerance = mTolerance;
    if (const uchar *bytes = mSpace.at(offset)) {
        lookAt(bytes, view);
        return true;
    }
    // Payloads are stored one after the other, so this one ends where the next payload or the first
    // column begins.
    const quint64 end = record + 1 < mCount ? mPayloads[record + 1] : mPayloadEnd;
    buffer.resize((end - offset + 7) / 8);
    auto *bytes = reinterpret_cast<uchar *>(buffer.data());
    if (!mSpace.read(offset, bytes, end - offset))
        return false;
    lookAt(bytes, view);
    return true;
}

bool RecordStore::present(quint32 record, std::unique_ptr<FMObject> &object,
                          std::vector<quint64> &buffer) const
{
    if (mKind == ObjectKind::Point) {
        object = std::make_unique<FMPoint>(mPoints[record]);
        return true;
    }
    GeometryView bytes;
    if (!view(record, bytes, buffer))
        return false;
    const quint8 flags = mFlags[record];
    const Simplicity simplicity = flags & kKnownSimple      ? Simplicity::Simple
                                  : flags & kKnownNotSimple ? Simplicity::NotSimple
                                                            : Simplicity::Unknown;
    if (object)
        ObjectAccess::seat(*object, bytes, simplicity);
    else if (mKind == ObjectKind::Line)
        object = ObjectAccess::makeLine(bytes);
    else
        object = ObjectAccess::makePolygon(bytes, simplicity);
    return true;
}

FMObject *RecordStore::liveObject(LiveRecord &record) const
{
    record.isPresent =
        record.isPresent || present(quint32(record.recordId) - 1, record.object, record.bytes);
    return record.isPresent ? record.object.get() : nullptr;
}

void RecordStore::objectDropped(int recordId, const FMObject &object)
{
    const Simplicity known = ObjectAccess::simplicity(object);
    if (known != Simplicity::Unknown)
        mFlags[quint32(recordId) - 1] |=
            known == Simplicity::Simple ? kKnownSimple : kKnownNotSimple;
}

void RecordStore::remove(quint32 record)
{
    mRemoved += lives(record);
    mFlags[record] |= kRemoved;
    mLive.forget(int(record) + 1);
    ++mVersion;
}

quint32 RecordStore::revive(const std::vector<quint32> &records, int chain)
{
    const auto first = quint32(mCount + mLaterObservations.size());
    for (const quint32 record : records) {
        mRemoved -= !lives(record);
        mFlags[record] &= quint8(~kRemoved);
        mLaterObservations.push_back(record + 1);
        mLaterChains.insert(record, chain);
    }
    ++mVersion;
    return first;
}

RectInT RecordStore::hull() const
{
    refresh();
    return mHull;
}

const TimePieces &RecordStore::pieces() const
{
    refresh();
    return mPieces;
}

void RecordStore::refresh() const
{
    if (mRefreshed == mVersion)
        return;
    Rect2D box = kNoBox;
    timeRange span = kNoTime;
    std::vector<bool> used(mTimeCount, false);
    for (quint32 record = 0; record < mCount; ++record) {
        if (lives(record)) {
            widen(box, this->box(record));
            used[mTimeIndex ? mTimeIndex[record] : 0] = true;
        }
    }
    mPieces = TimePieces();
    for (quint32 i = 0; i < mTimeCount; ++i) {
        if (used[i]) {
            widen(span, mTimes[i]);
            mPieces.add(mTimes[i]);
        }
    }
    mPieces.sort();
    mHull = RectInT{box.xMin > box.xMax ? Rect2D{} : box, span};
    mRefreshed = mVersion;
}

} // namespace fennimark
