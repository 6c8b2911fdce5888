// SPDX-License-Identifier: MIT
#include "fennimark/FMPolygon.h"
#include "fennimark/FMLine.h"
#include "shape/border.h"
#include "shape/parts.h"
#include "shape/relate.h"

using fennimark::Contact;
using fennimark::GeometryView;
using fennimark::ObjectAccess;
using fennimark::Shape;
using fennimark::Simplicity;

FMPolygon::FMPolygon(const QVector<QPointF> &ring) : FMObject(fennimark::ObjectKind::Polygon)
{
    adopt(fennimark::joined(QList<QVector<QPointF>>{ring}));
}

FMPolygon::FMPolygon(const QList<QPolygonF> &rings, int form)
    : FMObject(fennimark::ObjectKind::Polygon)
{
    constexpr int kCanonical = 1;
    adopt(fennimark::joined(rings));
    if (form == kCanonical && ObjectAccess::view(*this).vertexCount > 0)
        ObjectAccess::setSimplicity(*this, Simplicity::Simple);
}

FMPolygon::FMPolygon(const GeometryView &view, Simplicity simplicity)
    : FMObject(fennimark::ObjectKind::Polygon, view, simplicity)
{
}

FMPolygon::~FMPolygon() = default;

QList<QPolygonF> FMPolygon::GetVertices() const
{
    return fennimark::parted<QPolygonF>(*this);
}

FMObject *FMPolygon::duplicate() const
{
    return new FMPolygon(*this);
}

bool FMPolygon::ContainsPoint(double x, double y) const
{
    return FMObject::ContainsPoint(x, y);
}

bool FMPolygon::ContainsPoint(const QPointF &point) const
{
    return FMObject::ContainsPoint(point.x(), point.y());
}

bool FMPolygon::ContainsLine(const FMLine &line) const
{
    return Contains(line);
}

bool FMPolygon::ContainsPolygon(const FMPolygon &polygon) const
{
    return Contains(polygon);
}

bool FMPolygon::Contains(const FMObject &object) const
{
    return fennimark::covers(Shape(*this), Shape(object));
}

double FMPolygon::GetBorderEdges(const FMPolygon &other, QList<QLineF> *edges) const
{
    const GeometryView &mine = ObjectAccess::view(*this);
    const GeometryView &theirs = ObjectAccess::view(other);
    return fennimark::sharedBorder(mine, theirs, std::max(mine.tolerance, theirs.tolerance), edges);
}

bool FMPolygon::BordersPolygon(const FMPolygon &other, bool queen) const
{
    const GeometryView &mine = ObjectAccess::view(*this);
    const GeometryView &theirs = ObjectAccess::view(other);
    const Contact wanted = queen ? Contact::Place : Contact::Piece;
    return fennimark::contact(mine, theirs, std::max(mine.tolerance, theirs.tolerance), wanted)
           >= wanted;
}

namespace fennimark {

std::unique_ptr<FMPolygon> ObjectAccess::makePolygon(const GeometryView &view,
                                                     Simplicity simplicity)
{
    return std::unique_ptr<FMPolygon>(new FMPolygon(view, simplicity));
}

std::unique_ptr<FMPolygon> ObjectAccess::makePolygon(std::unique_ptr<ObjectBacking> backing,
                                                     Simplicity simplicity)
{
    std::unique_ptr<FMPolygon> polygon(new FMPolygon(GeometryView(), simplicity));
    polygon->adopt(std::move(backing));
    return polygon;
}

} // namespace fennimark
