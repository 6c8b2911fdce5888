// SPDX-License-Identifier: MIT
/// Points, lines and polygons as closed point sets: exact predicates, distances, lengths and
/// centroids.
#pragma once
#include <QPointF>
#include <memory>
#include "fennimark/TreeObject.h"

class FMLine;
class FMPoint;
class FMPolygon;
class FMProjectionInfo;

namespace fennimark {

struct ObjectAccess;
struct ObjectBacking;
struct RunBox;

enum class ObjectKind : quint8 { Point, Line, Polygon };
enum class Simplicity : quint8 { Unknown, Simple, NotSimple };

/// The vertices of an object, part after part, each as given. A view owns nothing: the memory
/// belongs to a record store or to the object's own backing, and must outlive the view.
struct GeometryView {
    const QPointF *vertices = nullptr;
    const quint32 *partSizes = nullptr;
    quint32 partCount = 0;
    quint32 vertexCount = 0;
    Rect2D bounds;
    const RunBox *runBoxes = nullptr; ///< null: the boxes are computed on first use
    /// The distance in map units within which borders count as shared; 0: the rounding slack alone.
    double tolerance = 0.0;
};

/// Transforms `count` vertices in place, to or (inverse) from the system that `projection` names.
using VertexTransform = void (*)(QPointF *vertices, int count, const FMProjectionInfo &projection,
                                 bool inverse);

} // namespace fennimark

/// Predicates are exact, without a tolerance, on closed sets: the boundary is part of the object.
/// Distances and lengths are planar, in map units. An object is a view of vertices in the store
/// that made it, or owns its vertices; a copy always owns its vertices. Vertices that are not
/// finite or exceed 1e37 are kept, but the object is then an empty set.
class FENNIMARK_EXPORT FMObject : public TreeObject {
public:
    ~FMObject() override;

    bool SaveToStream(QDataStream &out) override;
    bool RestoreFromStream(QDataStream &in, int form) override;
    TreeObject *Copy() const override;
    double SqrDistance(const Rect2D &rect) const override;
    double SqrDistance(const TreeObject *object) const override;
    double SqrDistance(double x, double y) const override;
    bool OverlapsRect(const Rect2D &rect) const override;
    bool OverlapsCircle(double x, double y, double radius) const override;
    bool ContainedByCircle(double x, double y, double radius) const override;
    Rect2D GetObjectBounds() override;
    bool IsDirty() const override;
    void SetDirty(bool dirty) override;

    /// Length of a line, perimeter of a polygon with its holes, 0 of a point.
    virtual double Length() const;
    /// Squared distance to the segment between two points, and to a point.
    virtual double SqrDistance(const QPointF &from, const QPointF &to) const;
    virtual double SqrDistance(const QPointF &point) const;
    /// The same as TreeObject::OverlapsCircle, with the centre as a point.
    virtual bool OverlapsCircle(const QPointF &center, double radius) const;
    /// Whether the two objects have a common point; touching counts.
    virtual bool Overlaps(const FMObject &object) const;
    /// Overlaps for a point.
    virtual bool OverlapsPoint(const QPointF &point) const;
    /// Overlaps for a line.
    virtual bool OverlapsLine(const FMLine &line) const;
    /// Overlaps for a polygon.
    /// @param area  when not null, receives the area of the intersection in squared map units. It
    /// is 0 when the two only touch and when this object is not a polygon.
    virtual bool OverlapsPolygon(const FMPolygon &polygon, double *area) const;
    /// Whether the interiors meet and neither object contains the other. Always false for a point.
    virtual bool Crosses(const FMObject &object) const;
    /// Always false.
    virtual bool CrossesPoint(const QPointF &point) const;
    /// Crosses for a line.
    virtual bool CrossesLine(const FMLine &line) const;
    /// Crosses for a polygon.
    virtual bool CrossesPolygon(const FMPolygon &polygon) const;
    /// Whether no point of this object is outside the rectangle; the boundary counts as inside.
    /// False for an empty object.
    virtual bool ContainedByRect(const Rect2D &rect) const;
    /// The same for a polygon.
    virtual bool ContainedByPolygon(const FMPolygon &polygon) const;
    /// Whether (x, y) is a point of the object.
    virtual bool ContainsPoint(double x, double y) const;
    /// SqrDistance for a point.
    virtual double SqrPointDistance(const FMPoint &point) const;
    /// SqrDistance for a line.
    virtual double SqrLineDistance(const FMLine &line) const;
    /// SqrDistance for a polygon.
    virtual double SqrPolygonDistance(const FMPolygon &polygon) const;

protected:
    /// Calls the fennimark::VertexTransform that `transform` points to on all vertices. A null
    /// `transform` changes nothing.
    virtual void TransformVertices(void *transform, const FMProjectionInfo &projection,
                                   bool inverse);
    virtual FMObject *duplicate() const = 0;

public:
    /// The centre of gravity: of the area of a polygon, of the length of a line, the position of a
    /// point. False for an area or length of 0.
    virtual bool GetCentroid(double &x, double &y) const;

    /// The same as GetObjectBounds, for a const object.
    Rect2D GetBounds() const;

protected:
    explicit FMObject(fennimark::ObjectKind kind);
    FMObject(fennimark::ObjectKind kind, const fennimark::GeometryView &view,
             fennimark::Simplicity simplicity);
    FMObject(const FMObject &other);
    FMObject &operator=(const FMObject &other) = delete;

    /// Takes ownership of `backing` and makes the view one of its vertices.
    void adopt(std::unique_ptr<fennimark::ObjectBacking> backing);

private:
    friend struct fennimark::ObjectAccess;

    // What all queries read. Its vertices are either in a record store or in mBacking. The view is
    // empty for a point and for vertices that are not finite.
    fennimark::GeometryView mView;
    // Two independent uses. When its partSizes are not empty, it owns the vertices of the object,
    // also those that mView leaves out because they are not finite. It is also the cache of part
    // ends, run boxes and nesting, which are computed on first use, so it may be non-null while
    // mView points into a record store. Null until one of the two is needed.
    mutable std::unique_ptr<fennimark::ObjectBacking> mBacking;
    fennimark::ObjectKind mKind;
    mutable fennimark::Simplicity mSimplicity = fennimark::Simplicity::Unknown;
    bool mDirty = false;
};
