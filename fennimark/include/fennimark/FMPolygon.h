// SPDX-License-Identifier: MIT
/// An area bounded by rings, which may be shells, holes and islands in any order and direction.
#pragma once
#include <QLineF>
#include <QList>
#include <QPair>
#include <QPolygonF>
#include <QVector>
#include "fennimark/FMObject.h"

/// The area is the even-odd set of the rings together with the rings themselves. The depth to which
/// a ring is nested makes it a shell or a hole; ring directions, their order and closing vertices
/// have no meaning. Rings are kept exactly as given.
class FENNIMARK_EXPORT FMPolygon : public FMObject {
public:
    explicit FMPolygon(const QVector<QPointF> &ring);
    /// @param rings  any order and direction; a ring may repeat its first vertex at its end.
    /// @param form   0: even-odd. 1: the rings are known to form a valid multipolygon of
    /// counter-clockwise shells, each followed by its clockwise holes. Any other number counts as 0.
    explicit FMPolygon(const QList<QPolygonF> &rings, int form = 0);
    FMPolygon(const FMPolygon &other) = default;
    ~FMPolygon() override;

    QList<QPolygonF> GetVertices() const;

    /// True when the rings form a valid multipolygon (OGC simple features) of finite area above 0.
    /// GetUnion and GetIntersection accept no other polygons.
    bool IsSimple() const;
    /// Squared map units; of a polygon that is not simple, the area of its even-odd set.
    virtual double GetArea() const;

    /// Points drawn uniformly from the area.
    /// @param deviate  returns uniform numbers in [0, 1).
    /// @return `count` points; fewer, possibly none, when the function is null, when the area is 0,
    /// and when 10,000 tries have not found one point.
    QVector<QPointF> GetRandomPoints(double (*deviate)(void), int count) const;

    /// The union or the intersection of all polygons as closed rings: counter-clockwise shells, each
    /// followed by its clockwise holes. The caller owns the result. Null for an empty list, for an
    /// input that is null or not simple, and for an intersection without area.
    static FMPolygon *GetUnion(QVector<const FMPolygon *> &polygons);
    static FMPolygon *GetIntersection(QVector<const FMPolygon *> &polygons);
    /// Appends simple polygons of one shell each whose union is the even-odd set of this polygon, or
    /// a copy when this polygon is simple. The caller owns them. False when there is no area.
    bool Decompose(QVector<const FMPolygon *> &pieces) const;

    /// Where the boundaries run together: within 8 ulp of the pair's largest coordinate, or within
    /// the geography's tolerance where that is wider. A stretch along which a ring runs several times
    /// counts once, so both polygons of a pair give the same length and the same pieces. The border
    /// with itself is the perimeter.
    /// @param edges  when not null, takes the pieces in this polygon's direction.
    /// @return the length of all pieces, in map units.
    double GetBorderEdges(const FMPolygon &other, QList<QLineF> *edges) const;
    /// Whether the boundaries meet within the same slack. With `queen` any common place is enough;
    /// without it (rook) they have to share a piece longer than four times the slack. Vertices inside
    /// edges and crossing boundaries count; containment without contact does not.
    virtual bool BordersPolygon(const FMPolygon &other, bool queen) const;

    bool GetCentroid(double &x, double &y) const override;
    /// No point of the argument is outside; the boundary counts as inside, here and below.
    bool ContainsPoint(double x, double y) const override;
    bool ContainsPoint(const QPointF &point) const;
    /// The same of a line.
    bool ContainsLine(const FMLine &line) const;
    /// The same of a polygon.
    bool ContainsPolygon(const FMPolygon &polygon) const;
    /// The same of any object.
    bool Contains(const FMObject &object) const;

    /// The cells whose centres satisfy ContainsPoint, column after column. Centres are at
    /// ((column + 0.5) * cellWidth + left, top - (row + 0.5) * cellHeight): rows count down from
    /// the top.
    void ContainedCenters(const FMGrid &grid, const FMGridWindow &window,
                          QVector<QPair<unsigned int, unsigned int>> &cells) const;
    /// The cells that share area with the polygon and how much, column after column; at most 1e-12
    /// of a cell counts as none, and a cell that no edge enters has exactly its whole area. Rows
    /// count up from the bottom: cell (column, row) begins at (column * cellWidth + left, row *
    /// cellHeight + bottom).
    void CellAreas(const FMGrid &grid, const FMGridWindow &window,
                   QVector<FMCellArea> &cells) const;

protected:
    FMObject *duplicate() const override;

private:
    friend struct fennimark::ObjectAccess;
    FMPolygon(const fennimark::GeometryView &view, fennimark::Simplicity simplicity);
};
