// SPDX-License-Identifier: MIT
// What does the mapping of ids and object indices cost? Public queries are compared with the same
// calls of the geometry library, which return records.
#include <QCoreApplication>
#include <random>
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/PointTreeAPI.h"
#include "fennimark/Fennims.h"
#include "ratios.h"

namespace {

constexpr qint64 kTime = 5;
constexpr PT_RotationMatrix kNoRotation{1, 0, 0, 1};

/// The places of the queries, one after the other.
class Places {
public:
    explicit Places(double size)
    {
        std::mt19937 random(3);
        std::uniform_real_distribution<double> coordinate(0, size);
        for (QPointF &place : mPlaces)
            place = QPointF(coordinate(random), coordinate(random));
    }
    const QPointF &next() { return mPlaces[mNext++ % 4096]; }

private:
    std::vector<QPointF> mPlaces = std::vector<QPointF>(4096);
    unsigned mNext = 0;
};

/// The unit squares that fill an area of `side` by `side`, or their lower left corners.
int addLattice(int side, bool points)
{
    VORN_StartNewVectorGeography(QRectF(0, 0, side, side), 0, 10, -1);
    const Interval always{0, 10, true, true};
    for (int i = 0; i < side * side; ++i) {
        const auto chain = static_cast<unsigned int>(VORN_CreateNewObjectChain());
        const QPointF p(i % side, i / side);
        if (points)
            VORN_AddPointToChain(chain, p, always);
        else
            VORN_AddPolygonToChain(
                chain, {p, p + QPointF(1, 0), p + QPointF(1, 1), p + QPointF(0, 1)}, always);
    }
    return VORN_FinishVectorGeography("lattice", QString(), TF_Integer);
}

Fennims &fennimsOf(int geographyId)
{
    return *static_cast<MVectorData *>(static_cast<MGeoData *>(VORN_GetGeography(geographyId)))
                ->GetFennims();
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    VORN_InitializeForTesting();
    constexpr int kSide = 175; // 30,625 objects
    const int squares = addLattice(kSide, false);
    const int points = addLattice(kSide, true);
    const int tree = VORN_CreatePointTreeFromCentroids(points, kTime, kNoRotation);
    GeoPointTree bare;
    bare.SetGeography(points, kTime, kNoRotation);
    Fennims &polygons = fennimsOf(squares);
    Fennims &places = fennimsOf(points);
    Places at(kSide);
    QVector<unsigned int> objects;
    QVector<int> records;
    QVector<neighborDatum> neighbors;
    QVector<ptTreeQueryResult> hits;
    QMap<int, QVector<int>> byRecord;
    QVector<QVector<neighborDatum>> byObject;
    const auto rect = [&at] { return QRectF(at.next(), QSizeF(2, 2)); }; // meets 9 squares
    const std::vector<ratios::Pair> table{
        {"rectangle query, 30,625 squares, 9 hits", "Fennims::RectQuery", 2.0,
         ratios::repeat([&] { VORN_RectQuery(squares, rect(), kTime, objects); }),
         ratios::repeat([&] {
             const QRectF r = rect();
             polygons.RectQuery({r.left(), r.right(), r.top(), r.bottom()}, kTime, records);
         })},
        {"nearest 5 to a place, 30,625 squares", "Fennims, the records alone", 2.0,
         ratios::repeat(
             [&] { VORN_NearestNeighborQuery(squares, at.next(), kTime, 5, neighbors); }),
         ratios::repeat(
             [&] { polygons.CalculateNearestNeighborsToPoint(at.next(), kTime, 5, records); })},
        {"nearest 5 of each of 30,625 points", "Fennims, the records alone", 2.0,
         ratios::repeat(
             [&] { VORN_NearestNeighborObjectQuery(points, points, kTime, 5, byObject, false); }),
         ratios::repeat([&] {
             places.CalculateNearestNeighborsToObjects(
                 places.mTree, places.GetObservationsAtTime(kTime), kTime, 5, byRecord, nullptr);
         })},
        {"nearest 5 in a tree by handle", "the tree itself", 1.1,
         ratios::repeat([&] { VORN_GetPointTreeNearestNeighbors(tree, at.next(), 5, {}, hits); }),
         ratios::repeat([&] { bare.GetNearestNeighbors(at.next(), 5, {}, hits, true); })},
    };
    const int result = ratios::run(argc, argv, table);
    VORN_DeletePointTree(tree);
    VORN_DoneWithTesting();
    return result;
}
