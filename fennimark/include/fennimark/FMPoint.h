// SPDX-License-Identifier: MIT
/// A point object.
#pragma once
#include "fennimark/FMObject.h"

/// The coordinates are public, in map units.
class FENNIMARK_EXPORT FMPoint : public FMObject {
public:
    explicit FMPoint(const QPointF &point);
    FMPoint(const FMPoint &other) = default;
    ~FMPoint() override;

    double x = 0.0;
    double y = 0.0;

protected:
    FMObject *duplicate() const override;
    virtual void setX(double newX);
    virtual void setY(double newY);
    virtual QPointF operator=(const QPointF &point);
    virtual QPointF operator+=(const QPointF &offset);
};
