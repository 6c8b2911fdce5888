// SPDX-License-Identifier: MIT
#include "fennimark/FMLine.h"
#include "shape/parts.h"

FMLine::FMLine(const QList<QVector<QPointF>> &parts) : FMObject(fennimark::ObjectKind::Line)
{
    adopt(fennimark::joined(parts));
}

FMLine::FMLine(const fennimark::GeometryView &view, fennimark::Simplicity simplicity)
    : FMObject(fennimark::ObjectKind::Line, view, simplicity)
{
}

FMLine::~FMLine() = default;

QList<QVector<QPointF>> FMLine::GetVertices() const
{
    return fennimark::parted<QVector<QPointF>>(*this);
}

FMObject *FMLine::duplicate() const
{
    return new FMLine(*this);
}

namespace fennimark {

std::unique_ptr<FMLine> ObjectAccess::makeLine(const GeometryView &view)
{
    return std::unique_ptr<FMLine>(new FMLine(view, Simplicity::Unknown));
}

} // namespace fennimark
