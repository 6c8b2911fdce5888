// SPDX-License-Identifier: MIT
#include <QtTest>
#include <random>
#include "core/report/sharedArcs.h"

using namespace meridor;

namespace {

/// The ring that a path has become.
QVector<QPoint> ringOf(const SharedArcs &shared, int path)
{
    QVector<QPoint> ring;
    for (const int number : shared.arcsOf(path)) {
        SharedArcs::Arc arc = shared.arcs()[static_cast<size_t>(number < 0 ? ~number : number)];
        if (number < 0)
            std::reverse(arc.begin(), arc.end());
        for (const QPoint &place : arc)
            if (ring.isEmpty() || ring.last() != place)
                ring.append(place);
    }
    return ring;
}

qint64 twiceArea(const QVector<QPoint> &ring)
{
    qint64 sum = 0;
    for (int i = 0; i + 1 < ring.size(); ++i)
        sum += qint64(ring[i].x()) * ring[i + 1].y() - qint64(ring[i + 1].x()) * ring[i].y();
    return sum;
}

/// A mesh of squares whose sides are bent, each side the same for both squares beside it.
class BentMesh {
public:
    static constexpr int kSide = 100;
    explicit BentMesh(int count) : mCount(count) {}
    QVector<QPoint> outline() const { return around(0, 0, mCount); }
    QVector<QPoint> cell(int column, int row) const { return around(column, row, 1); }

private:
    QPoint bent(QPoint place) const
    {
        std::minstd_rand random(static_cast<unsigned>(place.x() * 7919 + place.y() + 1));
        random.discard(5);
        // Beside a corner sides stay straight: bent ones would meet there.
        const int along = std::max(place.x() % kSide, place.y() % kSide);
        const bool straight = along <= 8 || along >= kSide - 8;
        const int bend = straight ? 0 : static_cast<int>(random() % 15) - 7;
        return place.x() % kSide == 0 ? place + QPoint(bend, 0) : place + QPoint(0, bend);
    }
    QVector<QPoint> around(int column, int row, int cells) const
    {
        QVector<QPoint> ring;
        QPoint place(column * kSide, row * kSide);
        for (const QPoint &step : {QPoint(4, 0), QPoint(0, 4), QPoint(-4, 0), QPoint(0, -4)})
            for (int i = 0; i < cells * kSide / 4; ++i, place += step)
                ring.append(bent(place));
        return ring;
    }
    int mCount;
};

} // namespace

class TestSharedArcs : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void facesFillTheirOutlineHoweverMuchIsSimplified_data();
    void facesFillTheirOutlineHoweverMuchIsSimplified();
    void oneBorderIsOneArcFromEverySide();
    void smallAndBrokenPathsStayPaths();
};

void TestSharedArcs::facesFillTheirOutlineHoweverMuchIsSimplified_data()
{
    QTest::addColumn<double>("area");
    for (const double area : {0.0, 10.0, 100.0, 1e9})
        QTest::addRow("bends below %g", area) << area;
}

void TestSharedArcs::facesFillTheirOutlineHoweverMuchIsSimplified()
{
    QFETCH(double, area);
    constexpr int kCount = 6;
    const BentMesh mesh(kCount);
    SharedArcs shared;
    QVector<int> faces;
    for (int row = 0; row < kCount; ++row)
        for (int column = 0; column < kCount; ++column)
            faces.append(shared.addRing(mesh.cell(column, row)));
    const int outline = shared.addRing(mesh.outline());
    shared.cut(area);
    qint64 sum = 0;
    int vertices = 0;
    for (const int face : faces) {
        sum += twiceArea(ringOf(shared, face));
        vertices += ringOf(shared, face).size() - 1;
    }
    QCOMPARE(sum, twiceArea(ringOf(shared, outline)));
    if (area == 0)
        QCOMPARE(vertices, kCount * kCount * BentMesh::kSide);
    if (area == 1e9) // the junctions alone: corners of the mesh have no third border
        QCOMPARE(vertices, kCount * kCount * 4 - 4);
}

void TestSharedArcs::oneBorderIsOneArcFromEverySide()
{
    const QVector<QPoint> left{{0, 0}, {5, 0}, {6, 4}, {5, 9}, {0, 9}};
    const QVector<QPoint> right{{5, 9}, {6, 4}, {5, 0}, {9, 0}, {9, 9}, {5, 9}};
    QVector<QPoint> turned = left;
    std::rotate(turned.begin(), turned.begin() + 3, turned.end());
    QVector<QPoint> island{{20, 20}, {24, 20}, {22, 25}};
    QVector<QPoint> hole = island;
    std::reverse(hole.begin(), hole.end());
    SharedArcs shared;
    for (const auto &ring : {left, right, turned, island, hole})
        shared.addRing(ring);
    shared.cut(0);
    QCOMPARE(static_cast<int>(shared.arcs().size()), 4); // the border, both outer sides, the island
    QCOMPARE(shared.arcsOf(3).front(), ~shared.arcsOf(4).front());
    QCOMPARE(twiceArea(ringOf(shared, 0)), twiceArea(ringOf(shared, 2)));
}

void TestSharedArcs::smallAndBrokenPathsStayPaths()
{
    SharedArcs shared;
    const int tiny = shared.addRing({{0, 0}, {9, 0}, {8, 5}, {1, 2}});
    const int spot = shared.addRing({{7, 7}, {7, 7}, {7, 7}});
    const int line = shared.addLine({{10, 0}, {12, 1}, {20, 0}});
    // Two halves of a lens: simplified to their ends, both would be the same straight line.
    const int lower = shared.addRing({{30, 0}, {35, -1}, {40, 0}, {35, 0}});
    const int upper = shared.addRing({{30, 0}, {35, 0}, {40, 0}, {35, 1}});
    shared.cut(1e9);
    QCOMPARE(ringOf(shared, tiny).size(), 4);
    QCOMPARE(ringOf(shared, spot).size(), 0);
    QCOMPARE(ringOf(shared, line), (QVector<QPoint>{{10, 0}, {20, 0}}));
    QVERIFY2(twiceArea(ringOf(shared, lower)) != 0, "the lower half has no area left");
    QVERIFY2(twiceArea(ringOf(shared, upper)) != 0, "the upper half has no area left");
}

QTEST_APPLESS_MAIN(TestSharedArcs)
#include "tst_SharedArcs.moc"
