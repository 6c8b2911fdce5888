// SPDX-License-Identifier: MIT
#include "desk/draw/pickBuffer.h"
#include <algorithm>
#include <atomic>
#include <cstring>
#include "desk/draw/bands.h"
#include "desk/draw/flatGeometry.h"
#include "desk/draw/lineDraw.h"
#include "desk/draw/pointStamp.h"
#include "desk/draw/polygonFill.h"

namespace meridor {
namespace {

// Vertices are snapped to half pixels when the mean edge is shorter than this. It saves time only
// where most edges then disappear.
constexpr double kSnappedEdge = 0.5;
constexpr int kLeastSlice = 64;
constexpr int kSlices = 8;
constexpr int kSpareShare = 8; // of the rows, as spare rows on each side

/// Calls visit(shape) for the shapes of all blocks that come within `reach` pixels of the area.
/// @param only  see PickStyle.
template <class Visit>
void visitShapes(const FlatGeometry &geometry, const Lattice &lattice, const PickArea &area,
                 int reach, const unsigned char *only, Visit visit)
{
    const std::vector<int> &ids = geometry.shapes().ids;
    const double margin = reach + 1;
    const std::vector<Rect2D> &blocks = geometry.blocks();
    for (std::size_t block = 0; block < blocks.size(); ++block) {
        const Rect2D box = lattice.box(blocks[block]);
        if (!(box.xMin < area.right + margin && box.xMax >= area.left - margin
              && box.yMin < area.bottom + margin && box.yMax >= area.top - margin))
            continue;
        const std::size_t first = block * FlatGeometry::kBlock;
        const std::size_t end = std::min(first + FlatGeometry::kBlock, geometry.count());
        for (std::size_t shape = first; shape < end; ++shape) {
            if (!only || only[ids[shape]])
                visit(shape);
        }
    }
}

void drawArea(const FlatGeometry &geometry, const ViewTransform &view, const PickStyle &style,
              const PickArea &area)
{
    const FMShapes &shapes = geometry.shapes();
    const Lattice lattice(view);
    const auto valueOf = [&shapes](std::size_t shape) {
        return static_cast<quint32>(shapes.ids[shape] + 1);
    };
    if (geometry.kind() == FlatGeometry::Areas) {
        PolygonFill fill(lattice, area, geometry.meanEdge(view) < kSnappedEdge);
        visitShapes(geometry, lattice, area, 0, style.only,
                    [&](std::size_t shape) { fill.fill(shapes, shape, valueOf(shape)); });
    } else if (geometry.kind() == FlatGeometry::Lines) {
        const LineDraw line(lattice, area, style.lineWidth);
        visitShapes(geometry, lattice, area, line.reach(), style.only,
                    [&](std::size_t shape) { line.draw(shapes, shape, valueOf(shape)); });
    } else {
        const PointStamp stamp(style.placeSize);
        visitShapes(geometry, lattice, area, stamp.reach(), style.only, [&](std::size_t shape) {
            const QPointF &place = shapes.vertices[shape];
            stamp.draw(lattice.x(place.x()), lattice.y(place.y()), valueOf(shape), area);
        });
    }
}

} // namespace

bool PickBuffer::draw(const FlatGeometry &geometry, const ViewTransform &view,
                      const PickStyle &style, const std::function<bool()> &stop)
{
    begin(view, style);
    const int rows = stop ? std::max(kLeastSlice, mHeight / kSlices) : mHeight;
    while (!isComplete()) {
        if (stop && stop())
            return false;
        drawSlice(geometry, rows);
    }
    return true;
}

bool PickBuffer::follow(const FlatGeometry &geometry, const ViewTransform &view,
                        const PickStyle &style, const std::function<bool()> &stop)
{
    if (!isComplete() || style != mStyle || !view.sharesLattice(mView))
        return draw(geometry, view, style, stop);
    const QRect kept = moveTo(view);
    if (2 * qint64(kept.width()) * kept.height() < qint64(mWidth) * mHeight)
        return draw(geometry, view, style, stop);
    const int below = kept.top() + kept.height();
    const int behind = kept.left() + kept.width();
    redraw(geometry, QRect(0, 0, mWidth, kept.top()));
    redraw(geometry, QRect(0, below, mWidth, mHeight - below));
    redraw(geometry, QRect(0, kept.top(), kept.left(), kept.height()));
    redraw(geometry, QRect(behind, kept.top(), mWidth - behind, kept.height()));
    return true;
}

void PickBuffer::changed()
{
    static std::atomic<quint64> contents{0};
    mRevision = ++contents;
}

void PickBuffer::begin(const ViewTransform &view, const PickStyle &style)
{
    mView = view;
    mStyle = style;
    allocate(view.size().expandedTo(QSize(0, 0)));
    quint32 *first = pixelsFrom(0, 0);
    std::fill(first, first + std::size_t(mWidth) * std::size_t(mHeight), kNothing);
    mDrawnRows = 0;
    mObjectLimit = 0;
    changed();
}

void PickBuffer::drawSlice(const FlatGeometry &geometry, int rows)
{
    const int count = std::min(std::max(1, rows), mHeight - mDrawnRows);
    drawRect(geometry, QRect(0, mDrawnRows, mWidth, count));
    mDrawnRows += std::max(0, count);
}

/// Draws into pixels of the window that hold nothing.
void PickBuffer::drawRect(const FlatGeometry &geometry, const QRect &rect)
{
    changed();
    if (rect.isEmpty() || geometry.count() == 0)
        return;
    mObjectLimit = std::max(mObjectLimit, geometry.objectLimit());
    // Each band of places is a pass over all of them.
    const int bandsPerThread = geometry.kind() == FlatGeometry::Places ? 1 : 2;
    inBands(rect.top(), rect.top() + rect.height(), mThreads, bandsPerThread,
            [&](int first, int end) {
                PickArea area;
                area.left = rect.left() + mView.origin().x();
                area.right = area.left + rect.width();
                area.top = first + mView.origin().y();
                area.bottom = end + mView.origin().y();
                area.stride = mWidth;
                area.pixels = pixelsFrom(rect.left(), first);
                drawArea(geometry, mView, mStyle, area);
            });
}

QRect PickBuffer::moveTo(const ViewTransform &view)
{
    const QSize size = view.size().expandedTo(QSize(0, 0));
    const QRect before(mView.origin(), QSize(mWidth, mHeight));
    const QRect shared = before & QRect(view.origin(), size);
    const QRect kept = shared.isEmpty() ? QRect() : shared.translated(-view.origin());
    const QPoint from = shared.topLeft() - mView.origin();
    if (size == QSize(mWidth, mHeight) && !kept.isEmpty()) {
        slide(qptrdiff(from.y() - kept.top()) * mWidth + from.x() - kept.left());
    } else {
        const std::vector<quint32> old = std::move(mPixels);
        const std::size_t oldStart =
            mStart + std::size_t(from.y()) * std::size_t(mWidth) + std::size_t(from.x());
        const auto oldWidth = std::size_t(mWidth);
        allocate(size);
        for (int y = 0; y < kept.height(); ++y)
            std::memcpy(pixelsFrom(kept.left(), kept.top() + y),
                        old.data() + oldStart + std::size_t(y) * oldWidth,
                        std::size_t(kept.width()) * sizeof(quint32));
    }
    mView = view;
    mDrawnRows = mHeight;
    changed();
    return kept;
}

/// Moves all pixels by `distance` towards the first one. Rows follow one another in memory, so this
/// is a change of where the first one is; what comes over from the end of a row into the next one is
/// outside the part that is kept. When the spare rows on that side are used up, the pixels are copied
/// back to the middle.
void PickBuffer::slide(qptrdiff distance)
{
    const qptrdiff count = qptrdiff(mWidth) * mHeight;
    const qptrdiff start = qptrdiff(mStart) + distance;
    if (start >= 0 && start + count <= qptrdiff(mPixels.size())) {
        mStart = std::size_t(start);
        return;
    }
    const qptrdiff first = std::max<qptrdiff>(start, 0);
    const qptrdiff end = std::min(start + count, qptrdiff(mPixels.size()));
    const qptrdiff middle = (qptrdiff(mPixels.size()) - count) / 2;
    std::memmove(mPixels.data() + middle + (first - start), mPixels.data() + first,
                 std::size_t(end - first) * sizeof(quint32));
    mStart = std::size_t(middle);
}

/// Makes room for a window and the spare rows above and below; the content is not defined.
void PickBuffer::allocate(const QSize &size)
{
    mWidth = size.width();
    mHeight = size.height();
    const std::size_t spare = std::size_t(mHeight / kSpareShare + 1) * std::size_t(mWidth);
    mPixels.resize(std::size_t(mWidth) * std::size_t(mHeight) + 2 * spare);
    mStart = spare;
}

/// Empties a part of the window and draws it.
void PickBuffer::redraw(const FlatGeometry &geometry, const QRect &rect)
{
    for (int y = rect.top(); y < rect.top() + rect.height() && rect.width() > 0; ++y) {
        quint32 *pixels = pixelsFrom(rect.left(), y);
        std::fill(pixels, pixels + rect.width(), kNothing);
    }
    drawRect(geometry, rect);
}

int PickBuffer::objectAt(const QPoint &pixel) const
{
    if (pixel.x() < 0 || pixel.x() >= mWidth || pixel.y() < 0 || pixel.y() >= mHeight)
        return -1;
    return static_cast<int>(row(pixel.y())[pixel.x()]) - 1;
}

int PickBuffer::objectNear(const QPoint &pixel, int reach) const
{
    int found = -1;
    int nearest = reach * reach;
    for (int y = std::max(0, pixel.y() - reach); y <= std::min(mHeight - 1, pixel.y() + reach);
         ++y) {
        for (int x = std::max(0, pixel.x() - reach); x <= std::min(mWidth - 1, pixel.x() + reach);
             ++x) {
            const QPoint offset = QPoint(x, y) - pixel;
            const int distance = QPoint::dotProduct(offset, offset);
            if (row(y)[x] == kNothing || distance > nearest || (found >= 0 && distance == nearest))
                continue;
            nearest = distance;
            found = static_cast<int>(row(y)[x]) - 1;
        }
    }
    return found;
}

} // namespace meridor
