// SPDX-License-Identifier: MIT
// All geometries of one time. The records are read twice, first for their numbers of vertices, so
// that the arrays are allocated once and no vertex is written twice.
#include "fennimark/Fennims.h"
#include <limits>
#include "fennimark/FMShapes.h"
#include "geography/fennimsState.h"

using namespace fennimark;

namespace {

/// Calls visit(record) for the records that exist at `time`, ascending, until it returns false.
template <class Visit> bool visitRecords(const RecordStore &store, double time, Visit visit)
{
    const AtTime when{time};
    if (!store.mayHold(when))
        return true;
    for (quint32 record = 0; record < store.recordCount(); ++record) {
        if (store.lives(record) && when(store.range(record)) && !visit(record))
            return false;
    }
    return true;
}

struct Counts {
    quint64 shapes = 0;
    quint64 parts = 0;
    quint64 vertices = 0;
};

/// False when a payload cannot be read.
bool count(const RecordStore &store, double time, Counts &counts)
{
    const bool points = store.kind() == ObjectKind::Point;
    std::vector<quint64> buffer;
    return visitRecords(store, time, [&](quint32 record) {
        ++counts.shapes;
        GeometryView view;
        if (points)
            view.vertexCount = 1;
        else if (!store.view(record, view, buffer))
            return false;
        counts.parts += view.partCount;
        counts.vertices += view.vertexCount;
        return true;
    });
}

void append(const GeometryView &view, FMShapes &shapes)
{
    auto at = static_cast<quint32>(shapes.vertices.size());
    for (quint32 part = 0; part < view.partCount; ++part) {
        shapes.partStart.push_back(at);
        at += view.partSizes[part];
    }
    shapes.vertices.insert(shapes.vertices.end(), view.vertices, view.vertices + view.vertexCount);
}

} // namespace

bool Fennims::GetShapesAtTime(qint64 time, FMShapes &shapes) const
{
    shapes = FMShapes();
    const RecordStore &store = d->store;
    const auto instant = double(time);
    Counts counts;
    if (!count(store, instant, counts) || counts.vertices > std::numeric_limits<quint32>::max()
        || counts.parts > std::numeric_limits<quint32>::max())
        return false;
    FMShapes found;
    found.ids.reserve(counts.shapes);
    found.vertices.reserve(counts.vertices);
    if (store.kind() == ObjectKind::Point) {
        visitRecords(store, instant, [&](quint32 record) {
            found.ids.push_back(store.chainId(record));
            const Rect2D place = store.box(record);
            found.vertices.emplace_back(place.xMin, place.yMin);
            return true;
        });
        shapes = std::move(found);
        return true;
    }
    found.boxes.reserve(counts.shapes);
    found.partStart.reserve(counts.parts + 1);
    found.firstPart.reserve(counts.shapes + 1);
    std::vector<quint64> buffer;
    const bool isRead = visitRecords(store, instant, [&](quint32 record) {
        GeometryView view;
        if (!store.view(record, view, buffer))
            return false;
        found.ids.push_back(store.chainId(record));
        found.boxes.push_back(view.bounds);
        found.firstPart.push_back(static_cast<quint32>(found.partStart.size()));
        append(view, found);
        return true;
    });
    if (!isRead)
        return false;
    found.partStart.push_back(static_cast<quint32>(found.vertices.size()));
    found.firstPart.push_back(static_cast<quint32>(found.partStart.size()) - 1);
    shapes = std::move(found);
    return true;
}
