// SPDX-License-Identifier: MIT
// The segments of the two boundaries that are near each other inside the common window of their
// boxes are found by descending the run boxes of both at the same time.
//
// A vertex stored on a slanted edge is never on it to the last bit, so two places within the slack
// count as one. Two segments run together where the projection of one on the other overlaps it and
// both ends of that overlap are within the slack:
//
//      c -------------------- d        c to d
//              a -------------------- b        a to b, no farther than the slack
//              |==============|        overlap: low and high are distances from a
//
// Edges that diverge at a small angle from a common vertex share a place and no piece.
//
// The common border is the set of places on both boundaries. A ring may run along one stretch
// several times (spikes, cuts, doubled edges), so the overlaps are reduced until each stretch is
// counted once: first each stretch of the second boundary is assigned to the first segment of the
// first boundary that runs along it, then each stretch of the first boundary to the first segment
// of the second. After both steps there is exactly one overlap at every common place, for any
// number of segments there. Overlaps that continue one another along either boundary are one piece.
//
// The boundary that counts as the first one is chosen by the vertices and not by the order of the
// arguments, so (a, b) and (b, a) have the same result.
#include "shape/border.h"
#include <cmath>
#include <numeric>
#include <optional>
#include "shape/shape.h"

namespace fennimark {
namespace {

constexpr double kSlackUlps = 8.0;
constexpr double kPieceSlacks = 4.0; // a piece must be longer than this many slacks

/// A stretch that a segment of the first boundary has in common with one of the second. `low` and
/// `high` are distances from the beginning of the first segment; the other two are the distances
/// of the same places from the beginning of the second, which descend where the two run in
/// opposite directions.
struct Overlap {
    quint32 segment;
    quint32 otherSegment;
    double low, high;
    double otherAtLow, otherAtHigh;
    QPointF from, to;
};
using Overlaps = QVarLengthArray<Overlap, 16>;
using Numbers = QVarLengthArray<int, 16>;

double slackOf(const Rect2D &a, const Rect2D &b, double tolerance)
{
    return std::max({roundingSlack(a), roundingSlack(b), tolerance});
}

/// One segment of the first boundary, prepared for tests against many segments of the second.
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

    /// The contact with the segment from c to d. For Contact::Piece, which here has any length,
    /// `overlap` receives the distances and ends of the overlap.
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
            const double otherLength = lengthOf(d.x() - c.x(), d.y() - c.y());
            const double perUnit = otherLength / (second.x() - first.x());
            overlap.otherAtLow = (low - first.x()) * perUnit;
            overlap.otherAtHigh = (high - first.x()) * perUnit;
            overlap.from = at(low);
            overlap.to = at(high);
            return Contact::Piece;
        }
        return near(first, second) ? Contact::Place : Contact::None;
    }

private:
    static double lengthOf(double dx, double dy) { return std::sqrt(dx * dx + dy * dy); }

    /// The coordinates of p along the segment and, to its left, across it.
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
    QPointF mDirection{1.0, 0.0}; // arbitrary for a segment of length 0
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
    const Shape &first() const { return mA; }
    const Shape &second() const { return mB; }

    /// Calls visit(contact, overlap) for each pair of segments in contact, until it returns false.
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
            quint32 index;
            const QPointF *from;
            const QPointF *to;
            Rect2D reach; // its box, enlarged by the slack
        };
        Segment segments[kRunLength];
        int count = 0;
        mB.visitSegments(firstB, endB, [&](quint32 index, const QPointF &c, const QPointF &d) {
            if (inWindow(c, d)) {
                segments[count++] = {
                    index,
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
                           Overlap overlap{i, segments[j].index, 0.0, 0.0, 0.0, 0.0, {}, {}};
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

/// One of the two boundaries, with the members of Overlap that belong to it.
struct Side {
    const Shape &boundary;
    quint32 Overlap::*segment;
    double Overlap::*atLow;
    double Overlap::*atHigh;

    double begin(const Overlap &o) const { return std::min(o.*atLow, o.*atHigh); }
    double end(const Overlap &o) const { return std::max(o.*atLow, o.*atHigh); }
    bool isReversed(const Overlap &o) const { return o.*atLow > o.*atHigh; }
    const QPointF &from(const Overlap &o) const { return isReversed(o) ? o.to : o.from; }
    const QPointF &to(const Overlap &o) const { return isReversed(o) ? o.from : o.to; }
    bool precedes(const Overlap &a, const Overlap &b) const
    {
        return a.*segment != b.*segment ? a.*segment < b.*segment : begin(a) < begin(b);
    }
    QLineF line(const Overlap &o) const { return QLineF(from(o), to(o)); }
};

/// The stretches of one segment that are counted already, ascending and disjoint.
class CountedStretches {
public:
    explicit CountedStretches(double slack) : mSlack(slack) {}
    void clear() { mStretches.clear(); }

    /// Calls visit(begin, end) for the parts of [low, high] that are not counted yet, and marks
    /// them as counted.
    template <class Visit> void count(double low, double high, Visit visit)
    {
        const auto first =
            std::lower_bound(mStretches.begin(), mStretches.end(), low - mSlack,
                             [](const Stretch &one, double at) { return one.high < at; });
        auto last = first;
        double at = low;
        Stretch whole{low, high};
        for (; last != mStretches.end() && last->low <= high + mSlack; ++last) {
            if (last->low > at)
                visit(at, std::min(last->low, high));
            at = std::max(at, last->high);
            whole.low = std::min(whole.low, last->low);
            whole.high = std::max(whole.high, last->high);
        }
        if (at < high)
            visit(at, high);
        if (first == last) {
            mStretches.insert(first, whole);
        } else {
            *first = whole;
            mStretches.erase(first + 1, last);
        }
    }

private:
    struct Stretch {
        double low, high;
    };
    const double mSlack;
    std::vector<Stretch> mStretches;
};

/// The part of an overlap with the distances [begin, end] along one side.
Overlap partOf(const Overlap &whole, const Side &side, double begin, double end)
{
    const double perUnit = 1.0 / (whole.*side.atHigh - whole.*side.atLow);
    double from = (begin - whole.*side.atLow) * perUnit;
    double to = (end - whole.*side.atLow) * perUnit;
    if (from > to)
        std::swap(from, to);
    const auto mixed = [](const auto &low, const auto &high, double share) {
        return share <= 0.0 ? low : share >= 1.0 ? high : low + (high - low) * share;
    };
    Overlap part = whole;
    part.low = mixed(whole.low, whole.high, from);
    part.high = mixed(whole.low, whole.high, to);
    part.otherAtLow = mixed(whole.otherAtLow, whole.otherAtHigh, from);
    part.otherAtHigh = mixed(whole.otherAtLow, whole.otherAtHigh, to);
    part.from = mixed(whole.from, whole.to, from);
    part.to = mixed(whole.from, whole.to, to);
    return part;
}

/// The overlaps of two boundaries, in which each common stretch occurs once, grouped into pieces.
class CommonBorder {
public:
    CommonBorder(const BorderWalk &walk, Overlaps overlaps)
        : mWalk(walk),
          mFirst{walk.first(), &Overlap::segment, &Overlap::low, &Overlap::high},
          mSecond{walk.second(), &Overlap::otherSegment, &Overlap::otherAtLow,
                  &Overlap::otherAtHigh},
          mRounding(slackOf(walk.first().bounds(), walk.second().bounds(), 0.0)),
          mOverlaps(std::move(overlaps))
    {
        arrange();
        if (!isApart(mFirst) || !isApart(mSecond)) {
            countOnce(mSecond, mFirst);
            countOnce(mFirst, mSecond);
            arrange();
        }
        link();
    }

    bool hasPiece() const
    {
        return std::any_of(mLengths.begin(), mLengths.end(),
                           [this](double length) { return mWalk.isPiece(length); });
    }

    /// The total length of all pieces. `pieces`, when not null, receives them in the order of the
    /// first or the second boundary; those that continue one another on one segment of the first
    /// boundary are joined.
    double length(bool alongFirst, QList<QLineF> *pieces) const
    {
        double total = 0.0;
        Overlaps joined;
        for (int i = 0; i < mOverlaps.size(); ++i) {
            if (!mWalk.isPiece(mLengths[mPieceOf[i]]))
                continue;
            const Overlap &next = mOverlaps[i];
            total += next.high - next.low;
            if (!pieces)
                continue;
            if (joined.isEmpty() || joined.back().segment != next.segment
                || next.low > joined.back().high + mWalk.slack()) {
                joined.append(next);
            } else {
                joined.back().high = next.high;
                joined.back().to = next.to;
            }
        }
        if (pieces) {
            const Side &side = alongFirst ? mFirst : mSecond;
            std::stable_sort(
                joined.begin(), joined.end(),
                [&side](const Overlap &a, const Overlap &b) { return side.precedes(a, b); });
            for (const Overlap &piece : joined)
                pieces->append(side.line(piece));
        }
        return total;
    }

private:
    /// Sorts the overlaps along the first boundary, and their numbers along the second.
    void arrange()
    {
        const auto along = [this](const Overlap &a, const Overlap &b) {
            return mFirst.precedes(a, b);
        };
        if (!std::is_sorted(mOverlaps.begin(), mOverlaps.end(), along))
            std::sort(mOverlaps.begin(), mOverlaps.end(), along);
        mOrder[0].resize(mOverlaps.size());
        std::iota(mOrder[0].begin(), mOrder[0].end(), 0);
        mOrder[1] = mOrder[0];
        std::sort(mOrder[1].begin(), mOrder[1].end(),
                  [this](int a, int b) { return mSecond.precedes(mOverlaps[a], mOverlaps[b]); });
    }
    const Numbers &orderOf(const Side &side) const { return mOrder[&side == &mSecond]; }

    /// Whether the overlaps are disjoint along one side, up to rounding.
    bool isApart(const Side &side) const
    {
        const Numbers &order = orderOf(side);
        for (int i = 1; i < order.size(); ++i) {
            const Overlap &last = mOverlaps[order[i - 1]];
            const Overlap &next = mOverlaps[order[i]];
            if (next.*side.segment == last.*side.segment
                && side.begin(next) < side.end(last) - mRounding)
                return false;
        }
        return true;
    }

    /// Assigns each stretch of `side` to the overlap with the first segment of the other side.
    void countOnce(const Side &side, const Side &other)
    {
        std::sort(mOverlaps.begin(), mOverlaps.end(), [&](const Overlap &a, const Overlap &b) {
            if (a.*side.segment != b.*side.segment)
                return a.*side.segment < b.*side.segment;
            return other.precedes(a, b);
        });
        Overlaps kept;
        CountedStretches counted(mRounding);
        for (int i = 0; i < mOverlaps.size(); ++i) {
            const Overlap &next = mOverlaps[i];
            if (i > 0 && next.*side.segment != mOverlaps[i - 1].*side.segment)
                counted.clear();
            const double low = side.begin(next);
            const double high = side.end(next);
            counted.count(low, high, [&](double begin, double end) {
                if (begin == low && end == high)
                    kept.append(next);
                else if (end - begin > mRounding) // shorter parts are rounding errors
                    kept.append(partOf(next, side, begin, end));
            });
        }
        mOverlaps = kept;
    }

    /// Groups overlaps that continue one another along either boundary into pieces.
    void link()
    {
        mPieceOf = mOrder[0];
        for (const Side *side : {&mFirst, &mSecond}) {
            const Numbers &order = orderOf(*side);
            for (int i = 0, begin = 0; i < order.size(); ++i) {
                const bool ends =
                    i + 1 == order.size() || part(*side, order[i + 1]) != part(*side, order[i]);
                linkTwo(*side, order[i], order[ends ? begin : i + 1]);
                if (ends)
                    begin = i + 1;
            }
        }
        mLengths.resize(mOverlaps.size());
        std::fill(mLengths.begin(), mLengths.end(), 0.0);
        for (int i = 0; i < mOverlaps.size(); ++i) {
            mPieceOf[i] = rootOf(i);
            mLengths[mPieceOf[i]] += mOverlaps[i].high - mOverlaps[i].low;
        }
    }
    quint32 part(const Side &side, int number) const
    {
        return side.boundary.partOf(mOverlaps[number].*side.segment);
    }
    void linkTwo(const Side &side, int earlier, int later)
    {
        const QPointF &end = side.to(mOverlaps[earlier]);
        const QPointF &begin = side.from(mOverlaps[later]);
        const double reach = 2.0 * mWalk.slack();
        if (std::abs(end.x() - begin.x()) > reach || std::abs(end.y() - begin.y()) > reach)
            return;
        const int a = rootOf(earlier);
        const int b = rootOf(later);
        mPieceOf[std::max(a, b)] = std::min(a, b);
    }
    int rootOf(int number)
    {
        while (mPieceOf[number] != number)
            number = mPieceOf[number] = mPieceOf[mPieceOf[number]];
        return number;
    }

    const BorderWalk &mWalk;
    const Side mFirst;
    const Side mSecond;
    const double mRounding;
    Overlaps mOverlaps;
    Numbers mOrder[2];                    // along the first boundary, along the second
    Numbers mPieceOf;                     // by overlap: the first overlap of its piece
    QVarLengthArray<double, 16> mLengths; // the length of a piece, by its first overlap
};

/// An order of boundaries by their vertices. inOrder(a, b) and inOrder(b, a) are both true only
/// when all vertices and parts are equal.
bool inOrder(const GeometryView &a, const GeometryView &b)
{
    if (a.vertexCount != b.vertexCount)
        return a.vertexCount < b.vertexCount;
    if (a.partCount != b.partCount)
        return a.partCount < b.partCount;
    for (quint32 i = 0; i < a.vertexCount; ++i) {
        const QPointF &p = a.vertices[i];
        const QPointF &q = b.vertices[i];
        if (p.x() != q.x())
            return p.x() < q.x();
        if (p.y() != q.y())
            return p.y() < q.y();
    }
    return !std::lexicographical_compare(b.partSizes, b.partSizes + b.partCount, a.partSizes,
                                         a.partSizes + a.partCount);
}

} // namespace

double roundingSlack(const Rect2D &bounds)
{
    return kSlackUlps
           * ulp(std::max({std::abs(bounds.xMin), std::abs(bounds.xMax), std::abs(bounds.yMin),
                           std::abs(bounds.yMax)}));
}

double contactReach(const Rect2D &bounds, double tolerance)
{
    const double slack = roundingSlack(bounds);
    return std::max(slack, tolerance) + slack; // the second term covers rounding in the pair test
}

Contact contact(const GeometryView &a, const GeometryView &b, double tolerance, Contact enough)
{
    const bool ordered = inOrder(a, b);
    const Shape first(ordered ? a : b, ObjectKind::Polygon);
    const Shape second(ordered ? b : a, ObjectKind::Polygon);
    const BorderWalk walk(first, second, tolerance);
    Contact best = Contact::None;
    Overlaps slivers; // overlaps too short for a piece, but together they may form one
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
    return CommonBorder(walk, std::move(slivers)).hasPiece() ? Contact::Piece : best;
}

double sharedBorder(const GeometryView &a, const GeometryView &b, double tolerance,
                    QList<QLineF> *pieces)
{
    const bool ordered = inOrder(a, b);
    const Shape first(ordered ? a : b, ObjectKind::Polygon);
    const Shape second(ordered ? b : a, ObjectKind::Polygon);
    const BorderWalk walk(first, second, tolerance);
    Overlaps overlaps;
    walk.visitContacts([&overlaps](Contact found, const Overlap &overlap) {
        if (found == Contact::Piece)
            overlaps.append(overlap);
        return true;
    });
    return CommonBorder(walk, std::move(overlaps)).length(ordered, pieces);
}

} // namespace fennimark
