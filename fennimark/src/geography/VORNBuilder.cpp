// SPDX-License-Identifier: MIT
// The vertices of lines and polygons are written to a scratch file at once:
//
//     | u32 part count | u32 size of each part | zeros to a multiple of 8 | f64 x, f64 y, ... |
//
// Kept in memory is what determines the order of the records and the sections of the file before
// the vertices: 12 bytes for each record, 32 for each chain, 24 for each distinct time range, and
// 16 for a point or the 8 of a position in the scratch file for a line or polygon.
//
// A chain needs no list while its records are contiguous and in order of time. When a record is
// added that does not continue it, because it is earlier or records of other chains were added in
// between, the chain gets a TimeOrderedRecords. The keys on both Hilbert curves are computed when a
// record is added; Finish uses those with time when there is more than one time range.
#include "fennimark/VORNBuilder.h"
#include <QFile>
#include <algorithm>
#include <deque>
#include <limits>
#include <map>
#include "base/hilbertOrder.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "file/geometryFile.h"
#include "geography/builtRecords.h"

using namespace fennimark;

namespace {

struct BuiltRecord {
    quint32 planeKey, spaceKey; // on the plane curve, and on the curve through space and time
    quint32 range;              // the number of its range in the RangeTable
};

/// A chain without a list has contiguous records in order of time, from `firstRecord` on.
struct BuiltChain {
    FMObjectChain handle; // its mFirst is the number of the chain
    quint32 firstRecord = 0;
    quint32 list = 0; // 1 + the number of its list; 0: none
};

/// Deletes added objects at the end of its scope; an object that was passed twice is deleted once.
class AddedObjects {
public:
    AddedObjects(const QVector<TreeObject *> &objects, bool own)
        : mObjects(own ? objects : QVector<TreeObject *>())
    {
    }
    ~AddedObjects()
    {
        std::sort(mObjects.begin(), mObjects.end());
        mObjects.erase(std::unique(mObjects.begin(), mObjects.end()), mObjects.end());
        qDeleteAll(mObjects);
    }
    Q_DISABLE_COPY(AddedObjects)

private:
    QVector<TreeObject *> mObjects;
};

/// Separates two ranges that are in order: when they share one inclusive end, one of them becomes
/// exclusive there. False when they overlap otherwise.
bool separate(timeRange &earlier, timeRange &later)
{
    if (!overlaps(earlier, later))
        return true;
    if (earlier.end != later.start)
        return false;
    if (earlier.start < earlier.end)
        earlier.flags &= kStartInclusive;
    else if (later.start < later.end)
        later.flags &= kEndInclusive;
    else
        return false;
    return true;
}

} // namespace

class VORNBuilder::Private final : public ObservationSource {
public:
    explicit Private(const RectInT &bounds) : planeScale(bounds, false), spaceScale(bounds, true) {}

    QString name;
    FMProjectionInfo projection;
    double tolerance = 0.0;
    bool finished = false;

    QPair<timeRange, int> observation(quint32 first, quint32 index) const override
    {
        const quint32 record = recordAt(chains[first], index);
        return {ranges[records[record].range], int(record) + 1};
    }

    FMObjectChain *create(const QVector<TreeObject *> &objects, const QVector<timeRange> &times,
                          int id);
    BuiltChain *chainById(int id);
    bool append(BuiltChain &chain, const QVector<TreeObject *> &objects,
                const QVector<timeRange> &times);
    bool hasRecords() const { return !records.empty(); }
    bool write(const QString &path, ProgressCallback progress);

private:
    struct Timed {
        timeRange range;
        quint32 record;
    };

    int largestId() const;
    quint32 recordAt(const BuiltChain &chain, quint32 index) const
    {
        return chain.list > 0 ? lists[chain.list - 1].at(index) : chain.firstRecord + index;
    }
    const timeRange &rangeOf(quint32 record) const { return ranges[records[record].range]; }
    bool follow(const BuiltChain &chain, const std::vector<Timed> &added) const;
    std::vector<Timed> among(const BuiltChain &chain, const std::vector<Timed> &added) const;
    void insert(BuiltChain &chain, const std::vector<Timed> &added);
    bool keep(const TreeObject *object, const timeRange &range, BuiltRecord &record, QPointF &point,
              quint64 &position, ContentTotals &sums);
    bool geometry(quint32 record, GeometryView &view, std::vector<quint64> &buffer) const;
    void order(FileContent &content) const;

    const HilbertScale planeScale, spaceScale;
    bool hasKind = false;
    ObjectKind kind = ObjectKind::Point;
    std::deque<BuiltChain> chains;     // in the order of their creation
    std::map<int, quint32> numberById; // empty while ids ascend: then `chains` is searched
    std::vector<TimeOrderedRecords> lists;
    std::deque<BuiltRecord> records;
    std::deque<QPointF> points;    // for a point geography
    std::deque<quint64> positions; // of lines and polygons in the scratch space
    RangeTable ranges;
    ContentTotals totals;
    ScratchSpace space;
};

int VORNBuilder::Private::largestId() const
{
    if (chains.empty())
        return -1;
    return numberById.empty() ? chains.back().handle.id : numberById.rbegin()->first;
}

BuiltChain *VORNBuilder::Private::chainById(int id)
{
    if (!numberById.empty()) {
        const auto found = numberById.find(id);
        return found == numberById.end() ? nullptr : &chains[found->second];
    }
    if (!chains.empty() && chains.back().handle.id == id) // the chain that is being filled
        return &chains.back();
    const auto found =
        std::lower_bound(chains.begin(), chains.end(), id, [](const BuiltChain &chain, int wanted) {
            return chain.handle.id < wanted;
        });
    return found == chains.end() || found->handle.id != id ? nullptr : &*found;
}

FMObjectChain *VORNBuilder::Private::create(const QVector<TreeObject *> &objects,
                                            const QVector<timeRange> &times, int id)
{
    const int last = largestId();
    if (id == -1)
        id = last < std::numeric_limits<int>::max() ? last + 1 : -1;
    if (id < 0 || chainById(id))
        return nullptr;
    const auto number = quint32(chains.size());
    BuiltChain &chain = chains.emplace_back();
    chain.handle.id = id;
    place(chain.handle, this, number, 0);
    if (!append(chain, objects, times)) {
        chains.pop_back();
        return nullptr;
    }
    if (id < last && numberById.empty()) {
        for (quint32 i = 0; i < number; ++i)
            numberById.emplace_hint(numberById.end(), chains[i].handle.id, i);
    }
    if (id < last || !numberById.empty())
        numberById.emplace(id, number);
    return &chain.handle;
}

/// Whether the chain stays without a list: the new records, which ascend in time, are after those
/// of the chain in time and have the next numbers.
bool VORNBuilder::Private::follow(const BuiltChain &chain, const std::vector<Timed> &added) const
{
    const quint32 count = countOf(chain.handle);
    if (chain.list > 0 || (count > 0 && chain.firstRecord + count != records.size())
        || (count > 0 && startsBefore(added.front().range, rangeOf(recordAt(chain, count - 1)))))
        return false;
    for (std::size_t i = 0; i < added.size(); ++i) {
        if (added[i].record != records.size() + i)
            return false;
    }
    return true;
}

/// The new records and their neighbours in the chain, ascending in time.
std::vector<VORNBuilder::Private::Timed>
VORNBuilder::Private::among(const BuiltChain &chain, const std::vector<Timed> &added) const
{
    std::vector<Timed> all = added;
    const auto take = [&](quint32 record) { all.push_back({rangeOf(record), record}); };
    const quint32 count = countOf(chain.handle);
    for (const Timed &one : added) {
        const auto isAfter = [&](quint32 record) {
            return startsBefore(one.range, rangeOf(record));
        };
        if (chain.list > 0) {
            lists[chain.list - 1].visitNeighbors(isAfter, take);
            continue;
        }
        quint32 low = 0;
        for (quint32 high = count; low < high;) {
            const quint32 middle = low + (high - low) / 2;
            if (isAfter(chain.firstRecord + middle))
                high = middle;
            else
                low = middle + 1;
        }
        if (low > 0)
            take(chain.firstRecord + low - 1);
        if (low < count)
            take(chain.firstRecord + low);
    }
    std::sort(all.begin(), all.end(), [](const Timed &a, const Timed &b) {
        if (startsBefore(a.range, b.range) || startsBefore(b.range, a.range))
            return startsBefore(a.range, b.range);
        return a.record < b.record;
    });
    all.erase(std::unique(all.begin(), all.end(),
                          [](const Timed &a, const Timed &b) { return a.record == b.record; }),
              all.end());
    return all;
}

/// Inserts records into the chain's list, which is created when there is none.
void VORNBuilder::Private::insert(BuiltChain &chain, const std::vector<Timed> &added)
{
    const auto enter = [&](quint32 record) {
        lists[chain.list - 1].insert(
            record, [&](quint32 other) { return startsBefore(rangeOf(record), rangeOf(other)); });
    };
    if (chain.list == 0) {
        lists.emplace_back();
        chain.list = quint32(lists.size());
        for (quint32 i = 0; i < countOf(chain.handle); ++i)
            enter(chain.firstRecord + i);
    }
    for (const Timed &one : added)
        enter(one.record);
}

bool VORNBuilder::Private::append(BuiltChain &chain, const QVector<TreeObject *> &objects,
                                  const QVector<timeRange> &times)
{
    if (finished || objects.size() != times.size()
        || !std::all_of(times.begin(), times.end(), isUsable)
        || records.size() + std::size_t(objects.size()) > kMaxRecords)
        return false;
    if (objects.isEmpty())
        return true;
    std::vector<Timed> added;
    for (const timeRange &range : times)
        added.push_back({normalized(range), quint32(records.size() + added.size())});
    std::stable_sort(added.begin(), added.end(),
                     [](const Timed &a, const Timed &b) { return startsBefore(a.range, b.range); });
    std::vector<Timed> all = among(chain, added);
    for (std::size_t i = 1; i < all.size(); ++i) {
        if (!separate(all[i - 1].range, all[i].range))
            return false;
    }

    const auto count = std::size_t(objects.size());
    std::vector<BuiltRecord> made(count);
    std::vector<QPointF> places(count);
    std::vector<quint64> starts(count);
    ContentTotals sums = totals;
    const bool hadKind = hasKind;
    for (std::size_t i = 0; i < count; ++i) {
        if (!keep(objects[int(i)], times[int(i)], made[i], places[i], starts[i], sums)) {
            hasKind = hadKind;
            return false;
        }
    }
    totals = sums;
    const bool follows = follow(chain, added);
    if (countOf(chain.handle) == 0)
        chain.firstRecord = quint32(records.size());
    records.insert(records.end(), made.begin(), made.end());
    if (kind == ObjectKind::Point)
        points.insert(points.end(), places.begin(), places.end());
    else
        positions.insert(positions.end(), starts.begin(), starts.end());
    for (const Timed &one : all)
        records[one.record].range = ranges.numberOf(one.range);
    if (!follows)
        insert(chain, added);
    place(chain.handle, this, firstOf(chain.handle), countOf(chain.handle) + quint32(count));
    return true;
}

/// Stores one geometry; false when it is not one that can be stored.
bool VORNBuilder::Private::keep(const TreeObject *object, const timeRange &range,
                                BuiltRecord &record, QPointF &point, quint64 &position,
                                ContentTotals &sums)
{
    const auto *shape = dynamic_cast<const FMObject *>(object);
    if (!shape || (hasKind && ObjectAccess::kind(*shape) != kind))
        return false;
    const ObjectKind its = ObjectAccess::kind(*shape);
    GeometryView view;
    bool finite = true;
    if (const auto *given = dynamic_cast<const FMPoint *>(shape)) {
        point = QPointF(given->x, given->y);
        view.bounds = {given->x, given->x, given->y, given->y};
        finite = std::isfinite(given->x) && std::isfinite(given->y);
    } else {
        view = ObjectAccess::view(*shape);
        if (!hasUsableParts(view, its))
            return false;
        view.bounds = vertexBounds(view.vertices, view.vertexCount, &finite);
    }
    if (!finite)
        return false;
    const Rect2D &box = view.bounds;
    const RecordCenter center{box.xMin / 2 + box.xMax / 2, box.yMin / 2 + box.yMax / 2,
                              range.start / 2 + range.end / 2};
    record = {planeScale.key(center), spaceScale.key(center), 0};
    sums.add(view, its);
    kind = its;
    hasKind = true;
    if (its == ObjectKind::Point)
        return true;
    position = space.size();
    return space.append(&view.partCount, 4)
           && space.append(view.partSizes, 4 * quint64(view.partCount)) && space.align(8)
           && space.append(view.vertices, sizeof(QPointF) * quint64(view.vertexCount));
}

bool VORNBuilder::Private::geometry(quint32 record, GeometryView &view,
                                    std::vector<quint64> &buffer) const
{
    if (kind == ObjectKind::Point) {
        const QPointF &point = points[record];
        view.bounds = {point.x(), point.x(), point.y(), point.y()};
        return true;
    }
    const quint64 at = positions[record];
    const uchar *bytes = space.at(at);
    if (!bytes) {
        const quint64 end = record + 1 < positions.size() ? positions[record + 1] : space.size();
        buffer.resize((end - at) / 8);
        if (!space.read(at, buffer.data(), end - at))
            return false;
        bytes = reinterpret_cast<const uchar *>(buffer.data());
    }
    const auto *counts = reinterpret_cast<const quint32 *>(bytes);
    view.partCount = counts[0];
    view.partSizes = counts + 1;
    view.vertexCount = 0;
    for (quint32 i = 0; i < view.partCount; ++i)
        view.vertexCount += view.partSizes[i];
    view.vertices =
        reinterpret_cast<const QPointF *>(bytes + (4 * (quint64(view.partCount) + 1) + 7) / 8 * 8);
    return true;
}

void VORNBuilder::Private::order(FileContent &content) const
{
    const bool oneRange =
        std::all_of(records.begin(), records.end(), [this](const BuiltRecord &record) {
            return record.range == records.front().range;
        });
    std::vector<quint32> keys;
    keys.reserve(records.size());
    for (const BuiltRecord &record : records)
        keys.push_back(oneRange ? record.planeKey : record.spaceKey);
    content.order = orderOfKeys(keys);

    content.chains.reserve(chains.size());
    content.recordsByChain.reserve(records.size());
    const auto describe = [&](const BuiltChain &chain) {
        content.chains.push_back({chain.handle.id, countOf(chain.handle)});
        const auto append = [&](quint32 record) { content.recordsByChain.push_back(record); };
        if (chain.list > 0)
            lists[chain.list - 1].visit(append);
        for (quint32 i = 0; chain.list == 0 && i < countOf(chain.handle); ++i)
            append(chain.firstRecord + i);
    };
    for (const auto &[id, number] : numberById)
        describe(chains[number]);
    if (numberById.empty())
        std::for_each(chains.begin(), chains.end(), describe);
}

bool VORNBuilder::Private::write(const QString &path, ProgressCallback progress)
{
    // Records are read once, in the order of the curve. With positioned reads the vertices do not
    // count as memory of this process.
    if (!finished && !space.freeze(space.size(), ScratchSpace::Reads::Positioned))
        return false;
    finished = true;
    FileContent content;
    content.name = name.toUtf8();
    content.projection = projection.ToUtf8();
    content.kind = kind;
    content.tolerance = tolerance;
    content.totals = totals;
    order(content);
    content.rangeOf = [this](quint32 record) { return rangeOf(record); };
    std::vector<quint64> buffer;
    content.geometryOf = [this, &buffer](quint32 record, GeometryView &view) {
        return geometry(record, view, buffer);
    };
    return replaceFile(path, [&](QDataStream &out) { return content.write(out, progress); });
}

VORNBuilder::VORNBuilder(const RectInT &bounds, const Fennims *like,
                         const FMProjectionInfo *projection)
    : d(std::make_unique<Private>(bounds))
{
    if (like) {
        d->name = like->GetName();
        d->projection = like->GetProjectionSettings();
        d->tolerance = like->GetAdjacencyTolerance();
    }
    if (projection)
        d->projection = *projection;
}

VORNBuilder::~VORNBuilder() = default;

FMObjectChain *VORNBuilder::CreateChain(const QVector<TreeObject *> &objects,
                                        const QVector<timeRange> &ranges, int id)
{
    const AddedObjects owned(objects, true);
    return d->create(objects, ranges, id);
}

FMObjectChain *VORNBuilder::AddObjectsToChain(int chainId, const QVector<TreeObject *> &objects,
                                              const QVector<timeRange> &ranges, bool takeOver)
{
    const AddedObjects owned(objects, takeOver);
    BuiltChain *chain = d->chainById(chainId);
    return chain && d->append(*chain, objects, ranges) ? &chain->handle : nullptr;
}

void VORNBuilder::SetAdjacencyTolerance(double tolerance)
{
    d->tolerance = std::isfinite(tolerance) && tolerance > 0 ? tolerance : 0.0;
}

bool VORNBuilder::IsValid() const
{
    return d->hasRecords();
}

bool VORNBuilder::Finish(const char *path, bool (*progress)(int percent, const char *text))
{
    return IsValid() && path && d->write(QFile::decodeName(path), progress);
}
