// SPDX-License-Identifier: MIT
#include "store/contiguity.h"
#include <limits>

namespace fennimark {
namespace {

constexpr int kQuestionsBeforeGraph = 64;

/// How far apart two boxes of the store may be while the pair test still finds contact: at least
/// its own slack.
double reachOf(const RecordStore &store)
{
    const RectInT hull = store.hull();
    const double largest = std::max(
        {std::fabs(hull.xMin), std::fabs(hull.xMax), std::fabs(hull.yMin), std::fabs(hull.yMax)});
    return std::max(store.tolerance(), 16 * (std::nextafter(largest, kInfinity) - largest));
}

/// Candidates of one run, side by side.
struct Candidate {
    Rect2D box;
    quint32 record;
};

/// Joins a run with itself and the runs behind it; found(a, b, contact) comes in ascending order of
/// a, then b > a.
class RunJoin {
public:
    RunJoin(const RecordStore &store, double time)
        : mStore(store), mWhen{time}, mReach(reachOf(store))
    {
    }

    template <class Found> void join(quint32 run, Found found)
    {
        Rect2D hull = kNoBox;
        mOwn.clear();
        const Rect2D everywhere{-kInfinity, kInfinity, -kInfinity, kInfinity};
        mStore.visitRun(run, everywhere, mWhen, [&](quint32 record) {
            mOwn.push_back({mStore.box(record), record});
            widen(hull, mOwn.back().box);
        });
        if (mOwn.empty())
            return;
        mOthers.clear();
        const Rect2D window = grown(hull, mReach);
        mStore.tree().visitRuns(BoxWindow(window, mWhen.from(), mWhen.to()), [&](quint32 other) {
            if (other >= run) {
                mStore.visitRun(other, window, mWhen, [&](quint32 record) {
                    mOthers.push_back({mStore.box(record), record});
                });
            }
        });
        for (const Candidate &own : mOwn)
            joinOne(own, found);
    }

private:
    template <class Found> void joinOne(const Candidate &own, Found &found)
    {
        const Rect2D window = grown(own.box, mReach);
        GeometryView view;
        for (const Candidate &other : mOthers) {
            if (other.record <= own.record || !meet(other.box, window))
                continue;
            if (!view.vertices && !mStore.view(own.record, view, mBuffer))
                return;
            GeometryView otherView;
            if (!mStore.view(other.record, otherView, mOtherBuffer))
                continue;
            const Contact found_ = contact(view, otherView, mStore.tolerance());
            if (found_ != Contact::None)
                found(own.record, other.record, found_);
        }
    }

    const RecordStore &mStore;
    AtTime mWhen;
    double mReach;
    std::vector<Candidate> mOwn, mOthers;
    std::vector<quint64> mBuffer, mOtherBuffer;
};

} // namespace

std::vector<quint32> borderingRecords(const RecordStore &store, quint32 record, double time,
                                      bool queen)
{
    std::vector<quint32> neighbors;
    GeometryView view;
    std::vector<quint64> buffer, otherBuffer;
    if (!store.view(record, view, buffer))
        return neighbors;
    const Contact enough = queen ? Contact::Place : Contact::Piece;
    store.visit(grown(view.bounds, reachOf(store)), AtTime{time}, [&](quint32 other) {
        GeometryView otherView;
        if (other != record && store.view(other, otherView, otherBuffer)
            && contact(view, otherView, store.tolerance(), enough) >= enough)
            neighbors.push_back(other);
    });
    return neighbors;
}

bool ContiguityGraph::build(const RecordStore &store, double time, Progress progress)
{
    struct Edge {
        quint32 from, to;
        bool piece;
    };
    std::vector<Edge> edges;
    mFirst.assign(std::size_t(store.recordCount()) + 2, 0);
    if (store.mayHold(AtTime{time})) {
        RunJoin join(store, time);
        const quint32 runs = (store.recordCount() + kRecordsPerRun - 1) / kRecordsPerRun;
        for (quint32 run = 0; run < runs; ++run) {
            join.join(run, [&](quint32 a, quint32 b, Contact contact) {
                edges.push_back({a, b, contact == Contact::Piece});
                ++mFirst[a + 2];
                ++mFirst[b + 2];
            });
            if (progress && run % 64 == 0 && !progress(int(quint64(run) * 100 / runs), nullptr))
                return false;
        }
    }
    for (std::size_t i = 2; i < mFirst.size(); ++i)
        mFirst[i] += mFirst[i - 1];
    mNeighbors.resize(mFirst.back());
    // Edges stand by their first record, then their second: entered downwards first and upwards
    // then, every list ascends. mFirst[r + 1] runs from the beginning of r's list to its end
    // meanwhile.
    for (const Edge &edge : edges)
        mNeighbors[mFirst[edge.to + 1]++] = edge.from * 2 + edge.piece;
    for (const Edge &edge : edges)
        mNeighbors[mFirst[edge.from + 1]++] = edge.to * 2 + edge.piece;
    return true;
}

std::vector<quint32> ContiguityGraph::bordering(quint32 record, bool queen) const
{
    std::vector<quint32> neighbors;
    neighbors.reserve(mFirst[record + 1] - mFirst[record]);
    for (quint32 i = mFirst[record]; i < mFirst[record + 1]; ++i) {
        if (queen || (mNeighbors[i] & 1U))
            neighbors.push_back(mNeighbors[i] / 2);
    }
    return neighbors;
}

void Contiguity::clear()
{
    mGraph = ContiguityGraph();
    mHasGraph = false;
    mPiece = kNoTime;
    mQuestions = 0;
    mReached.clear();
}

/// Whether what is kept is of this time's piece; what is not is given up.
bool Contiguity::isAtHand(qint64 time)
{
    if (mVersion == mStore.version() && contains(mPiece, double(time)))
        return true;
    clear();
    mVersion = mStore.version();
    if (!mStore.pieces().pieceAround(double(time), mPiece))
        mPiece = kNoTime;
    return false;
}

bool Contiguity::prepare(qint64 time, Progress progress)
{
    isAtHand(time);
    if (!mHasGraph)
        mHasGraph = mGraph.build(mStore, double(time), progress);
    return mHasGraph;
}

std::vector<quint32> Contiguity::bordering(quint32 record, qint64 time, bool queen) const
{
    return mHasGraph ? mGraph.bordering(record, queen)
                     : borderingRecords(mStore, record, double(time), queen);
}

std::vector<std::vector<quint32>> Contiguity::rings(quint32 record, qint64 time, bool queen,
                                                    int steps)
{
    isAtHand(time);
    if (!mHasGraph && (steps > 1 || ++mQuestions > kQuestionsBeforeGraph))
        prepare(time, nullptr);
    mReached.resize(mStore.recordCount(), false);
    std::vector<std::vector<quint32>> rings;
    std::vector<quint32> edge{record};
    mReached[record] = true;
    for (int step = 0; step < steps && !edge.empty(); ++step) {
        std::vector<quint32> next;
        for (const quint32 from : edge) {
            for (const quint32 to : bordering(from, time, queen)) {
                if (!mReached[to]) {
                    mReached[to] = true;
                    next.push_back(to);
                }
            }
        }
        std::sort(next.begin(), next.end());
        edge = next;
        if (!next.empty())
            rings.push_back(std::move(next));
    }
    mReached[record] = false;
    for (const auto &ring : rings) {
        for (const quint32 reached : ring)
            mReached[reached] = false;
    }
    return rings;
}

} // namespace fennimark
