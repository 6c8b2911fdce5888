// SPDX-License-Identifier: MIT
#include "core/render/mapGeometry.h"
#include <QTransform>
#include <algorithm>
#include <cmath>
#include <limits>

namespace meridor {
namespace {

/// Cuts a ring at one side of a rectangle.
template <class Inside, class Cross>
QVector<QPointF> cut(const QVector<QPointF> &ring, Inside inside, Cross cross)
{
    QVector<QPointF> kept;
    for (int i = 0; i < ring.size(); ++i) {
        const QPointF &from = ring[i > 0 ? i - 1 : ring.size() - 1];
        const QPointF &to = ring[i];
        if (inside(from) != inside(to))
            kept.append(cross(from, to));
        if (inside(to))
            kept.append(to);
    }
    return kept;
}

QPointF atX(const QPointF &a, const QPointF &b, double x)
{
    return {x, a.y() + (b.y() - a.y()) * ((x - a.x()) / (b.x() - a.x()))};
}

QPointF atY(const QPointF &a, const QPointF &b, double y)
{
    return {a.x() + (b.x() - a.x()) * ((y - a.y()) / (b.y() - a.y())), y};
}

/// The part of a segment inside the rectangle, as shares of its length; false if there is none.
bool sharesInside(const QPointF &a, const QPointF &b, const QRectF &frame, double &from, double &to)
{
    from = 0;
    to = 1;
    const double deltas[] = {a.x() - b.x(), b.x() - a.x(), a.y() - b.y(), b.y() - a.y()};
    const double rooms[] = {a.x() - frame.left(), frame.right() - a.x(), a.y() - frame.top(),
                            frame.bottom() - a.y()};
    for (int i = 0; i < 4; ++i) {
        if (deltas[i] == 0) {
            if (rooms[i] < 0)
                return false;
        } else if (deltas[i] < 0) {
            from = std::max(from, rooms[i] / deltas[i]);
        } else {
            to = std::min(to, rooms[i] / deltas[i]);
        }
    }
    return from <= to;
}

/// The x at which the edges of the rings cross a horizontal line, ascending.
QVector<double> crossings(const QVector<QVector<QPointF>> &rings, double y)
{
    QVector<double> found;
    for (const QVector<QPointF> &ring : rings) {
        for (int i = 0; i < ring.size(); ++i) {
            const QPointF &a = ring[i > 0 ? i - 1 : ring.size() - 1];
            const QPointF &b = ring[i];
            if ((a.y() <= y) != (b.y() <= y))
                found.append(atY(a, b, y).x());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace

QVector<QPointF> mapped(const QVector<QPointF> &points, const QTransform &transform, double step)
{
    QVector<QPointF> pixels;
    pixels.reserve(points.size());
    for (int i = 0; i < points.size(); ++i) {
        const QPointF at = transform.map(points[i]);
        if (i > 0 && i + 1 < points.size() && std::abs(at.x() - pixels.last().x()) < step
            && std::abs(at.y() - pixels.last().y()) < step)
            continue;
        pixels.append(at);
    }
    return pixels;
}

QVector<QPointF> clippedRing(const QVector<QPointF> &ring, const QRectF &frame)
{
    const double left = frame.left();
    const double right = frame.right();
    const double low = frame.top();
    const double high = frame.bottom();
    QVector<QPointF> kept = cut(
        ring, [=](const QPointF &p) { return p.x() >= left; },
        [=](const QPointF &a, const QPointF &b) { return atX(a, b, left); });
    kept = cut(
        kept, [=](const QPointF &p) { return p.x() <= right; },
        [=](const QPointF &a, const QPointF &b) { return atX(a, b, right); });
    kept = cut(
        kept, [=](const QPointF &p) { return p.y() >= low; },
        [=](const QPointF &a, const QPointF &b) { return atY(a, b, low); });
    return cut(
        kept, [=](const QPointF &p) { return p.y() <= high; },
        [=](const QPointF &a, const QPointF &b) { return atY(a, b, high); });
}

QVector<QVector<QPointF>> clippedLine(const QVector<QPointF> &line, const QRectF &frame)
{
    QVector<QVector<QPointF>> pieces;
    bool open = false; // whether the last piece continues
    for (int i = 1; i < line.size(); ++i) {
        const QPointF &a = line[i - 1];
        const QPointF &b = line[i];
        double from = 0;
        double to = 1;
        if (!sharesInside(a, b, frame, from, to)) {
            open = false;
            continue;
        }
        if (!open || from > 0)
            pieces.append(QVector<QPointF>{a + (b - a) * from});
        pieces.last().append(a + (b - a) * to);
        open = to == 1;
    }
    return pieces;
}

QVector<QLineF> hatchLines(const QVector<QVector<QPointF>> &rings, double step)
{
    // Turned by 45 degrees the hatching is horizontal.
    QTransform turn;
    turn.rotate(45);
    QVector<QVector<QPointF>> turned;
    for (const QVector<QPointF> &ring : rings)
        turned.append(turn.map(QPolygonF(ring)));
    const QRectF box = boundsOf(turned);
    const QTransform back = turn.inverted();
    QVector<QLineF> lines;
    if (!(step > 0) || !(box.height() / step < 1e5))
        return lines;
    for (double y = std::ceil(box.top() / step) * step; y <= box.bottom(); y += step) {
        const QVector<double> xs = crossings(turned, y);
        for (int i = 0; i + 1 < xs.size(); i += 2)
            lines.append(back.map(QLineF(xs[i], y, xs[i + 1], y)));
    }
    return lines;
}

QPointF labelPlace(const QVector<QVector<QPointF>> &rings, double &width)
{
    const QRectF box = boundsOf(rings);
    QPointF best = box.center();
    double most = -1;
    // Sections near the middle are preferred: the width of the others counts less.
    const QPair<double, double> sections[] = {
        {0.5, 1}, {0.42, 0.95}, {0.58, 0.95}, {0.33, 0.85}, {0.67, 0.85}, {0.22, 0.7}, {0.78, 0.7}};
    width = 0;
    for (const auto &section : sections) {
        const double y = box.top() + section.first * box.height();
        const QVector<double> xs = crossings(rings, y);
        for (int i = 0; i + 1 < xs.size(); i += 2) {
            if ((xs[i + 1] - xs[i]) * section.second <= most)
                continue;
            most = (xs[i + 1] - xs[i]) * section.second;
            width = xs[i + 1] - xs[i];
            best = QPointF((xs[i] + xs[i + 1]) / 2, y);
        }
    }
    return best;
}

QRectF boundsOf(const QVector<QVector<QPointF>> &parts)
{
    double left = std::numeric_limits<double>::max();
    double low = left;
    double right = -left;
    double high = right;
    for (const QVector<QPointF> &part : parts) {
        for (const QPointF &point : part) {
            left = std::min(left, point.x());
            right = std::max(right, point.x());
            low = std::min(low, point.y());
            high = std::max(high, point.y());
        }
    }
    return left <= right ? QRectF(QPointF(left, low), QPointF(right, high)) : QRectF();
}

} // namespace meridor
