// SPDX-License-Identifier: MIT
#include "shape/sides.h"
#include <cmath>
#include <limits>
#include "base/expansion.h"
#include "base/orientation.h"
#include "shape/locate.h"

namespace fennimark {
namespace {

// An upper bound of the relative error of every determinant below, relative to its terms.
constexpr double kRounding = 1.0e-15;

/// A position on the segment from p to q, as a fraction of its length: where the edge from a to b
/// crosses the line or, when b is null, vertex a, which is on the line. [low, high] contains the
/// fraction.
struct Cut {
    const QPointF *a;
    const QPointF *b;
    double low;
    double high;
};

/// A change of state at a cut.
struct Event {
    Cut cut;
    bool first;  ///< true: of the first shape, false: of the second
    bool left;   ///< the parity left of the line changes
    bool right;  ///< the parity right of the line changes
    int overlap; ///< an edge along the segment begins (1) or ends (-1) here
};

/// The state of one shape along the segment: parities and the number of edges along it.
struct State {
    bool left = false;
    bool right = false;
    int overlap = 0;

    void pass(const Event &event)
    {
        left ^= event.left;
        right ^= event.right;
        overlap += event.overlap;
    }
    Sides sides() const { return {left, right, overlap > 0}; }
};

class Cutter {
public:
    Cutter(const QPointF &from, const QPointF &to)
        : p(from), q(to), mAlongX(std::abs(to.x() - from.x()) >= std::abs(to.y() - from.y()))
    {
    }

    void collect(const Shape &shape, bool first, State &atStart)
    {
        const Rect2D &bounds = shape.bounds();
        const double reach =
            std::max({std::abs(bounds.xMin), std::abs(bounds.xMax), std::abs(bounds.yMin),
                      std::abs(bounds.yMax), std::abs(p.x()), std::abs(p.y()), std::abs(q.x()),
                      std::abs(q.y())});
        const double dx = q.x() - p.x();
        const double dy = q.y() - p.y();
        const double slack = 16.0 * kRounding * reach * (std::abs(dx) + std::abs(dy));
        const auto enter = [&](const RunBox &box) {
            const Range across = range(box, p, -dy, dx);
            return across.low <= slack && across.high >= -slack
                   && range(box, q, dx, dy).low <= slack;
        };
        shape.visitNear(enter, [&](quint32, const QPointF &a, const QPointF &b) {
            addEdge(a, b, shape.isPolygon(), first, atStart);
            return true;
        });
    }

    std::vector<Event> &sorted()
    {
        std::sort(mEvents.begin(), mEvents.end(),
                  [this](const Event &a, const Event &b) { return compare(a.cut, b.cut) < 0; });
        return mEvents;
    }

    int compare(const Cut &a, const Cut &b) const
    {
        if (a.high < b.low)
            return -1;
        if (b.high < a.low)
            return 1;
        const Ratio first = exact(a);
        const Ratio second = exact(b);
        Expansion difference = first.numerator * second.denominator;
        difference -= second.numerator * first.denominator;
        return difference.sign() * first.denominator.sign() * second.denominator.sign();
    }

private:
    struct Range {
        double low;
        double high;
    };
    struct Ratio {
        Expansion numerator;
        Expansion denominator;
    };

    /// The range over a box of the linear form with gradient (gx, gy) that is 0 at `origin`.
    static Range range(const RunBox &box, const QPointF &origin, double gx, double gy)
    {
        const double x0 = gx * (double(box.xMin) - origin.x());
        const double x1 = gx * (double(box.xMax) - origin.x());
        const double y0 = gy * (double(box.yMin) - origin.y());
        const double y1 = gy * (double(box.yMax) - origin.y());
        return {std::min(x0, x1) + std::min(y0, y1), std::max(x0, x1) + std::max(y0, y1)};
    }

    double along(const QPointF &v) const { return mAlongX ? v.x() : v.y(); }
    /// The position of a vertex on the line: -1 at p or before it, 0 between p and q, 1 at q or
    /// after it.
    int zone(const QPointF &v) const
    {
        const bool rising = along(p) < along(q);
        if (rising ? along(v) <= along(p) : along(v) >= along(p))
            return -1;
        return (rising ? along(v) >= along(q) : along(v) <= along(q)) ? 1 : 0;
    }

    void addEdge(const QPointF &a, const QPointF &b, bool area, bool first, State &atStart)
    {
        const int sideA = orientation(p, q, a);
        const int sideB = orientation(p, q, b);
        if (sideA == 0 && sideB == 0) {
            addOverlap(a, b, first, atStart);
            return;
        }
        if (!area || sideA * sideB > 0)
            return;
        Event event{{&a, nullptr, 0.0, 0.0},
                    first,
                    (sideA > 0) != (sideB > 0),
                    (sideA < 0) != (sideB < 0),
                    0};
        int where = 0;
        if (sideA == 0 || sideB == 0) {
            event.cut.a = sideA == 0 ? &a : &b;
            where = zone(*event.cut.a);
        } else {
            event.cut.b = &b;
            where = orientation(a, b, p) * sideB <= 0 ? -1
                                                      : (orientation(a, b, q) * sideB >= 0 ? 1 : 0);
        }
        add(event, where, atStart);
    }

    void addOverlap(const QPointF &a, const QPointF &b, bool first, State &atStart)
    {
        if (samePlace(a, b))
            return;
        const bool forward = (along(a) < along(b)) == (along(p) < along(q));
        add({{forward ? &a : &b, nullptr, 0.0, 0.0}, first, false, false, 1}, zone(forward ? a : b),
            atStart);
        add({{forward ? &b : &a, nullptr, 0.0, 0.0}, first, false, false, -1},
            zone(forward ? b : a), atStart);
    }

    void add(Event event, int where, State &atStart)
    {
        if (where < 0)
            atStart.pass(event);
        if (where != 0)
            return;
        bracket(event.cut);
        mEvents.push_back(event);
    }

    /// Computes an interval that contains the fraction, from rounded determinants and bounds of
    /// their errors.
    void bracket(Cut &cut) const
    {
        const QPointF &a = *cut.a;
        double numerator = along(a) - along(p);
        double denominator = along(q) - along(p);
        double numeratorError = kRounding * std::abs(numerator);
        double denominatorError = kRounding * std::abs(denominator);
        if (cut.b) {
            const double ex = cut.b->x() - a.x();
            const double ey = cut.b->y() - a.y();
            const double n0 = (a.x() - p.x()) * ey;
            const double n1 = (a.y() - p.y()) * ex;
            const double d0 = (q.x() - p.x()) * ey;
            const double d1 = (q.y() - p.y()) * ex;
            numerator = n0 - n1;
            denominator = d0 - d1;
            numeratorError = kRounding * (std::abs(n0) + std::abs(n1));
            denominatorError = kRounding * (std::abs(d0) + std::abs(d1));
        }
        const double size = std::abs(denominator) - denominatorError;
        cut.low = -std::numeric_limits<double>::infinity();
        cut.high = std::numeric_limits<double>::infinity();
        if (!(size > 0.0))
            return;
        const double ratio = numerator / denominator;
        const double error = (numeratorError + std::abs(ratio) * denominatorError) / size
                             + kRounding * std::abs(ratio);
        if (!std::isfinite(ratio) || !std::isfinite(error))
            return;
        cut.low = ratio - error;
        cut.high = ratio + error;
    }

    Ratio exact(const Cut &cut) const
    {
        const auto minus = [](double x, double y) { return Expansion::difference(x, y); };
        const QPointF &a = *cut.a;
        if (!cut.b)
            return {minus(along(a), along(p)), minus(along(q), along(p))};
        const Expansion ex = minus(cut.b->x(), a.x());
        const Expansion ey = minus(cut.b->y(), a.y());
        Ratio ratio{minus(a.x(), p.x()) * ey, minus(q.x(), p.x()) * ey};
        ratio.numerator -= minus(a.y(), p.y()) * ex;
        ratio.denominator -= minus(q.y(), p.y()) * ex;
        return ratio;
    }

    const QPointF p;
    const QPointF q;
    const bool mAlongX;
    std::vector<Event> mEvents;
};

Sides sidesOf(const Shape &shape, const QPointF &place)
{
    const Place where = locate(shape, place);
    return {where == Place::Inside, where == Place::Inside, where == Place::Boundary};
}

bool isOnePlace(const Shape &path, quint32 part)
{
    const quint32 first = path.partBegin(part);
    quint32 i = first;
    while (i < path.partEnd(part) && samePlace(path.vertex(i), path.vertex(first)))
        ++i;
    return i == path.partEnd(part);
}

} // namespace

void SideWalk::cut(quint32 index, const QPointF &from, const QPointF &to)
{
    mPieces.clear();
    if (samePlace(from, to)) {
        if (isOnePlace(mPath, mPath.partOf(index)))
            mPieces.push_back({sidesOf(mFirst, from), sidesOf(mSecond, from)});
        return;
    }
    Cutter cutter(from, to);
    State first;
    State second;
    cutter.collect(mFirst, true, first);
    cutter.collect(mSecond, false, second);
    const std::vector<Event> &events = cutter.sorted();
    mPieces.push_back({first.sides(), second.sides()});
    for (std::size_t i = 0; i < events.size(); ++i) {
        (events[i].first ? first : second).pass(events[i]);
        const bool last =
            i + 1 == events.size() || cutter.compare(events[i].cut, events[i + 1].cut) != 0;
        if (last)
            mPieces.push_back({first.sides(), second.sides()});
    }
}

} // namespace fennimark
