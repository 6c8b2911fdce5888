// SPDX-License-Identifier: MIT
/// A line of one or more parts.
#pragma once
#include <QList>
#include <QVector>
#include "fennimark/FMObject.h"

/// Open curves of straight segments.
class FENNIMARK_EXPORT FMLine : public FMObject {
public:
    /// @param parts  one vector of vertices for each part; the vertices are kept exactly as given.
    explicit FMLine(const QList<QVector<QPointF>> &parts);
    FMLine(const FMLine &other) = default;
    ~FMLine() override;

    QList<QVector<QPointF>> GetVertices() const;

protected:
    FMObject *duplicate() const override;

private:
    friend struct fennimark::ObjectAccess;
    FMLine(const fennimark::GeometryView &view, fennimark::Simplicity simplicity);
};
