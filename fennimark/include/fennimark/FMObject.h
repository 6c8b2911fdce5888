// SPDX-License-Identifier: MIT
/// Points, lines and polygons as sets of places: exact predicates on closed sets, distances,
/// lengths and centroids.
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

/// The vertices of an object, part after part, each as given. A view owns nothing: the memory is
/// that of a record store or of the object's own backing, and must outlive it.
struct GeometryView {
    const QPointF *vertices = nullptr;
    const quint32 *partSizes = nullptr;
    quint32 partCount = 0;
    quint32 vertexCount = 0;
    Rect2D bounds;
    const RunBox *runBoxes = nullptr; ///< made on first use when null
    /// Map units within which borders count as shared; 0 means rounding slack alone.
    double tolerance = 0.0;
};

/// Transforms `count` vertices in place, to or (inverse) from the system that `projection` names.
using VertexTransform = void (*)(QPointF *vertices, int count, const FMProjectionInfo &projection,
                                 bool inverse);

} // namespace fennimark

/// Predicates are exact (no tolerance) on closed sets, boundary included. Distances and lengths are
/// planar, in map units. An object views vertices in the store that made it, or owns its vertices;
/// copies always own theirs. Vertices that are not finite, or beyond 1e37, are kept, but the object
/// is then an empty set.
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
    /// Squared distance to the segment between two places, and to a place.
    virtual double SqrDistance(const QPointF &from, const QPointF &to) const;
    virtual double SqrDistance(const QPointF &point) const;
    /// TreeObject's, by a point.
    virtual bool OverlapsCircle(const QPointF &center, double radius) const;
    /// A common point; touching counts.
    virtual bool Overlaps(const FMObject &object) const;
    /// Overlaps for one kind of object, here and in the two below.
    virtual bool OverlapsPoint(const QPointF &point) const;
    /// A common point with a line.
    virtual bool OverlapsLine(const FMLine &line) const;
    /// Whether this object and a polygon have a common point.
    /// @param area  when not null, takes the area of the intersection in squared map units; it is 0
    /// where the two only touch and for objects that are no polygon.
    virtual bool OverlapsPolygon(const FMPolygon &polygon, double *area) const;
    /// The interiors meet and neither contains the other. Never true of a point.
    virtual bool Crosses(const FMObject &object) const;
    /// Never true.
    virtual bool CrossesPoint(const QPointF &point) const;
    /// Crosses for a line.
    virtual bool CrossesLine(const FMLine &line) const;
    /// Crosses for a polygon.
    virtual bool CrossesPolygon(const FMPolygon &polygon) const;
    /// No point of this object is outside; the boundary counts as inside. An empty object is
    /// contained by nothing.
    virtual bool ContainedByRect(const Rect2D &rect) const;
    /// The same for a polygon.
    virtual bool ContainedByPolygon(const FMPolygon &polygon) const;
    /// Whether the place is a point of the object.
    virtual bool ContainsPoint(double x, double y) const;
    /// SqrDistance for one kind of object, here and in the two below.
    virtual double SqrPointDistance(const FMPoint &point) const;
    /// To a line.
    virtual double SqrLineDistance(const FMLine &line) const;
    /// To a polygon.
    virtual double SqrPolygonDistance(const FMPolygon &polygon) const;

protected:
    /// Calls the fennimark::VertexTransform that `transform` points to on all vertices; null leaves
    /// them alone.
    virtual void TransformVertices(void *transform, const FMProjectionInfo &projection,
                                   bool inverse);
    virtual FMObject *duplicate() const = 0;

public:
    /// Centre of gravity: of the area of a polygon, of the length of a line. False for an area or
    /// length of 0.
    virtual bool GetCentroid(double &x, double &y) const;

    /// The bounds of GetObjectBounds, of a const object.
    Rect2D GetBounds() const;

protected:
    explicit FMObject(fennimark::ObjectKind kind);
    FMObject(fennimark::ObjectKind kind, const fennimark::GeometryView &view,
             fennimark::Simplicity simplicity);
    FMObject(const FMObject &other);
    FMObject &operator=(const FMObject &other) = delete;

    /// Replaces the view by one on vertices that the object owns from now on.
    void adopt(std::unique_ptr<fennimark::ObjectBacking> backing);

private:
    friend struct fennimark::ObjectAccess;

    fennimark::GeometryView mView;
    // Vertices that the object owns, and part ends, run boxes and nesting once they were needed. It
    // may exist beside a view on another's vertices.
    mutable std::unique_ptr<fennimark::ObjectBacking> mBacking;
    fennimark::ObjectKind mKind;
    mutable fennimark::Simplicity mSimplicity = fennimark::Simplicity::Unknown;
    bool mDirty = false;
};
