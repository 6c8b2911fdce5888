// SPDX-License-Identifier: MIT
#include "store/contiguity.h"
#include "shape/border.h"

namespace fennimark {
namespace {

constexpr int kQueriesBeforeGraph = 64;

constexpr double kUsualRange = 1024.0; // in units of the median magnitude

double magnitude(const Rect2D &box)
{
    return std::max(
        {std::abs(box.xMin), std::abs(box.xMax), std::abs(box.yMin), std::abs(box.yMax)});
}

/// A record of a leaf with a copy of its box, so that the boxes are contiguous in memory.
struct Candidate {
    Rect2D box;
    quint32 record;
};

/// Joins a leaf of the box tree with itself, the leaves after it and, for wide records, the leaves
/// before it. Calls found(a, b, contact) once for each pair in contact, in ascending order of a.
/// Only where a is wide can b be less than a.
class LeafJoin {
public:
    LeafJoin(const RecordStore &store, const ContactReaches &reaches, double time)
        : mStore(store), mReaches(reaches), mWhen{time}
    {
    }

    template <class Found> void join(quint32 leaf, Found found)
    {
        Rect2D window = kNoBox;
        bool looksBack = false;
        mOwn.clear();
        const Rect2D everywhere{-kInfinity, kInfinity, -kInfinity, kInfinity};
        mStore.visitLeaf(leaf, everywhere, mWhen, [&](quint32 record) {
            mOwn.push_back({mStore.box(record), record});
            widen(window, mReaches.window(mOwn.back().box));
            looksBack = looksBack || mReaches.isWide(mOwn.back().box);
        });
        if (mOwn.empty())
            return;
        mOthers.clear();
        mStore.tree().visitLeaves(BoxWindow(window, mWhen.from(), mWhen.to()), [&](quint32 other) {
            if (other >= leaf || looksBack) {
                mStore.visitLeaf(other, window, mWhen, [&](quint32 record) {
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
        const Rect2D window = mReaches.window(own.box);
        const bool isWide = mReaches.isWide(own.box);
        GeometryView view;
        for (const Candidate &other : mOthers) {
            if (other.record <= own.record
                && (!isWide || other.record == own.record
                    || meet(own.box, mReaches.window(other.box)))) // `other` finds this pair
                continue;
            if (!meet(other.box, window))
                continue;
            if (!view.vertices && !mStore.view(own.record, view, mBuffer))
                return;
            GeometryView otherView;
            if (!mStore.view(other.record, otherView, mOtherBuffer))
                continue;
            const Contact how = contact(view, otherView, mStore.tolerance());
            if (how != Contact::None)
                found(own.record, other.record, how);
        }
    }

    const RecordStore &mStore;
    const ContactReaches &mReaches;
    AtTime mWhen;
    std::vector<Candidate> mOwn, mOthers;
    std::vector<quint64> mBuffer, mOtherBuffer;
};

} // namespace

ContactReaches::ContactReaches(const RecordStore &store) : mTolerance(store.tolerance())
{
    std::vector<double> magnitudes; // of one record in each leaf
    for (quint32 record = 0; record < store.recordCount(); record += kRecordsPerLeaf)
        magnitudes.push_back(magnitude(store.box(record)));
    if (magnitudes.empty())
        return;
    const auto median = magnitudes.begin() + std::ptrdiff_t(magnitudes.size() / 2);
    std::nth_element(magnitudes.begin(), median, magnitudes.end());
    mUsualMagnitude = kUsualRange * *median;
    mUsual = contactReach({0.0, mUsualMagnitude, 0.0, 0.0}, mTolerance);
    for (quint32 record = 0; record < store.recordCount(); ++record) {
        if (isWide(store.box(record)))
            mWide.push_back(record);
    }
}

bool ContactReaches::isWide(const Rect2D &box) const
{
    return magnitude(box) > mUsualMagnitude;
}

Rect2D ContactReaches::window(const Rect2D &box) const
{
    return grown(box, isWide(box) ? contactReach(box, mTolerance) : mUsual);
}

std::vector<quint32> borderingRecords(const RecordStore &store, const ContactReaches &reaches,
                                      quint32 record, double time, bool queen)
{
    std::vector<quint32> neighbors;
    GeometryView view;
    std::vector<quint64> buffer, otherBuffer;
    if (!store.view(record, view, buffer))
        return neighbors;
    const Contact enough = queen ? Contact::Place : Contact::Piece;
    const Rect2D window = reaches.window(view.bounds);
    const auto test = [&](quint32 other) {
        GeometryView otherView;
        if (other != record && store.view(other, otherView, otherBuffer)
            && contact(view, otherView, store.tolerance(), enough) >= enough)
            neighbors.push_back(other);
    };
    store.visit(window, AtTime{time}, test);
    const std::size_t ascending = neighbors.size();
    for (const quint32 wide : reaches.wide()) {
        const Rect2D box = store.box(wide);
        if (!meet(box, window) && meet(reaches.window(box), view.bounds) && store.lives(wide)
            && contains(store.range(wide), time))
            test(wide);
    }
    std::inplace_merge(neighbors.begin(), neighbors.begin() + std::ptrdiff_t(ascending),
                       neighbors.end());
    return neighbors;
}

bool ContiguityGraph::build(const RecordStore &store, const ContactReaches &reaches, double time,
                            ProgressCallback progress)
{
    struct Edge {
        quint32 from, to;
        bool piece;
    };
    std::vector<Edge> edges;
    mFirst.assign(std::size_t(store.recordCount()) + 2, 0);
    if (store.mayHold(AtTime{time})) {
        LeafJoin join(store, reaches, time);
        const quint32 leaves = (store.recordCount() + kRecordsPerLeaf - 1) / kRecordsPerLeaf;
        for (quint32 leaf = 0; leaf < leaves; ++leaf) {
            join.join(leaf, [&](quint32 a, quint32 b, Contact contact) {
                edges.push_back({a, b, contact == Contact::Piece});
                ++mFirst[a + 2];
                ++mFirst[b + 2];
            });
            if (progress && leaf % 64 == 0 && !progress(int(quint64(leaf) * 100 / leaves), nullptr))
                return false;
        }
    }
    const auto byRecords = [](const Edge &a, const Edge &b) {
        return a.from != b.from ? a.from < b.from : a.to < b.to;
    };
    if (!reaches.wide().empty()) { // their pairs may have the larger record first
        for (Edge &edge : edges) {
            if (edge.from > edge.to)
                std::swap(edge.from, edge.to);
        }
        std::sort(edges.begin(), edges.end(), byRecords);
    }
    for (std::size_t i = 2; i < mFirst.size(); ++i)
        mFirst[i] += mFirst[i - 1];
    mNeighbors.resize(mFirst.back());
    // Edges are sorted by their smaller record, then by the larger one. The first loop enters the
    // smaller record of every edge into the list of the larger one, the second loop the larger
    // record into the list of the smaller one. So every list ascends. Meanwhile mFirst[r + 1] moves
    // from the beginning of r's list to its end.
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
    mQueries = 0;
    mReaches.reset();
    mReached.clear();
}

/// Drops the graph, the count of queries and the reaches when they belong to another version of the
/// store or to another static piece of time.
void Contiguity::moveTo(qint64 time)
{
    if (mVersion == mStore.version() && contains(mPiece, double(time)))
        return;
    clear();
    mReaches.emplace(mStore);
    mVersion = mStore.version();
    if (!mStore.pieces().pieceAround(double(time), mPiece))
        mPiece = kNoTime;
}

bool Contiguity::prepare(qint64 time, ProgressCallback progress)
{
    moveTo(time);
    if (!mHasGraph)
        mHasGraph = mGraph.build(mStore, *mReaches, double(time), progress);
    return mHasGraph;
}

std::vector<quint32> Contiguity::bordering(quint32 record, qint64 time, bool queen) const
{
    return mHasGraph ? mGraph.bordering(record, queen)
                     : borderingRecords(mStore, *mReaches, record, double(time), queen);
}

std::vector<std::vector<quint32>> Contiguity::rings(quint32 record, qint64 time, bool queen,
                                                    int steps)
{
    moveTo(time);
    if (!mHasGraph && (steps > 1 || ++mQueries > kQueriesBeforeGraph))
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
