// SPDX-License-Identifier: MIT
#include "fennimark/FMObject.h"
#include <cmath>
#include <limits>
#include "fennimark/FMLine.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"
#include "shape/distance.h"
#include "shape/overlay.h"
#include "shape/relate.h"

using fennimark::GeometryView;
using fennimark::ObjectBacking;
using fennimark::ObjectKind;
using fennimark::Shape;

TreeObject::~TreeObject() = default;

FMObject::FMObject(ObjectKind kind) : mKind(kind)
{
}

FMObject::FMObject(ObjectKind kind, const GeometryView &view, fennimark::Simplicity simplicity)
    : mView(view), mKind(kind), mSimplicity(simplicity)
{
}

FMObject::FMObject(const FMObject &other)
    : TreeObject(other), mKind(other.mKind), mSimplicity(other.mSimplicity), mDirty(other.mDirty)
{
    const GeometryView given = fennimark::givenVertices(other);
    if (given.partCount == 0)
        return;
    auto backing = std::make_unique<ObjectBacking>();
    backing->vertices.assign(given.vertices, given.vertices + given.vertexCount);
    backing->partSizes.assign(given.partSizes, given.partSizes + given.partCount);
    adopt(std::move(backing));
    mView.tolerance = other.mView.tolerance;
}

FMObject::~FMObject() = default;

void FMObject::adopt(std::unique_ptr<ObjectBacking> backing)
{
    mBacking = std::move(backing);
    const auto count = static_cast<quint32>(mBacking->vertices.size());
    bool finite = true;
    mView = GeometryView();
    mView.bounds = fennimark::vertexBounds(mBacking->vertices.data(), count, &finite);
    if (!finite)
        return;
    mView.vertices = mBacking->vertices.data();
    mView.vertexCount = count;
    mView.partSizes = mBacking->partSizes.data();
    mView.partCount = static_cast<quint32>(mBacking->partSizes.size());
}

void fennimark::ObjectAccess::seat(FMObject &object, const GeometryView &view,
                                   Simplicity simplicity)
{
    object.mBacking.reset();
    object.mView = view;
    object.mSimplicity = simplicity;
    object.mDirty = false;
}

Rect2D FMObject::GetBounds() const
{
    if (mKind != ObjectKind::Point)
        return mView.bounds;
    const auto &point = static_cast<const FMPoint &>(*this);
    return {point.x, point.x, point.y, point.y};
}

Rect2D FMObject::GetObjectBounds()
{
    return GetBounds();
}

TreeObject *FMObject::Copy() const
{
    return duplicate();
}

bool FMObject::IsDirty() const
{
    return mDirty;
}

void FMObject::SetDirty(bool dirty)
{
    mDirty = dirty;
}

double FMObject::SqrDistance(const Rect2D &rect) const
{
    return fennimark::squaredDistance(Shape(*this), Shape(rect));
}

double FMObject::SqrDistance(const TreeObject *object) const
{
    if (const auto *other = dynamic_cast<const FMObject *>(object))
        return fennimark::squaredDistance(Shape(*this), Shape(*other));
    return object ? object->SqrDistance(GetBounds()) : std::numeric_limits<double>::infinity();
}

double FMObject::SqrDistance(double x, double y) const
{
    return SqrDistance(QPointF(x, y));
}

double FMObject::SqrDistance(const QPointF &from, const QPointF &to) const
{
    return fennimark::squaredDistance(Shape(*this), Shape(from, to));
}

double FMObject::SqrDistance(const QPointF &point) const
{
    return fennimark::squaredDistance(Shape(*this), Shape(point));
}

double FMObject::SqrPointDistance(const FMPoint &point) const
{
    return fennimark::squaredDistance(Shape(*this), Shape(point));
}

double FMObject::SqrLineDistance(const FMLine &line) const
{
    return fennimark::squaredDistance(Shape(*this), Shape(line));
}

double FMObject::SqrPolygonDistance(const FMPolygon &polygon) const
{
    return fennimark::squaredDistance(Shape(*this), Shape(polygon));
}

bool FMObject::OverlapsRect(const Rect2D &rect) const
{
    const Shape shape(*this);
    const Rect2D &bounds = shape.bounds();
    if (shape.isEmpty() || !fennimark::boxesMeet(bounds, rect))
        return false;
    return fennimark::boxContains(rect, bounds) || fennimark::meets(shape, Shape(rect));
}

bool FMObject::OverlapsCircle(double x, double y, double radius) const
{
    return OverlapsCircle(QPointF(x, y), radius);
}

bool FMObject::OverlapsCircle(const QPointF &center, double radius) const
{
    return radius >= 0.0 && SqrDistance(center) <= radius * radius;
}

bool FMObject::ContainedByCircle(double x, double y, double radius) const
{
    return radius >= 0.0 && fennimark::squaredReach(Shape(*this), QPointF(x, y)) <= radius * radius;
}

bool FMObject::Overlaps(const FMObject &object) const
{
    return fennimark::meets(Shape(*this), Shape(object));
}

bool FMObject::OverlapsPoint(const QPointF &point) const
{
    return ContainsPoint(point.x(), point.y());
}

bool FMObject::OverlapsLine(const FMLine &line) const
{
    return Overlaps(line);
}

bool FMObject::OverlapsPolygon(const FMPolygon &polygon, double *area) const
{
    if (area)
        *area = 0.0;
    if (!Overlaps(polygon))
        return false;
    if (area && mKind == ObjectKind::Polygon)
        *area = fennimark::commonArea(static_cast<const FMPolygon &>(*this), polygon);
    return true;
}

bool FMObject::Crosses(const FMObject &object) const
{
    return fennimark::crosses(Shape(*this), Shape(object));
}

bool FMObject::CrossesPoint(const QPointF &) const
{
    return false; // an object that meets a point contains it
}

bool FMObject::CrossesLine(const FMLine &line) const
{
    return Crosses(line);
}

bool FMObject::CrossesPolygon(const FMPolygon &polygon) const
{
    return Crosses(polygon);
}

bool FMObject::ContainedByRect(const Rect2D &rect) const
{
    const Shape shape(*this);
    return !shape.isEmpty() && fennimark::boxContains(rect, shape.bounds());
}

bool FMObject::ContainedByPolygon(const FMPolygon &polygon) const
{
    return fennimark::covers(Shape(polygon), Shape(*this));
}

bool FMObject::ContainsPoint(double x, double y) const
{
    return fennimark::locate(Shape(*this), QPointF(x, y)) != fennimark::Place::Outside;
}

double FMObject::Length() const
{
    double length = 0.0;
    const Shape shape(*this);
    shape.visitSegments(0, shape.vertexCount(),
                        [&length](quint32, const QPointF &from, const QPointF &to) {
                            length += std::hypot(to.x() - from.x(), to.y() - from.y());
                            return true;
                        });
    return length;
}

bool FMObject::GetCentroid(double &x, double &y) const
{
    const Shape shape(*this);
    if (shape.isEmpty())
        return false;
    const QPointF origin = shape.vertex(0); // moments about a near point have less rounding error
    double length = mKind == ObjectKind::Point ? 1.0 : 0.0;
    double momentX = 0.0;
    double momentY = 0.0;
    shape.visitSegments(
        0, shape.vertexCount(), [&](quint32, const QPointF &from, const QPointF &to) {
            const double step = std::hypot(to.x() - from.x(), to.y() - from.y());
            length += step;
            momentX += step * (0.5 * (from.x() - origin.x()) + 0.5 * (to.x() - origin.x()));
            momentY += step * (0.5 * (from.y() - origin.y()) + 0.5 * (to.y() - origin.y()));
            return true;
        });
    if (!(length > 0.0))
        return false;
    x = origin.x() + momentX / length;
    y = origin.y() + momentY / length;
    return true;
}

void FMObject::TransformVertices(void *transform, const FMProjectionInfo &projection, bool inverse)
{
    if (!transform)
        return;
    const auto call = reinterpret_cast<fennimark::VertexTransform>(transform);
    if (mKind == ObjectKind::Point) {
        auto &point = static_cast<FMPoint &>(*this);
        QPointF place(point.x, point.y);
        call(&place, 1, projection, inverse);
        point.x = place.x();
        point.y = place.y();
    } else {
        const GeometryView given = fennimark::givenVertices(*this);
        auto backing = std::make_unique<ObjectBacking>();
        backing->vertices.assign(given.vertices, given.vertices + given.vertexCount);
        backing->partSizes.assign(given.partSizes, given.partSizes + given.partCount);
        call(backing->vertices.data(), static_cast<int>(given.vertexCount), projection, inverse);
        const double tolerance = mView.tolerance;
        adopt(std::move(backing));
        mView.tolerance = tolerance;
        mSimplicity = fennimark::Simplicity::Unknown;
    }
    mDirty = true;
}

namespace fennimark {

GeometryView givenVertices(const FMObject &object)
{
    GeometryView view = ObjectAccess::view(object);
    const auto &backing = ObjectAccess::backing(object);
    if (backing && !backing->partSizes.empty()) {
        view.vertices = backing->vertices.data();
        view.vertexCount = static_cast<quint32>(backing->vertices.size());
        view.partSizes = backing->partSizes.data();
        view.partCount = static_cast<quint32>(backing->partSizes.size());
    }
    return view;
}

} // namespace fennimark
