// SPDX-License-Identifier: MIT
/// Polygons and lines as sequences of arcs, so that a border between two objects, or of one object
/// at two times, stands once and stays common when it is simplified.
#pragma once
#include <QPoint>
#include <QVector>
#include <cstdint>
#include <unordered_map>
#include <vector>
#include "core/export.h"

namespace meridor {

/// Built in two steps: add every path, then cut. Vertices are places of an integer grid; equal
/// places are one vertex. A vertex of one path inside an edge of another is no common vertex.
class MERIDOR_EXPORT SharedArcs {
public:
    /// A ring, with or without its first vertex repeated at the end. @return its number
    int addRing(const QVector<QPoint> &ring) { return add(ring, true); }
    int addLine(const QVector<QPoint> &line) { return add(line, false); }

    /// Cuts all paths where their neighbourhoods part and simplifies each arc by itself.
    /// @param area  bends of less than this area, in squares of the grid, go (M. Visvalingam and
    ///              J. D. Whyatt 1993, Cartographic Journal 30, 46-51); 0 keeps every vertex. A
    ///              ring keeps at least three vertices.
    void cut(double area);

    using Arc = std::vector<QPoint>;
    const std::vector<Arc> &arcs() const { return mArcs; }
    /// The arcs of a path in order; ~n is arc n backwards. Empty for a path that is one place, and
    /// for a ring of two.
    const std::vector<int> &arcsOf(int path) const
    {
        return mPaths[static_cast<size_t>(path)].arcs;
    }

private:
    struct Path {
        std::vector<int>
            vertices; ///< without neighbours that are equal; a ring's first is not repeated
        bool closed;
        std::vector<int> arcs;
    };
    struct Vertex {
        QPoint place;
        int before = -1; ///< the neighbours of every pass so far, the smaller first; -1: none yet
        int after = -1;
        bool junction = false;
    };

    int add(const QVector<QPoint> &places, bool closed);
    int vertexAt(const QPoint &place);
    void findJunctions(const Path &path);
    void cutPath(Path &path);
    int arcOf(const std::vector<int> &vertices);

    std::vector<Vertex> mVertices;
    std::unordered_map<std::uint64_t, int> mByPlace;
    std::vector<Path> mPaths;
    std::vector<Arc> mArcs;
    std::unordered_map<std::uint64_t, int> mByStart; ///< of an arc's first two vertices, either way
};

} // namespace meridor
