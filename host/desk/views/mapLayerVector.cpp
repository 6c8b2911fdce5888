// SPDX-License-Identifier: MIT
#include "desk/views/mapLayerVector.h"
#include <QElapsedTimer>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MAttributes.h"
#include "datainterface/MVectorData.h"
#include "desk/draw/colorPass.h"
#include "desk/views/region.h"

namespace meridor {
namespace {

constexpr double kOutlinedSize = 8; ///< pixels; the outlines of smaller areas would hide them
constexpr double kPlaceSize = 6;    ///< logical pixels
constexpr double kLineWidth = 1.6;  ///< logical pixels
constexpr int kSliceRows = 192;
constexpr int kThreads = 2;
constexpr qint64 kLongestFollow = 15; ///< milliseconds
constexpr int kMostSampled = 200'000;

bool contains(const Interval &span, qint64 time)
{
    return (time > span.startTime || (time == span.startTime && span.inclusiveStart))
           && (time < span.endTime || (time == span.endTime && span.inclusiveEnd));
}

/// Draws the borders between areas over what lies below. A pixel of an image of half the buffer's
/// size takes as much of the colour as its four have.
void drawBorders(const PickBuffer &buffer, QRgb color, QImage &image)
{
    const int factor = buffer.width() == image.width() ? 1 : 2;
    const auto isBorder = [&buffer](int x, int y) {
        const quint32 *const row = buffer.row(y);
        const quint32 *const below = buffer.row(std::min(y + 1, buffer.height() - 1));
        return row[x] != row[std::min(x + 1, buffer.width() - 1)] || row[x] != below[x];
    };
    for (int y = 0; y < image.height(); ++y) {
        auto *const out = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            int borders = 0;
            for (int i = 0; i < factor * factor; ++i)
                borders += isBorder(factor * x + i % factor, factor * y + i / factor) ? 1 : 0;
            if (borders > 0)
                out[x] = mixed(out[x], color, std::min(1.0, 2.0 * borders / (factor * factor)));
        }
    }
}

} // namespace

VectorLayerView::VectorLayerView(Workspace &workspace, int geography, int dataset, QWidget &canvas)
    : MapLayerView(workspace, geography, dataset, canvas)
{
}

void VectorLayerView::readShapes()
{
    const qint64 when = shapeTime(geography(), time());
    if (!mHasShapes || !contains(mGeometry.span(), when)) {
        forgetShapes();
        if (!mGeometry.load(geography(), when))
            fail(tr("The shapes of %1 cannot be read.").arg(geographyName(geography())));
        mObjectCount = static_cast<int>(geographyOf(geography())->GetObjectCount());
        mHasShapes = true;
    }
    mClassOf.fill(-1, mObjectCount); // until the values are read
    if (mGeometry.count() == 0)
        fail(tr("No object of %1 exists at %2.")
                 .arg(geographyName(geography()), axisOf(geography()).show(time())));
}

void VectorLayerView::forgetShapes()
{
    mGeometry = FlatGeometry();
    mHasShapes = false;
    mObjectCount = 0;
    mClassOf.clear();
    mShapeOf.clear();
    mIsQuickStale = mIsSharpStale = mIsChosenStale = mIsTableStale = true;
    mDoesSharpFollow = true;
}

void VectorLayerView::readValues()
{
    const Classification &classes = *this->classes();
    const int realization = realizationOf(dataset());
    const bool isRead =
        !classes.limits().isEmpty()
        && VORN_GetClassNumbers(dataset(), realization, time(), classes.limits(), mClassOf);
    if (!isRead) {
        const ValuesAt values = valuesAt(dataset(), time(), realization);
        for (int object = 0; object < mObjectCount; ++object)
            mClassOf[object] = classes.of(values, object);
    }
    if (mClassOf.size() < mObjectCount)
        mClassOf += QVector<int>(mObjectCount - mClassOf.size(), -1);
    for (const int object : mGeometry.shapes().ids)
        ++(mClassOf[object] < 0 ? mMissing : mCounts[mClassOf[object]]);
    if (mMissing == static_cast<qint64>(mGeometry.count()) && trouble().isEmpty())
        setTrouble(tr("No object has a value of %1 at %2.")
                       .arg(datasetName(dataset()), axisOf(geography()).show(time())));
}

PickStyle VectorLayerView::style() const
{
    const double ratio = widget()->devicePixelRatioF();
    const double size = placeSize() > 0 ? placeSize() : kPlaceSize;
    PickStyle style;
    style.placeSize = std::clamp(static_cast<int>(std::lround(size * ratio)), 1, 127);
    style.lineWidth = std::min(kLineWidth * ratio, 100.0);
    return style;
}

int VectorLayerView::reach() const
{
    return mGeometry.kind() == FlatGeometry::Areas
               ? 0
               : static_cast<int>(std::lround(3 * widget()->devicePixelRatioF()));
}

void VectorLayerView::drawQuick(const ViewTransform &view)
{
    const PickStyle wanted = style();
    if (wanted != mStyle)
        mIsQuickStale = mIsSharpStale = true;
    mStyle = wanted;
    if (!mIsQuickStale && mQuick.view() == view)
        return;
    if (mIsQuickStale)
        mQuick.draw(mGeometry, view, wanted);
    else
        mQuick.follow(mGeometry, view, wanted);
    mIsQuickStale = false;
    // A sharp picture that moves by whole pixels stays sharp, unless that takes too long.
    const ViewTransform doubled = view.doubled();
    if (mDoesSharpFollow && !mIsSharpStale && mSharp.isComplete()
        && mSharp.view().sharesLattice(doubled)) {
        QElapsedTimer clock;
        clock.start();
        mSharp.follow(mGeometry, doubled, wanted.doubled());
        mDoesSharpFollow = clock.elapsed() < kLongestFollow;
    }
    setStale();
}

bool VectorLayerView::drawSharp(const ViewTransform &view)
{
    const ViewTransform doubled = view.doubled();
    if (mIsSharpStale || mSharp.view() != doubled)
        mSharp.begin(doubled, style().doubled());
    else if (mSharp.isComplete())
        return true;
    mIsSharpStale = false;
    // Points lie in no order, so that each slice is a pass over all of them.
    mSharp.drawSlice(mGeometry,
                     mGeometry.kind() == FlatGeometry::Places ? mSharp.height() : kSliceRows);
    if (mSharp.isComplete())
        setStale();
    return mSharp.isComplete();
}

void VectorLayerView::buildTable(const MapColors &colors, bool fillGround)
{
    if (!mIsTableStale && mTableGround == colors.ground && mFillsGround == fillGround)
        return;
    ColorRule rule;
    for (const QColor &color : classColors())
        rule.classes.append(color.rgb());
    rule.plain = colors.plain;
    rule.missing = missingColor(colors).rgb();
    rule.selected = colors.selected;
    rule.ground = colors.ground;
    rule.fillGround = fillGround;
    MAttributes *const flags = workspace().selection().attributes(geography());
    const unsigned char *selected =
        flags ? flags->GetAttributeVector(attribute::kSelected) : nullptr;
    const unsigned char *shown = flags ? flags->GetAttributeVector(attribute::kShown) : nullptr;
    mIsAnySelected = selected
                     && std::any_of(selected, selected + mObjectCount,
                                    [](unsigned char flag) { return flag != 0; });
    // Outlines let everything but the selection through.
    if (dataset() < 0 && mGeometry.kind() == FlatGeometry::Areas)
        shown = selected;
    mTable.build(mObjectCount, rule, dataset() >= 0 ? mClassOf.constData() : nullptr, shown,
                 selected);
    mIsTableStale = false;
    mTableGround = colors.ground;
    mFillsGround = fillGround;
}

void VectorLayerView::paint(const ViewTransform &view, const MapColors &colors, bool isHurried,
                            QImage &image)
{
    buildTable(colors, false);
    paintObjects(view, colors, isHurried, image);
}

void VectorLayerView::paintLowest(const ViewTransform &view, const MapColors &colors,
                                  bool isHurried, QImage &image)
{
    // Selected places and lines are a second pass over the first one.
    buildTable(colors, mGeometry.kind() == FlatGeometry::Areas);
    if (!mFillsGround || !isDrawn(view))
        image.fill(colors.ground);
    paintObjects(view, colors, isHurried, image);
}

/// Whether there is a picture of the view.
bool VectorLayerView::isDrawn(const ViewTransform &view) const
{
    return isQuickDrawn(view) || isSharp(view);
}

bool VectorLayerView::isQuickDrawn(const ViewTransform &view) const
{
    return !mIsQuickStale && mQuick.view() == view && hasColors(mQuick);
}

bool VectorLayerView::isSharp(const ViewTransform &view) const
{
    return !mIsSharpStale && mSharp.isComplete() && mSharp.view() == view.doubled()
           && hasColors(mSharp);
}

bool VectorLayerView::hasColors(const PickBuffer &buffer) const
{
    return static_cast<int>(mTable.size()) > buffer.objectLimit();
}

void VectorLayerView::paintObjects(const ViewTransform &view, const MapColors &colors,
                                   bool isHurried, QImage &image)
{
    if (!isDrawn(view))
        return;
    const bool takesSharp = isSharp(view) && !(isHurried && isQuickDrawn(view));
    const PickBuffer &buffer = takesSharp ? mSharp : mQuick;
    const bool areas = mGeometry.kind() == FlatGeometry::Areas;
    PassStyle style;
    style.outlines = areas && dataset() >= 0 && mGeometry.meanSize(view) >= kOutlinedSize;
    style.outline = lineColor(colors).rgb();
    style.hatch = colors.hatch;
    colorPass(buffer, mTable, style, image, kThreads, takesSharp ? &mSharpSpans : &mQuickSpans);
    if (!areas)
        paintChosen(buffer, takesSharp ? mStyle.doubled() : mStyle, image);
    if (areas && dataset() < 0)
        drawBorders(buffer, lineColor(colors).rgb(), image);
}

void VectorLayerView::colorsChanged()
{
    mIsTableStale = true;
    mIsChosenStale = true;
}

/// Draws selected places and lines over those that cover them.
void VectorLayerView::paintChosen(const PickBuffer &buffer, PickStyle style, QImage &image)
{
    MAttributes *const flags = workspace().selection().attributes(geography());
    if (!flags || !mIsAnySelected)
        return;
    style.only = flags->GetAttributeVector(attribute::kSelected);
    if (mIsChosenStale || mChosen.view() != buffer.view())
        mChosen.draw(mGeometry, buffer.view(), style);
    mIsChosenStale = false;
    colorPass(mChosen, mTable, PassStyle(), image);
}

int VectorLayerView::objectAt(const QPoint &pixel) const
{
    if (mIsQuickStale)
        return -1;
    return reach() > 0 ? mQuick.objectNear(pixel, reach()) : mQuick.objectAt(pixel);
}

int VectorLayerView::shapeIndex(unsigned int object) const
{
    const std::vector<int> &ids = mGeometry.shapes().ids;
    if (mShapeOf.empty()) {
        mShapeOf.assign(static_cast<std::size_t>(mGeometry.objectLimit()), -1);
        for (std::size_t i = 0; i < ids.size(); ++i)
            mShapeOf[static_cast<std::size_t>(ids[i])] = static_cast<int>(i);
    }
    return object < mShapeOf.size() ? mShapeOf[object] : -1;
}

int VectorLayerView::nextObject(int object, int step) const
{
    const int limit = mGeometry.objectLimit();
    for (int i = 1; i <= limit; ++i) {
        const int next = ((object < 0 && step < 0 ? 0 : object) + step * i) % limit;
        const int wrapped = next < 0 ? next + limit : next;
        if (shapeIndex(static_cast<unsigned int>(wrapped)) >= 0)
            return wrapped;
    }
    return -1;
}

QRectF VectorLayerView::extentOf(const QVector<unsigned int> &objects) const
{
    const FMShapes &shapes = mGeometry.shapes();
    Rect2D hull(INFINITY, -INFINITY, INFINITY, -INFINITY);
    for (const unsigned int object : objects) {
        const int shape = shapeIndex(object);
        if (shape < 0)
            continue;
        const auto index = static_cast<std::size_t>(shape);
        const bool isPlace = mGeometry.kind() == FlatGeometry::Places;
        const QPointF place = isPlace ? shapes.vertices[index] : QPointF();
        const Rect2D box =
            isPlace ? Rect2D(place.x(), place.x(), place.y(), place.y()) : shapes.boxes[index];
        hull = Rect2D(std::min(hull.xMin, box.xMin), std::max(hull.xMax, box.xMax),
                      std::min(hull.yMin, box.yMin), std::max(hull.yMax, box.yMax));
    }
    return hull.xMin > hull.xMax
               ? QRectF()
               : QRectF(QPointF(hull.xMin, hull.yMin), QPointF(hull.xMax, hull.yMax));
}

QPainterPath VectorLayerView::shapeOf(unsigned int object, const ViewTransform &view) const
{
    QPainterPath path;
    const int shape = shapeIndex(object);
    if (shape < 0)
        return path;
    const FMShapes &shapes = mGeometry.shapes();
    const auto index = static_cast<std::size_t>(shape);
    if (mGeometry.kind() == FlatGeometry::Places) {
        const double radius = 0.5 * style().placeSize + 1;
        path.addEllipse(view.toPixel(shapes.vertices[index]), radius, radius);
        return path;
    }
    // Coordinates far outside the window would overflow the painter.
    const double far = 1e6;
    for (quint32 part = shapes.firstPart[index]; part < shapes.firstPart[index + 1]; ++part) {
        QPolygonF points;
        for (quint32 i = shapes.partStart[part]; i < shapes.partStart[part + 1]; ++i) {
            const QPointF pixel = view.toPixel(shapes.vertices[i]);
            const QPointF kept(std::clamp(pixel.x(), -far, far), std::clamp(pixel.y(), -far, far));
            if (points.isEmpty() || (kept - points.last()).manhattanLength() >= 0.5)
                points.append(kept);
        }
        if (points.size() == 1)
            points.append(points.first() + QPointF(1, 0));
        path.addPolygon(points);
        if (mGeometry.kind() == FlatGeometry::Areas)
            path.closeSubpath();
    }
    return path;
}

/// The object that is seen at a pixel, or one that is too small, or too covered, to be seen.
QVector<unsigned int> VectorLayerView::seenAt(const QPoint &pixel)
{
    const ViewTransform &view = mQuick.view();
    const int seen = objectAt(pixel);
    if (seen >= 0)
        return {static_cast<unsigned int>(seen)};
    const QRectF around = view.toMap(QRectF(QPointF(pixel), QSizeF(1, 1)));
    QVector<unsigned int> found;
    VORN_RectQuery(geography(), around, shapeTime(geography(), time()), found);
    return found.mid(0, 1);
}

QVector<unsigned int> VectorLayerView::objectsIn(const QPainterPath &region)
{
    if (!mHasShapes)
        return {};
    const double ratio = widget()->devicePixelRatioF();
    const ViewTransform &view = mQuick.view();
    const Region shape(region, ratio);
    if (shape.kind() == Region::Click)
        return seenAt(shape.pixel());
    const qint64 when = shapeTime(geography(), time());
    QVector<unsigned int> found;
    if (shape.kind() == Region::Rectangle)
        VORN_RectQuery(geography(), view.toMap(shape.box()), when, found);
    else if (shape.kind() == Region::Circle && view.xScale() == view.yScale())
        VORN_CircleQuery(geography(), view.toMap(shape.center()), shape.radius() / view.xScale(),
                         when, found);
    else
        found = shape.objectsOf(geography(), when, view);
    return found;
}

QVector<unsigned int> VectorLayerView::objectsOfClass(int classIndex)
{
    QVector<unsigned int> found;
    if (mClassOf.size() != mObjectCount)
        return found;
    for (const int object : mGeometry.shapes().ids)
        if (mClassOf[object] == classIndex)
            found.append(static_cast<unsigned int>(object));
    return found;
}

QVector<double> VectorLayerView::valueSample()
{
    QVector<double> sample;
    if (dataset() < 0 || !datasetOf(dataset())->IsNumeric())
        return sample;
    QVector<double> values;
    QSet<int> missing;
    if (!VORN_GetNumericValues(dataset(), realizationOf(dataset()), time(), values, missing))
        return sample;
    const std::vector<int> &ids = mGeometry.shapes().ids;
    const std::size_t step = ids.size() / kMostSampled + 1;
    for (std::size_t i = 0; i < ids.size(); i += step)
        if (ids[i] < values.size() && std::isfinite(values[ids[i]]) && !missing.contains(ids[i]))
            sample.append(values[ids[i]]);
    return sample;
}

MapLayer VectorLayerView::pictureLayer(const ViewTransform &view)
{
    MapLayer layer;
    const FMShapes &shapes = mGeometry.shapes();
    const QRectF seen = view.visible();
    MAttributes *const flags = workspace().selection().attributes(geography());
    const unsigned char *selected =
        flags ? flags->GetAttributeVector(attribute::kSelected) : nullptr;
    layer.colors = classColors();
    for (std::size_t i = 0; i < mGeometry.count(); ++i) {
        if (i % 256 == 0)
            stopIfCancelled();
        const int object = shapes.ids[i];
        MapShape shape;
        shape.isMarked = selected && selected[object];
        if (dataset() >= 0 && mClassOf.size() == mObjectCount)
            shape.classIndex = mClassOf[object];
        if (mGeometry.kind() == FlatGeometry::Places) {
            shape.kind = MapShape::Place;
            if (!seen.contains(shapes.vertices[i]))
                continue;
            shape.parts.append({shapes.vertices[i]});
        } else {
            const Rect2D &box = shapes.boxes[i];
            if (box.xMax < seen.left() || box.xMin > seen.right() || box.yMax < seen.top()
                || box.yMin > seen.bottom())
                continue;
            shape.kind = mGeometry.kind() == FlatGeometry::Areas ? MapShape::Area : MapShape::Line;
            for (quint32 part = shapes.firstPart[i]; part < shapes.firstPart[i + 1]; ++part)
                shape.parts.append(
                    QVector<QPointF>(shapes.vertices.begin() + shapes.partStart[part],
                                     shapes.vertices.begin() + shapes.partStart[part + 1]));
        }
        layer.shapes.append(shape);
    }
    return layer;
}

} // namespace meridor
