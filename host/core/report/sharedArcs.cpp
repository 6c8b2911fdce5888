// SPDX-License-Identifier: MIT
// A vertex is a junction when two passes through it have different neighbours, or a line ends
// there. Between junctions every pass runs along the same vertices, so an arc is known by its first
// two: each pass looks it up in the direction in which it goes, and only the first one makes it.
#include "core/report/sharedArcs.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <queue>

namespace meridor {
namespace {

constexpr double kForGood = std::numeric_limits<double>::infinity();

std::uint64_t keyOf(int first, int second)
{
    return std::uint64_t(static_cast<std::uint32_t>(first)) << 32
           | static_cast<std::uint32_t>(second);
}

size_t at(int i)
{
    return static_cast<size_t>(i);
}

double bendArea(const QPoint &a, const QPoint &b, const QPoint &c)
{
    const QPointF u = b - a;
    const QPointF v = c - a;
    return std::abs(u.x() * v.y() - u.y() * v.x()) / 2;
}

/// For each vertex of an arc the area of its bend at the moment of its removal. Vertices are
/// removed in the order of their areas, the smallest first; the ends are never removed.
std::vector<double> bendAreas(const SharedArcs::Arc &arc)
{
    const int last = static_cast<int>(arc.size()) - 1;
    std::vector<double> areas(arc.size(), kForGood);
    std::vector<int> before(arc.size());
    std::vector<int> after(arc.size());
    std::vector<bool> gone(arc.size());
    using Bend = std::pair<double, int>;
    std::priority_queue<Bend, std::vector<Bend>, std::greater<Bend>> bends;
    const auto measure = [&](int i, double atLeast) {
        areas[at(i)] =
            std::max(atLeast, bendArea(arc[at(before[at(i)])], arc[at(i)], arc[at(after[at(i)])]));
        bends.push({areas[at(i)], i});
    };
    for (int i = 0; i <= last; ++i) {
        before[at(i)] = i - 1;
        after[at(i)] = i + 1;
    }
    for (int i = 1; i < last; ++i)
        measure(i, 0);
    while (!bends.empty()) {
        const auto [area, i] = bends.top();
        bends.pop();
        if (gone[at(i)] || area != areas[at(i)])
            continue; // measured again since
        gone[at(i)] = true;
        const int left = before[at(i)];
        const int right = after[at(i)];
        after[at(left)] = right;
        before[at(right)] = left;
        // The area of a neighbour is at least that of the vertex removed before it, so that areas
        // ascend in the order of removal.
        if (left > 0)
            measure(left, area);
        if (right < last)
            measure(right, area);
    }
    return areas;
}

/// @param inner  vertices between the ends that stay in any case, the largest bends.
void simplify(SharedArcs::Arc &arc, double area, size_t inner)
{
    const std::vector<double> areas = bendAreas(arc);
    double limit = area;
    if (inner > 0 && arc.size() > 2) {
        std::vector<double> order(areas.begin() + 1, areas.end() - 1);
        inner = std::min(inner, order.size());
        std::nth_element(order.begin(), order.begin() + static_cast<std::ptrdiff_t>(inner) - 1,
                         order.end(), std::greater<double>());
        limit = std::min(limit, order[inner - 1]);
    }
    SharedArcs::Arc kept;
    for (size_t i = 0; i < arc.size(); ++i)
        if (areas[i] >= limit)
            kept.push_back(arc[i]);
    arc = std::move(kept);
}

} // namespace

int SharedArcs::vertexAt(const QPoint &place)
{
    const auto found =
        mByPlace.emplace(keyOf(place.x(), place.y()), static_cast<int>(mVertices.size()));
    if (found.second) {
        mVertices.push_back({});
        mVertices.back().place = place;
    }
    return found.first->second;
}

int SharedArcs::add(const QVector<QPoint> &places, bool closed)
{
    Path path;
    path.closed = closed;
    for (const QPoint &place : places)
        if (const int vertex = vertexAt(place);
            path.vertices.empty() || path.vertices.back() != vertex)
            path.vertices.push_back(vertex);
    while (closed && path.vertices.size() > 1 && path.vertices.front() == path.vertices.back())
        path.vertices.pop_back();
    if (path.vertices.size() < (closed ? 3u : 2u))
        path.vertices.clear();
    mPaths.push_back(std::move(path));
    return static_cast<int>(mPaths.size()) - 1;
}

void SharedArcs::findJunctions(const Path &path)
{
    const auto &vertices = path.vertices;
    const size_t n = vertices.size();
    for (size_t i = 0; i < n; ++i) {
        Vertex &vertex = mVertices[at(vertices[i])];
        if (!path.closed && (i == 0 || i + 1 == n)) {
            vertex.junction = true;
            continue;
        }
        const auto [low, high] = std::minmax(vertices[(i + n - 1) % n], vertices[(i + 1) % n]);
        if (vertex.before >= 0 && (vertex.before != low || vertex.after != high))
            vertex.junction = true;
        vertex.before = low;
        vertex.after = high;
    }
}

/// The arc that runs along the vertices; ~n when it was made in the other direction.
int SharedArcs::arcOf(const std::vector<int> &vertices)
{
    const auto found = mByStart.find(keyOf(vertices[0], vertices[1]));
    if (found != mByStart.end())
        return found->second;
    const int number = static_cast<int>(mArcs.size());
    Arc arc;
    for (const int vertex : vertices)
        arc.push_back(mVertices[at(vertex)].place);
    mArcs.push_back(std::move(arc));
    mByStart.emplace(keyOf(vertices[0], vertices[1]), number);
    mByStart.emplace(keyOf(vertices.back(), vertices[vertices.size() - 2]), ~number);
    return number;
}

void SharedArcs::cutPath(Path &path)
{
    std::vector<int> vertices = path.vertices;
    if (vertices.empty())
        return;
    if (path.closed) {
        // A ring begins at a junction. One without a junction begins at its vertex of the lowest
        // number, so that equal rings begin at the same vertex.
        auto start = std::find_if(vertices.begin(), vertices.end(),
                                  [this](int vertex) { return mVertices[at(vertex)].junction; });
        if (start == vertices.end())
            start = std::min_element(vertices.begin(), vertices.end());
        std::rotate(vertices.begin(), start, vertices.end());
        vertices.push_back(vertices.front());
    }
    std::vector<int> piece{vertices.front()};
    for (size_t i = 1; i < vertices.size(); ++i) {
        piece.push_back(vertices[i]);
        if (i + 1 < vertices.size() && !mVertices[at(vertices[i])].junction)
            continue;
        path.arcs.push_back(arcOf(piece));
        piece = {vertices[i]};
    }
}

void SharedArcs::cut(double area)
{
    for (const Path &path : mPaths)
        findJunctions(path);
    for (Path &path : mPaths)
        cutPath(path);
    std::vector<size_t> inner(mArcs.size());
    for (const Path &path : mPaths)
        if (path.closed && path.arcs.size() < 3)
            for (const int arc : path.arcs) {
                size_t &least = inner[at(arc < 0 ? ~arc : arc)];
                least = std::max<size_t>(least, path.arcs.size() == 1 ? 2 : 1);
            }
    for (size_t i = 0; area > 0 && i < mArcs.size(); ++i)
        simplify(mArcs[i], area, inner[i]);
}

} // namespace meridor
