// SPDX-License-Identifier: MIT
/// The inside of geometry objects, for the record store: objects as views on its memory, the raw
/// vertices of any object, and run boxes.
#pragma once
#include "fennimark/FMObject.h"

namespace fennimark {

/// The box of eight consecutive segments, rounded outwards. Segment i runs from vertex i to the
/// next of its part; the last vertex of a ring goes back to the first, the last of a line stays
/// where it is. Runs take no notice of parts. Above the runs stand boxes of eight boxes each, level
/// behind level up to a single one. Objects of at most eight vertices have none.
struct RunBox {
    float xMin, yMin, xMax, yMax;
};

/// How many boxes, of all levels, an object of so many vertices has; and their making.
quint32 runBoxCount(quint32 vertexCount);
void buildRunBoxes(const GeometryView &view, ObjectKind kind, RunBox *boxes);

/// The hull of the vertices: a zero rectangle when there are none or one is not finite or
/// beyond 1e37 (`finite` is then false).
Rect2D vertexBounds(const QPointF *vertices, quint32 count, bool *finite = nullptr);

/// The way past the public surface of geometry objects.
struct ObjectAccess {
    /// Live objects on vertices that outlive them. The caller's.
    static std::unique_ptr<FMLine> makeLine(const GeometryView &view);
    static std::unique_ptr<FMPolygon> makePolygon(const GeometryView &view, Simplicity simplicity);
    /// Makes a line or polygon that was such a live object one of other vertices.
    static void seat(FMObject &object, const GeometryView &view, Simplicity simplicity);
    static std::unique_ptr<FMPolygon> makePolygon(std::unique_ptr<ObjectBacking> backing,
                                                  Simplicity simplicity);

    static ObjectKind kind(const FMObject &object) { return object.mKind; }
    /// The raw vertices of a line or polygon, run boxes as far as they were made. Empty for a
    /// point.
    static const GeometryView &view(const FMObject &object) { return object.mView; }
    /// What is known so far; nothing is computed.
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
