// SPDX-License-Identifier: MIT
/// An area bounded by rings, which may be shells, holes and islands in any order and direction.
#pragma once
#include <QLineF>
#include <QList>
#include <QPair>
#include <QPolygonF>
#include <QVector>
#include "fennimark/FMObject.h"

/// The area is the even-odd set of the rings together with the rings themselves. Whether a ring is
/// a shell or a hole follows from its nesting depth. The directions of the rings, their order and
/// closing vertices have no meaning. Rings are kept exactly as given.
class FENNIMARK_EXPORT FMPolygon : public FMObject {
public:
    explicit FMPolygon(const QVector<QPointF> &ring);
    /// @param rings  any order and direction; a ring may repeat its first vertex at its end.
    /// @param form   0: even-odd. 1: the rings are known to form a valid multipolygon of
    /// counter-clockwise shells, each followed by its clockwise holes; this is not checked. Any
    /// other number counts as 0.
    explicit FMPolygon(const QList<QPolygonF> &rings, int form = 0);
    FMPolygon(const FMPolygon &other) = default;
    ~FMPolygon() override;

    QList<QPolygonF> GetVertices() const;

    /// True when the rings form a valid multipolygon (OGC simple features) of finite area above 0.
    /// GetUnion and GetIntersection accept no other polygons.
    bool IsSimple() const;
    /// In squared map units. For a polygon that is not simple: the area of its even-odd set.
    virtual double GetArea() const;

    /// Random points, uniformly distributed over the area.
    /// @param deviate  returns uniform numbers in [0, 1).
    /// @return `count` points. None when `deviate` is null, when the area is 0, and when `count` is
    /// below 1 or more than one vector holds; fewer when 10,000 tries find no further point.
    QVector<QPointF> GetRandomPoints(double (*deviate)(void), int count) const;

    /// The union or the intersection of all polygons, as closed rings: counter-clockwise shells,
    /// each followed by its clockwise holes. The caller owns the result. Null for an empty list,
    /// for a polygon that is null or not simple, and for an intersection without area.
    static FMPolygon *GetUnion(QVector<const FMPolygon *> &polygons);
    static FMPolygon *GetIntersection(QVector<const FMPolygon *> &polygons);
    /// Appends simple polygons of one shell each, whose union is the even-odd set of this polygon.
    /// For a simple polygon it appends one copy instead. The caller owns the new polygons. False
    /// when there is no area.
    bool Decompose(QVector<const FMPolygon *> &pieces) const;

    /// The common border: where the two boundaries are no farther apart than 8 ulp of the pair's
    /// largest coordinate or, when it is larger, the geography's tolerance. A stretch that a ring
    /// passes several times counts once, so both polygons of a pair give the same length and the
    /// same pieces. The border of a polygon with itself is its perimeter.
    /// @param edges  when not null, receives the pieces in this polygon's direction.
    /// @return the length of all pieces, in map units.
    double GetBorderEdges(const FMPolygon &other, QList<QLineF> *edges) const;
    /// Whether the boundaries meet within the same slack. With `queen` one common point is enough;
    /// without it (rook) they must share a piece longer than four times the slack. A vertex inside
    /// an edge and crossing boundaries count; containment without contact does not.
    virtual bool BordersPolygon(const FMPolygon &other, bool queen) const;

    bool GetCentroid(double &x, double &y) const override;
    /// Whether no point of the argument is outside. The boundary counts as inside, here and below.
    bool ContainsPoint(double x, double y) const override;
    bool ContainsPoint(const QPointF &point) const;
    /// The same for a line.
    bool ContainsLine(const FMLine &line) const;
    /// The same for a polygon.
    bool ContainsPolygon(const FMPolygon &polygon) const;
    /// The same for any object.
    bool Contains(const FMObject &object) const;

    /// The cells whose centres satisfy ContainsPoint, column after column. Rows count down from the
    /// top: the centre of a cell is at
    /// ((column + 0.5) * cellWidth + left, top - (row + 0.5) * cellHeight).
    void ContainedCenters(const FMGrid &grid, const FMGridWindow &window,
                          QVector<QPair<unsigned int, unsigned int>> &cells) const;
    /// The cells that share area with the polygon, each with the shared area, column after column.
    /// At most 1e-12 of a cell counts as none. A cell inside that no edge enters has exactly its
    /// whole area. Rows count up from the bottom: the lower left corner of a cell is at
    /// (column * cellWidth + left, row * cellHeight + bottom).
    void CellAreas(const FMGrid &grid, const FMGridWindow &window,
                   QVector<FMCellArea> &cells) const;

protected:
    FMObject *duplicate() const override;

private:
    friend struct fennimark::ObjectAccess;
    FMPolygon(const fennimark::GeometryView &view, fennimark::Simplicity simplicity);
};
