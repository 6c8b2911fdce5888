// SPDX-License-Identifier: MIT
#include "fennimark/FMPoint.h"

FMPoint::FMPoint(const QPointF &point)
    : FMObject(fennimark::ObjectKind::Point), x(point.x()), y(point.y())
{
}

FMPoint::~FMPoint() = default;

FMObject *FMPoint::duplicate() const
{
    return new FMPoint(*this);
}

void FMPoint::setX(double newX)
{
    x = newX;
    SetDirty(true);
}

void FMPoint::setY(double newY)
{
    y = newY;
    SetDirty(true);
}

QPointF FMPoint::operator=(const QPointF &point)
{
    setX(point.x());
    setY(point.y());
    return {x, y};
}

QPointF FMPoint::operator+=(const QPointF &offset)
{
    return *this = QPointF(x + offset.x(), y + offset.y());
}
