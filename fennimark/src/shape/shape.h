// SPDX-License-Identifier: MIT
/// The form in which algorithms read an object, a rectangle, a segment or a point: vertices in
/// parts under a tree of run boxes. The tree is implicit (see RunBox), so a traversal consists of
/// index arithmetic and box tests. Box i of a level is the hull of boxes 8 i to 8 i + 7 of the
/// level below:
///
///     level 1                  box 0                    ...
///     level 0   run 0        run 1       ...   run 7    ...
///     segments  0 to 7      8 to 15         56 to 63    ...
#pragma once
#include <QVarLengthArray>
#include <vector>
#include "base/floatRounding.h"
#include "shape/geometryView.h"

namespace fennimark {

constexpr quint32 kRunShift = 3; // a run has eight segments, a box has eight boxes below it
constexpr quint32 kRunLength = 1U << kRunShift;

/// The rings of a polygon that are holes, by their nesting depth, and the shell around each.
struct Nesting {
    std::vector<quint8> isHole;
    std::vector<quint32> shell; ///< by ring: the shell around a hole; a shell's own number
};

/// The memory of an object beyond its view: vertices that it owns, and data that are computed on
/// first use. Owned vertices have at least one part size.
struct ObjectBacking {
    std::vector<QPointF> vertices;
    std::vector<quint32> partSizes;
    std::vector<quint32> partEnds; ///< for objects with several parts
    std::vector<RunBox> runBoxes;  ///< for views without run boxes
    Nesting nesting;               ///< for polygons with several rings
};

/// The vertices exactly as given, also when the object is an empty set because one of them is not
/// finite.
GeometryView givenVertices(const FMObject &object);

/// Owns no vertices. Valid while the object from which it is made exists and is not changed.
class Shape {
public:
    /// Writes the part ends and run boxes to the object's backing when they are not there yet, so
    /// the first shapes of one object must not be made by two threads at the same time.
    explicit Shape(const FMObject &object);
    /// Computes the part ends, and run boxes when the view has none, for its own use.
    Shape(const GeometryView &view, ObjectKind kind);
    explicit Shape(const Rect2D &rect);
    explicit Shape(const QPointF &point);
    Shape(const QPointF &from, const QPointF &to);
    Q_DISABLE_COPY(Shape)

    bool isEmpty() const { return mCount == 0; }
    bool isPolygon() const { return mKind == ObjectKind::Polygon; }
    ObjectKind kind() const { return mKind; }
    const Rect2D &bounds() const { return mBounds; }
    quint32 vertexCount() const { return mCount; }
    const QPointF &vertex(quint32 index) const { return mVertices[index]; }

    quint32 partCount() const { return mPartCount; }
    quint32 partBegin(quint32 part) const { return part == 0 ? 0 : partEnd(part - 1); }
    quint32 partEnd(quint32 part) const { return mPartCount == 1 ? mCount : mPartEnds[part]; }
    quint32 partOf(quint32 vertex) const;

    /// The end of segment `index`, which begins at vertex `index`.
    const QPointF &segmentEnd(quint32 index) const
    {
        return segmentEnd(index, mPartCount == 1 ? 0 : partOf(index));
    }

    /// Calls visit(index, from, to) for the segments [first, end). Stops and returns false when
    /// `visit` returns false.
    template <class Visit> bool visitSegments(quint32 first, quint32 end, Visit visit) const
    {
        quint32 part = mPartCount == 1 ? 0 : partOf(first);
        for (quint32 i = first; i < end; ++i) {
            while (i >= partEnd(part))
                ++part;
            if (!visit(i, mVertices[i], segmentEnd(i, part)))
                return false;
        }
        return true;
    }

    // The tree. Level 0 are the runs. The root is the single box of the highest level; for objects
    // without run boxes it is made from the bounds.
    struct Node {
        quint32 level;
        quint32 index;
    };
    Node root() const { return {mLevels, 0}; }
    RunBox box(Node node) const
    {
        return node.level == mLevels ? mRootBox : mRunBoxes[mLevelStarts[node.level] + node.index];
    }
    quint32 firstSegment(Node node) const { return node.index << (kRunShift * (node.level + 1)); }
    quint32 endSegment(Node node) const
    {
        const quint64 end = (quint64(node.index) + 1) << (kRunShift * (node.level + 1));
        return end < mCount ? quint32(end) : mCount;
    }
    quint32 firstChild(Node node) const { return node.index << kRunShift; }
    quint32 endChild(Node node) const
    {
        return std::min((node.index + 1) << kRunShift, levelSize(node.level - 1));
    }
    const RunBox *children(Node node) const
    {
        return mRunBoxes + mLevelStarts[node.level - 1] + firstChild(node);
    }

    /// Descends from the root into the boxes for which enter(box) is true, and calls visit(first,
    /// end) for the segments of each run reached. Stops and returns false when `visit` returns
    /// false.
    template <class Enter, class Visit> bool visitRuns(Enter enter, Visit visit) const
    {
        return mCount == 0 || !enter(mRootBox) || visitBelow(root(), enter, visit);
    }
    /// The same for each segment of the runs reached: visit(index, from, to).
    template <class Enter, class Visit> bool visitNear(Enter enter, Visit visit) const
    {
        return visitRuns(
            enter, [&](quint32 first, quint32 end) { return visitSegments(first, end, visit); });
    }

private:
    void setTree(const RunBox *boxes);
    void setParts(const GeometryView &view, const quint32 *ends);
    void setLocal(quint32 count, ObjectKind kind);
    quint32 levelSize(quint32 level) const
    {
        return ((mCount - 1) >> (kRunShift * (level + 1))) + 1;
    }

    const QPointF &segmentEnd(quint32 index, quint32 part) const
    {
        if (index + 1 < partEnd(part))
            return mVertices[index + 1];
        return mVertices[isPolygon() ? partBegin(part) : index];
    }

    template <class Enter, class Visit> bool visitBelow(Node node, Enter &enter, Visit &visit) const
    {
        if (node.level == 0)
            return visit(firstSegment(node), endSegment(node));
        const RunBox *boxes = children(node);
        const quint32 first = firstChild(node);
        const quint32 count = endChild(node) - first;
        for (quint32 i = 0; i < count; ++i) {
            if (enter(boxes[i]) && !visitBelow({node.level - 1, first + i}, enter, visit))
                return false;
        }
        return true;
    }

    static constexpr quint32 kMaxLevels = 11; // 8^11 segments exceed 32 bits

    const QPointF *mVertices = nullptr;
    const quint32 *mPartEnds = nullptr;
    const RunBox *mRunBoxes = nullptr;
    quint32 mCount = 0;
    quint32 mPartCount = 1;
    quint32 mLevels = 0; ///< the root's level
    ObjectKind mKind = ObjectKind::Point;
    Rect2D mBounds;
    RunBox mRootBox{};
    quint32 mLevelStarts[kMaxLevels];
    QPointF mLocal[4];
    std::vector<quint32> mOwnEnds;
    std::vector<RunBox> mOwnBoxes;
};

/// Descends both trees into the pairs of boxes for which enter(boxA, boxB) is true, and calls
/// visit(firstA, endA, firstB, endB) for the segments of each pair of runs reached. Stops and
/// returns false when `visit` returns false.
template <class Enter, class Visit>
bool visitRunPairs(const Shape &a, Shape::Node nodeA, const Shape &b, Shape::Node nodeB,
                   Enter &enter, Visit &visit)
{
    if (nodeA.level == 0 && nodeB.level == 0)
        return visit(a.firstSegment(nodeA), a.endSegment(nodeA), b.firstSegment(nodeB),
                     b.endSegment(nodeB));
    const bool descendA = nodeA.level >= nodeB.level;
    const Shape &split = descendA ? a : b;
    const Shape::Node node = descendA ? nodeA : nodeB;
    const RunBox other = descendA ? b.box(nodeB) : a.box(nodeA);
    const RunBox *boxes = split.children(node);
    const quint32 first = split.firstChild(node);
    const quint32 count = split.endChild(node) - first;
    for (quint32 i = 0; i < count; ++i) {
        const Shape::Node child{node.level - 1, first + i};
        const bool goOn =
            descendA ? !enter(boxes[i], other) || visitRunPairs(a, child, b, nodeB, enter, visit)
                     : !enter(other, boxes[i]) || visitRunPairs(a, nodeA, b, child, enter, visit);
        if (!goOn)
            return false;
    }
    return true;
}

template <class Enter, class Visit>
bool visitRunPairs(const Shape &a, const Shape &b, Enter enter, Visit visit)
{
    return a.isEmpty() || b.isEmpty() || !enter(a.box(a.root()), b.box(b.root()))
           || visitRunPairs(a, a.root(), b, b.root(), enter, visit);
}

inline bool boxesMeet(const RunBox &a, const RunBox &b)
{
    return a.xMin <= b.xMax && b.xMin <= a.xMax && a.yMin <= b.yMax && b.yMin <= a.yMax;
}
inline bool boxesMeet(const Rect2D &a, const Rect2D &b)
{
    return a.xMin <= b.xMax && b.xMin <= a.xMax && a.yMin <= b.yMax && b.yMin <= a.yMax;
}
inline bool boxContains(const Rect2D &outer, const Rect2D &inner)
{
    return outer.xMin <= inner.xMin && inner.xMax <= outer.xMax && outer.yMin <= inner.yMin
           && inner.yMax <= outer.yMax;
}

/// The rectangle in floats, rounded outwards.
RunBox roundedOut(const Rect2D &rect);

} // namespace fennimark
