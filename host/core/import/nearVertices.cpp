// SPDX-License-Identifier: MIT
// Vertices are assigned to square cells as wide as the distance and sorted by cell. All vertices
// near a vertex are in its own cell or the eight cells around it, which are three runs of the
// sorted list.
#include "core/import/nearVertices.h"
#include <algorithm>
#include <cmath>
#include <tuple>
#include <vector>

namespace meridor {
namespace {

struct Vertex {
    qint64 cellX;
    qint64 cellY;
    double x;
    double y;
    auto key() const { return std::tie(cellX, cellY, x, y); }
};

std::vector<Vertex> distinctVertices(const QVector<ShapeParts> &shapes)
{
    std::vector<Vertex> vertices;
    for (const ShapeParts &shape : shapes)
        for (const auto &part : shape)
            for (const QPointF &point : part)
                vertices.push_back({0, 0, point.x(), point.y()});
    const auto same = [](const Vertex &a, const Vertex &b) { return a.x == b.x && a.y == b.y; };
    std::sort(vertices.begin(), vertices.end(),
              [](const Vertex &a, const Vertex &b) { return a.key() < b.key(); });
    vertices.erase(std::unique(vertices.begin(), vertices.end(), same), vertices.end());
    return vertices;
}

bool hasNear(const std::vector<Vertex> &vertices, const Vertex &vertex, double distance)
{
    for (qint64 cellX = vertex.cellX - 1; cellX <= vertex.cellX + 1; ++cellX) {
        const auto from = std::lower_bound(
            vertices.begin(), vertices.end(), std::make_tuple(cellX, vertex.cellY - 1),
            [](const Vertex &v, const std::tuple<qint64, qint64> &cell) {
                return std::make_tuple(v.cellX, v.cellY) < cell;
            });
        for (auto it = from;
             it != vertices.end() && it->cellX == cellX && it->cellY <= vertex.cellY + 1; ++it) {
            const double gap = std::hypot(it->x - vertex.x, it->y - vertex.y);
            if (gap > 0 && gap <= distance)
                return true;
        }
    }
    return false;
}

} // namespace

NearVertices countNearVertices(const QVector<ShapeParts> &shapes, double tolerance)
{
    std::vector<Vertex> vertices = distinctVertices(shapes);
    if (vertices.empty())
        return {};
    const auto [low, high] =
        std::minmax_element(vertices.begin(), vertices.end(),
                            [](const Vertex &a, const Vertex &b) { return a.y < b.y; });
    const double left = vertices.front().x;
    const double bottom = low->y;
    NearVertices result;
    result.distance =
        std::max(tolerance, 1e-8 * std::max(vertices.back().x - left, high->y - bottom));
    if (result.distance <= 0)
        return result;
    for (Vertex &vertex : vertices) {
        vertex.cellX = static_cast<qint64>(std::floor((vertex.x - left) / result.distance));
        vertex.cellY = static_cast<qint64>(std::floor((vertex.y - bottom) / result.distance));
    }
    std::sort(vertices.begin(), vertices.end(),
              [](const Vertex &a, const Vertex &b) { return a.key() < b.key(); });
    for (const Vertex &vertex : vertices)
        result.count += hasNear(vertices, vertex, result.distance);
    return result;
}

} // namespace meridor
