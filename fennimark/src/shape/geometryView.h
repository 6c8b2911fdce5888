// SPDX-License-Identifier: MIT
/// Access to the representation of geometry objects for the record store: objects as views of its
/// memory, the raw vertices of any object, and run boxes.
#pragma once
#include "fennimark/FMObject.h"

namespace fennimark {

/// The box of a run, which is eight consecutive segments, rounded outwards. Segment i is from
/// vertex i to the next vertex of its part. The segment of a ring's last vertex ends at the first
/// vertex, that of a line's last vertex has length 0. Runs are counted through all parts. The boxes
/// of the runs are level 0; each box of the next level is the hull of eight boxes, up to a single
/// one:
///
///     | level 0: ceil(vertices / 8) | level 1: ceil(level 0 / 8) | ... | one box |
///
/// Objects of at most eight vertices have no run boxes.
struct RunBox {
    float xMin, yMin, xMax, yMax;
};

/// The number of boxes, of all levels, of an object with `vertexCount` vertices.
quint32 runBoxCount(quint32 vertexCount);
/// Computes the boxes of all levels; `boxes` has room for runBoxCount(view.vertexCount) of them.
void buildRunBoxes(const GeometryView &view, ObjectKind kind, RunBox *boxes);

/// The hull of the vertices. A zero rectangle when there are none, and when one is not finite or
/// exceeds 1e37; in the latter case `finite` is set to false, otherwise to true.
Rect2D vertexBounds(const QPointF *vertices, quint32 count, bool *finite = nullptr);

/// Gives other parts of the library access to the private members of geometry objects.
struct ObjectAccess {
    /// Objects that view vertices; the vertices must outlive them.
    static std::unique_ptr<FMLine> makeLine(const GeometryView &view);
    static std::unique_ptr<FMPolygon> makePolygon(const GeometryView &view, Simplicity simplicity);
    /// Makes an existing line or polygon a view of other vertices. Its backing is freed.
    static void seat(FMObject &object, const GeometryView &view, Simplicity simplicity);
    /// A polygon that owns its vertices.
    static std::unique_ptr<FMPolygon> makePolygon(std::unique_ptr<ObjectBacking> backing,
                                                  Simplicity simplicity);

    static ObjectKind kind(const FMObject &object) { return object.mKind; }
    /// The vertices of a line or polygon; its run boxes are null unless the store has them. Empty
    /// for a point.
    static const GeometryView &view(const FMObject &object) { return object.mView; }
    /// The simplicity as far as it is known; nothing is computed.
    static Simplicity simplicity(const FMObject &object) { return object.mSimplicity; }
    static void setSimplicity(const FMObject &object, Simplicity simplicity)
    {
        object.mSimplicity = simplicity;
    }
    static std::unique_ptr<ObjectBacking> &backing(const FMObject &object)
    {
        return object.mBacking;
    }
};

} // namespace fennimark
