// SPDX-License-Identifier: MIT
/// Polygons and lines as sequences of arcs: a border between two objects, or of one object at two
/// times, is stored once, and remains common when it is simplified.
#pragma once
#include <QPoint>
#include <QVector>
#include <cstdint>
#include <unordered_map>
#include <vector>
#include "core/export.h"

namespace meridor {

/// Used in two steps: all paths are added, then cut() is called once. Vertices have integer
/// coordinates; equal coordinates are the same vertex. A vertex of one path inside an edge of
/// another path is not a common vertex.
class MERIDOR_EXPORT SharedArcs {
public:
    /// A ring, with or without its first vertex repeated at the end. @return its number
    int addRing(const QVector<QPoint> &ring) { return add(ring, true); }
    int addLine(const QVector<QPoint> &line) { return add(line, false); }

    /// Cuts all paths at junctions, which are vertices with different neighbours in different
    /// paths, and simplifies each arc separately (M. Visvalingam and J. D. Whyatt 1993,
    /// Cartographic Journal 30, 46-51).
    /// @param area  bends with a smaller area, in squared units of the coordinates, are removed; 0
    ///              keeps all vertices. A ring keeps at least three vertices.
    void cut(double area);

    using Arc = std::vector<QPoint>;
    const std::vector<Arc> &arcs() const { return mArcs; }
    /// The arcs of a path in order; ~n is arc n reversed. Empty for a path of one distinct vertex,
    /// and for a ring of two.
    const std::vector<int> &arcsOf(int path) const
    {
        return mPaths[static_cast<size_t>(path)].arcs;
    }

private:
    struct Path {
        /// Without equal consecutive vertices; the first vertex of a ring is not repeated.
        std::vector<int> vertices;
        bool closed;
        std::vector<int> arcs;
    };
    struct Vertex {
        QPoint place;
        /// The two neighbours in all paths so far, the smaller first; -1: none yet.
        int before = -1;
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
    /// Arcs by their first two vertices, in either direction.
    std::unordered_map<std::uint64_t, int> mByStart;
};

} // namespace meridor
