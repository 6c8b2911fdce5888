// SPDX-License-Identifier: MIT
// The pair test behind contiguity and shared borders: the segments of two boundaries that come near
// each other inside the common window of their boxes, found by a dual descent through the run
// boxes.
//
// A vertex stored on a slanted edge is never on it to the last bit, so places within the slack are
// one place. Two segments run together where the projection of one on the other overlaps it and
// both ends of that overlap are within the slack: edges that merely diverge at a small angle from a
// common vertex share a place and no piece. Overlaps that continue one another along the first
// boundary, over vertices of either, are one piece.
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include "shape/shape.h"

namespace fennimark {
namespace {

constexpr double kSlackUlps = 8.0;
constexpr double kPieceSlacks = 4.0; // pieces no longer than so many slacks are contacts at a place

/// Part of a segment of the first boundary, as distances from its beginning.
struct Overlap {
    quint32 segment;
    double low;
    double high;
    QPointF from;
    QPointF to;
};
using Overlaps = QVarLengthArray<Overlap, 16>;

double ulp(double value)
{
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    bits &= quint64(0x7ff) << 52;
    std::memcpy(&value, &bits, sizeof bits);
    return value * std::numeric_limits<double>::epsilon();
}

double slackOf(const Rect2D &a, const Rect2D &b, double tolerance)
{
    const auto reach = [](const Rect2D &r) {
        return std::max({std::abs(r.xMin), std::abs(r.xMax), std::abs(r.yMin), std::abs(r.yMax)});
    };
    return std::max(kSlackUlps * ulp(std::max(reach(a), reach(b))), tolerance);
}

/// One segment of the first boundary, with what its tests against many of the second need.
class Rail {
public:
    Rail(const QPointF &from, const QPointF &to, double slack)
        : mFrom(from),
          mTo(to),
          mSlack(slack),
          mLength(lengthOf(to.x() - from.x(), to.y() - from.y()))
    {
        if (mLength > 0.0)
            mDirection = QPointF((to.x() - from.x()) / mLength, (to.y() - from.y()) / mLength);
    }

    /// How the segment c to d meets it; the overlap is told when it is a piece of any length.
    Contact meet(const QPointF &c, const QPointF &d, Overlap &overlap) const
    {
        const QPointF first = local(c);
        const QPointF second = local(d);
        if (std::min(first.y(), second.y()) > mSlack || std::max(first.y(), second.y()) < -mSlack)
            return Contact::None;
        const double low = std::max(0.0, std::min(first.x(), second.x()));
        const double high = std::min(mLength, std::max(first.x(), second.x()));
        if (high > low && std::abs(across(first, second, low)) <= mSlack
            && std::abs(across(first, second, high)) <= mSlack) {
            overlap.low = low;
            overlap.high = high;
            overlap.from = at(low);
            overlap.to = at(high);
            return Contact::Piece;
        }
        return near(first, second) ? Contact::Place : Contact::None;
    }

private:
    static double lengthOf(double dx, double dy) { return std::sqrt(dx * dx + dy * dy); }

    /// Distances along the rail and, to its left, across it.
    QPointF local(const QPointF &p) const
    {
        const double dx = p.x() - mFrom.x();
        const double dy = p.y() - mFrom.y();
        return {mDirection.x() * dx + mDirection.y() * dy,
                mDirection.x() * dy - mDirection.y() * dx};
    }
    QPointF at(double distance) const
    {
        if (distance == 0.0)
            return mFrom;
        if (distance == mLength)
            return mTo;
        return {mFrom.x() + mDirection.x() * distance, mFrom.y() + mDirection.y() * distance};
    }
    static double across(const QPointF &c, const QPointF &d, double along)
    {
        return c.y() + (d.y() - c.y()) * ((along - c.x()) / (d.x() - c.x()));
    }

    bool near(const QPointF &c, const QPointF &d) const
    {
        if (c.y() * d.y() <= 0.0 && c.y() != d.y()) {
            const double crossing = c.x() + (d.x() - c.x()) * (c.y() / (c.y() - d.y()));
            if (crossing >= 0.0 && crossing <= mLength)
                return true;
        }
        return nearRail(c) || nearRail(d) || nearSegment({0.0, 0.0}, c, d)
               || nearSegment({mLength, 0.0}, c, d);
    }
    bool nearRail(const QPointF &p) const { return nearSegment(p, {0.0, 0.0}, {mLength, 0.0}); }
    bool nearSegment(const QPointF &p, const QPointF &c, const QPointF &d) const
    {
        const double ex = d.x() - c.x();
        const double ey = d.y() - c.y();
        const double length = ex * ex + ey * ey;
        const double dot = (p.x() - c.x()) * ex + (p.y() - c.y()) * ey;
        const double t = length > 0.0 ? std::min(1.0, std::max(0.0, dot / length)) : 0.0;
        const double dx = c.x() + t * ex - p.x();
        const double dy = c.y() + t * ey - p.y();
        return dx * dx + dy * dy <= mSlack * mSlack;
    }

    const QPointF mFrom;
    const QPointF mTo;
    const double mSlack;
    const double mLength;
    QPointF mDirection{1.0, 0.0}; // any for a segment without length
};

class BorderWalk {
public:
    BorderWalk(const Shape &a, const Shape &b, double tolerance)
        : mA(a), mB(b), mSlack(slackOf(a.bounds(), b.bounds(), tolerance))
    {
        const Rect2D &p = a.bounds();
        const Rect2D &q = b.bounds();
        mWindow = {std::max(p.xMin, q.xMin) - mSlack, std::min(p.xMax, q.xMax) + mSlack,
                   std::max(p.yMin, q.yMin) - mSlack, std::min(p.yMax, q.yMax) + mSlack};
    }

    bool isPiece(double length) const { return length > kPieceSlacks * mSlack; }
    double slack() const { return mSlack; }

    /// visit(contact, overlap) for each two segments in contact, until it returns false.
    template <class Visit> void visitContacts(Visit visit) const
    {
        if (mA.isEmpty() || mB.isEmpty() || mWindow.xMin > mWindow.xMax
            || mWindow.yMin > mWindow.yMax)
            return;
        const auto enter = [this](const RunBox &p, const RunBox &q) {
            return std::max({double(p.xMin), double(q.xMin), mWindow.xMin}) - mSlack
                       <= std::min({double(p.xMax), double(q.xMax), mWindow.xMax})
                   && std::max({double(p.yMin), double(q.yMin), mWindow.yMin}) - mSlack
                          <= std::min({double(p.yMax), double(q.yMax), mWindow.yMax});
        };
        visitRunPairs(mA, mB, enter,
                      [&](quint32 firstA, quint32 endA, quint32 firstB, quint32 endB) {
                          return visitRun(firstA, endA, firstB, endB, visit);
                      });
    }

private:
    bool inWindow(const QPointF &a, const QPointF &b) const
    {
        return std::min(a.x(), b.x()) <= mWindow.xMax && std::max(a.x(), b.x()) >= mWindow.xMin
               && std::min(a.y(), b.y()) <= mWindow.yMax && std::max(a.y(), b.y()) >= mWindow.yMin;
    }

    template <class Visit>
    bool visitRun(quint32 firstA, quint32 endA, quint32 firstB, quint32 endB, Visit &visit) const
    {
        struct Segment {
            const QPointF *from;
            const QPointF *to;
            Rect2D reach; // its box, wider by the slack
        };
        Segment segments[kRunLength];
        int count = 0;
        mB.visitSegments(firstB, endB, [&](quint32, const QPointF &c, const QPointF &d) {
            if (inWindow(c, d)) {
                segments[count++] = {
                    &c,
                    &d,
                    {std::min(c.x(), d.x()) - mSlack, std::max(c.x(), d.x()) + mSlack,
                     std::min(c.y(), d.y()) - mSlack, std::max(c.y(), d.y()) + mSlack}};
            }
            return true;
        });
        return count == 0
               || mA.visitSegments(
                   firstA, endA, [&](quint32 i, const QPointF &a, const QPointF &b) {
                       if (!inWindow(a, b))
                           return true;
                       const Rect2D box{std::min(a.x(), b.x()), std::max(a.x(), b.x()),
                                        std::min(a.y(), b.y()), std::max(a.y(), b.y())};
                       std::optional<Rail> rail;
                       for (int j = 0; j < count; ++j) {
                           if (!boxesMeet(box, segments[j].reach))
                               continue;
                           if (!rail)
                               rail.emplace(a, b, mSlack);
                           Overlap overlap{i, 0.0, 0.0, {}, {}};
                           const Contact found =
                               rail->meet(*segments[j].from, *segments[j].to, overlap);
                           if (found != Contact::None && !visit(found, overlap))
                               return false;
                       }
                       return true;
                   });
    }

    const Shape &mA;
    const Shape &mB;
    const double mSlack;
    Rect2D mWindow;
};

bool nearby(const QPointF &a, const QPointF &b, double slack)
{
    return std::abs(a.x() - b.x()) <= slack && std::abs(a.y() - b.y()) <= slack;
}

/// Sorts overlaps along the boundary and unites those of one segment that touch.
void unite(Overlaps &overlaps, double slack)
{
    std::sort(overlaps.begin(), overlaps.end(), [](const Overlap &a, const Overlap &b) {
        return a.segment != b.segment ? a.segment < b.segment : a.low < b.low;
    });
    int kept = 0;
    for (int i = 1; i < overlaps.size(); ++i) {
        Overlap &last = overlaps[kept];
        const Overlap &next = overlaps[i];
        if (next.segment != last.segment || next.low > last.high + slack) {
            overlaps[++kept] = next;
        } else if (next.high > last.high) {
            last.high = next.high;
            last.to = next.to;
        }
    }
    overlaps.resize(std::min(kept + 1, overlaps.size()));
}

/// Chains of overlaps that continue one another, as the length of the chain that each united
/// overlap belongs to.
QVarLengthArray<double, 16> chainLengths(const Overlaps &overlaps, double slack)
{
    QVarLengthArray<double, 16> lengths(overlaps.size());
    int begin = 0;
    double firstChain = 0.0;
    int firstEnd = 0;
    for (int i = 0; i < overlaps.size();) {
        double length = 0.0;
        begin = i;
        do {
            length += overlaps[i].high - overlaps[i].low;
            ++i;
        } while (i < overlaps.size() && nearby(overlaps[i - 1].to, overlaps[i].from, 2.0 * slack));
        std::fill(lengths.begin() + begin, lengths.begin() + i, length);
        if (begin == 0) {
            firstChain = length;
            firstEnd = i;
        }
    }
    if (begin > 0
        && nearby(overlaps.back().to, overlaps.front().from,
                  2.0 * slack)) { // over the ring's first vertex
        const double length = firstChain + lengths.back();
        std::fill(lengths.begin(), lengths.begin() + firstEnd, length);
        std::fill(lengths.begin() + begin, lengths.end(), length);
    }
    return lengths;
}

} // namespace

Contact contact(const GeometryView &a, const GeometryView &b, double tolerance, Contact enough)
{
    const Shape first(a, ObjectKind::Polygon);
    const Shape second(b, ObjectKind::Polygon);
    const BorderWalk walk(first, second, tolerance);
    Contact best = Contact::None;
    Overlaps slivers; // each too short for a piece, which together they may be
    walk.visitContacts([&](Contact found, const Overlap &overlap) {
        if (found == Contact::Piece && !walk.isPiece(overlap.high - overlap.low)) {
            slivers.append(overlap);
            found = Contact::Place;
        }
        best = std::max(best, found);
        return best < enough;
    });
    if (best >= enough || slivers.isEmpty())
        return best;
    unite(slivers, walk.slack());
    for (const double length : chainLengths(slivers, walk.slack())) {
        if (walk.isPiece(length))
            return Contact::Piece;
    }
    return best;
}

double sharedBorder(const GeometryView &a, const GeometryView &b, double tolerance,
                    QList<QLineF> *pieces)
{
    const Shape first(a, ObjectKind::Polygon);
    const Shape second(b, ObjectKind::Polygon);
    const BorderWalk walk(first, second, tolerance);
    Overlaps overlaps;
    walk.visitContacts([&overlaps](Contact found, const Overlap &overlap) {
        if (found == Contact::Piece)
            overlaps.append(overlap);
        return true;
    });
    unite(overlaps, walk.slack());
    const auto lengths = chainLengths(overlaps, walk.slack());
    double total = 0.0;
    for (int i = 0; i < overlaps.size(); ++i) {
        if (!walk.isPiece(lengths[i]))
            continue;
        total += overlaps[i].high - overlaps[i].low;
        if (pieces)
            pieces->append(QLineF(overlaps[i].from, overlaps[i].to));
    }
    return total;
}

} // namespace fennimark
