// SPDX-License-Identifier: MIT
// A geometry goes to a scratch file as soon as it comes: its bounds, u32 part count, u32 part
// sizes, padding to 8, its vertices (of a point, the bounds alone). What stays in memory is what
// the order of the records needs.
#include "fennimark/VORNBuilder.h"
#include <QFile>
#include <QMap>
#include <algorithm>
#include <deque>
#include <limits>
#include "fennimark/FMPoint.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "file/geometryFile.h"
#include "base/hilbertOrder.h"

using namespace fennimark;

namespace {

struct BuiltRecord {
    double x, y; // middle of the box
    timeRange range;
    quint64 bytesAt;
};

struct BuiltChain {
    FMObjectChain handle;
    std::vector<quint32> records; // by time
};

/// Deletes added objects on every way out; one that was passed twice is one.
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

/// Tells two ranges apart that stand in order; false when they have more in common than one
/// inclusive end.
bool tellApart(timeRange &earlier, timeRange &later)
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
    RectInT bounds;
    QString name;
    FMProjectionInfo projection;
    double tolerance = 0.0;
    bool hasKind = false;
    bool finished = false;
    ObjectKind kind = ObjectKind::Point;
    std::deque<BuiltChain> chains;
    QMap<int, quint32> chainNumbers; // by chain id
    std::vector<BuiltRecord> records;
    ScratchSpace space;

    QPair<timeRange, int> observation(quint32 first, quint32 index) const override
    {
        const quint32 record = chains[first].records[index];
        return {records[record].range, int(record) + 1};
    }

    bool store(const TreeObject *object, const timeRange &range, BuiltRecord &record);
    bool append(BuiltChain &chain, const QVector<TreeObject *> &objects,
                const QVector<timeRange> &ranges);
    bool geometry(quint32 record, GeometryView &view, std::vector<quint64> &buffer) const;
    void order(FileContent &content) const;

private:
    struct Timed {
        timeRange range;
        quint32 record;
    };
    std::vector<Timed> merged(const BuiltChain &chain, const QVector<timeRange> &ranges,
                              std::size_t &untouched) const;
};

/// Writes one geometry to the scratch file; false when it is none that can be kept.
bool VORNBuilder::Private::store(const TreeObject *object, const timeRange &range,
                                 BuiltRecord &record)
{
    const auto *shape = dynamic_cast<const FMObject *>(object);
    if (!shape || (hasKind && ObjectAccess::kind(*shape) != kind))
        return false;
    const ObjectKind its = ObjectAccess::kind(*shape);
    const GeometryView &view = ObjectAccess::view(*shape);
    Rect2D box;
    bool finite = true;
    if (const auto *point = dynamic_cast<const FMPoint *>(shape)) {
        box = {point->x, point->x, point->y, point->y};
        finite = std::isfinite(point->x) && std::isfinite(point->y);
    } else {
        if (!hasUsableParts(view, its))
            return false;
        box = vertexBounds(view.vertices, view.vertexCount, &finite);
    }
    if (!finite || !space.align(8))
        return false;
    record = {box.xMin / 2 + box.xMax / 2, box.yMin / 2 + box.yMax / 2, range, space.size()};
    if (!space.append(&box, sizeof box))
        return false;
    kind = its;
    hasKind = true;
    return its == ObjectKind::Point
           || (space.append(&view.partCount, 4)
               && space.append(view.partSizes, 4 * quint64(view.partCount)) && space.align(8)
               && space.append(view.vertices, sizeof(QPointF) * quint64(view.vertexCount)));
}

/// The chain's observations from number `untouched` on and the new ones, numbered behind all
/// records, in order of time.
std::vector<VORNBuilder::Private::Timed>
VORNBuilder::Private::merged(const BuiltChain &chain, const QVector<timeRange> &ranges,
                             std::size_t &untouched) const
{
    const auto byStart = [](const Timed &a, const Timed &b) {
        return startsBefore(a.range, b.range);
    };
    std::vector<Timed> added;
    for (const timeRange &range : ranges)
        added.push_back({normalized(range), quint32(records.size() + added.size())});
    std::stable_sort(added.begin(), added.end(), byStart);
    // Mostly they follow what is there, and then only the last one can be touched.
    const auto first = std::upper_bound(chain.records.begin(), chain.records.end(), added.front(),
                                        [this](const Timed &one, quint32 record) {
                                            return startsBefore(one.range, records[record].range);
                                        });
    untouched = std::size_t(std::max<std::ptrdiff_t>(0, first - chain.records.begin() - 1));
    std::vector<Timed> all;
    for (std::size_t i = untouched; i < chain.records.size(); ++i)
        all.push_back({records[chain.records[i]].range, chain.records[i]});
    const auto middle = std::ptrdiff_t(all.size());
    all.insert(all.end(), added.begin(), added.end());
    std::inplace_merge(all.begin(), all.begin() + middle, all.end(), byStart);
    return all;
}

bool VORNBuilder::Private::append(BuiltChain &chain, const QVector<TreeObject *> &objects,
                                  const QVector<timeRange> &ranges)
{
    if (finished || objects.size() != ranges.size()
        || !std::all_of(ranges.begin(), ranges.end(), isUsable)
        || records.size() + std::size_t(objects.size()) > kMaxRecords)
        return false;
    if (objects.isEmpty())
        return true;
    std::size_t untouched = 0;
    std::vector<Timed> all = merged(chain, ranges, untouched);
    for (std::size_t i = 1; i < all.size(); ++i) {
        if (!tellApart(all[i - 1].range, all[i].range))
            return false;
    }
    const bool hadKind = hasKind;
    std::vector<BuiltRecord> added(std::size_t(objects.size()));
    for (int i = 0; i < objects.size(); ++i) {
        if (!store(objects[i], ranges[i], added[std::size_t(i)])) {
            hasKind = hadKind;
            return false;
        }
    }
    records.insert(records.end(), added.begin(), added.end());
    chain.records.resize(untouched);
    for (const Timed &one : all) {
        records[one.record].range = one.range;
        chain.records.push_back(one.record);
    }
    place(chain.handle, this, firstOf(chain.handle), quint32(chain.records.size()));
    return true;
}

bool VORNBuilder::Private::geometry(quint32 record, GeometryView &view,
                                    std::vector<quint64> &buffer) const
{
    const quint64 at = records[record].bytesAt;
    const quint64 countAt = at + sizeof(Rect2D);
    if (!space.read(at, &view.bounds, sizeof view.bounds))
        return false;
    if (kind == ObjectKind::Point)
        return true;
    if (!space.read(countAt, &view.partCount, 4))
        return false;
    const quint64 sizesSpace = (4 * (quint64(view.partCount) + 1) + 7) / 8 * 8;
    const auto sizesIn = [&](const uchar *bytes) {
        view.partSizes = reinterpret_cast<const quint32 *>(bytes) + 1;
        view.vertexCount = 0;
        for (quint32 i = 0; i < view.partCount; ++i)
            view.vertexCount += view.partSizes[i];
        view.vertices = reinterpret_cast<const QPointF *>(bytes + sizesSpace);
    };
    if (const uchar *bytes = space.at(countAt)) {
        sizesIn(bytes);
        return true;
    }
    buffer.resize(sizesSpace / 8);
    if (!space.read(countAt, buffer.data(), sizesSpace))
        return false;
    sizesIn(reinterpret_cast<const uchar *>(buffer.data()));
    const quint64 whole = sizesSpace + sizeof(QPointF) * quint64(view.vertexCount);
    buffer.resize(whole / 8);
    if (!space.read(countAt, buffer.data(), whole))
        return false;
    sizesIn(reinterpret_cast<const uchar *>(buffer.data()));
    return true;
}

void VORNBuilder::Private::order(FileContent &content) const
{
    std::vector<quint32> used;
    std::vector<RecordCenter> centers;
    for (const auto number : chainNumbers) {
        const BuiltChain &chain = chains[number];
        content.chains.push_back({chain.handle.id, quint32(chain.records.size())});
        content.recordsByChain.insert(content.recordsByChain.end(), chain.records.begin(),
                                      chain.records.end());
    }
    used = content.recordsByChain;
    std::sort(used.begin(), used.end());
    bool oneRange = true;
    for (const quint32 record : used) {
        const BuiltRecord &r = records[record];
        centers.push_back({r.x, r.y, r.range.start / 2 + r.range.end / 2});
        oneRange = oneRange && sameRange(r.range, records[used.front()].range);
    }
    for (const quint32 position : hilbertOrder(centers, bounds, !oneRange))
        content.order.push_back(used[position]);
}

VORNBuilder::VORNBuilder(const RectInT &bounds, const Fennims *like,
                         const FMProjectionInfo *projection)
    : d(std::make_unique<Private>())
{
    d->bounds = bounds;
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
    if (id == -1) {
        const int last = d->chainNumbers.isEmpty() ? -1 : d->chainNumbers.lastKey();
        id = last < std::numeric_limits<int>::max() ? last + 1 : -1;
    }
    if (id < 0 || d->chainNumbers.contains(id))
        return nullptr;
    const auto number = quint32(d->chains.size());
    BuiltChain &chain = d->chains.emplace_back();
    chain.handle.id = id;
    ObservationSource::place(chain.handle, d.get(), number, 0);
    if (!d->append(chain, objects, ranges)) {
        d->chains.pop_back();
        return nullptr;
    }
    d->chainNumbers.insert(id, number);
    return &chain.handle;
}

FMObjectChain *VORNBuilder::AddObjectsToChain(int chainId, const QVector<TreeObject *> &objects,
                                              const QVector<timeRange> &ranges, bool takeOver)
{
    const AddedObjects owned(objects, takeOver);
    const auto number = d->chainNumbers.constFind(chainId);
    if (number == d->chainNumbers.constEnd())
        return nullptr;
    BuiltChain &chain = d->chains[number.value()];
    return d->append(chain, objects, ranges) ? &chain.handle : nullptr;
}

void VORNBuilder::SetAdjacencyTolerance(double tolerance)
{
    d->tolerance = std::isfinite(tolerance) && tolerance > 0 ? tolerance : 0.0;
}

bool VORNBuilder::IsValid() const
{
    return std::any_of(d->chains.begin(), d->chains.end(),
                       [](const BuiltChain &chain) { return !chain.records.empty(); });
}

bool VORNBuilder::Finish(const char *path, bool (*progress)(int percent, const char *text))
{
    if (!IsValid() || !path || (!d->finished && !d->space.freeze(d->space.size())))
        return false;
    d->finished = true;
    FileContent content;
    content.name = d->name.toUtf8();
    content.projection = d->projection.ToUtf8();
    content.kind = d->kind;
    content.tolerance = d->tolerance;
    d->order(content);
    content.rangeOf = [this](quint32 record) { return d->records[record].range; };
    std::vector<quint64> buffer;
    content.geometryOf = [this, &buffer](quint32 record, GeometryView &view) {
        return d->geometry(record, view, buffer);
    };
    return replaceFile(QFile::decodeName(path),
                       [&](QDataStream &out) { return content.write(out, progress); });
}
