// SPDX-License-Identifier: MIT
// Objects as views, as copies and in their stream form.
#include <QDataStream>
#include <QtTest>
#include "fennimark/FMPoint.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/shape/geometryCases.h"
#include "shape/geometryView.h"
#include "support/checks.h"

namespace {

QByteArray saved(FMObject &object, QDataStream::ByteOrder order = QDataStream::BigEndian)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setByteOrder(order);
    return object.SaveToStream(out) ? bytes : QByteArray();
}

bool restored(FMObject &object, const QByteArray &bytes, int form = 1)
{
    QDataStream in(bytes);
    return object.RestoreFromStream(in, form);
}

const QList<QPolygonF> kRings{cases::rectangle(0, 0, 10, 10),
                              QPolygonF(QVector<QPointF>{{1, 1}, {2, 1}, {2, 3}})};

/// Gives access to protected members.
class Movable : public FMPolygon {
public:
    using FMPolygon::FMPolygon;
    using FMPolygon::TransformVertices;
};

void shift(QPointF *vertices, int count, const FMProjectionInfo &, bool inverse)
{
    for (int i = 0; i < count; ++i)
        vertices[i] += inverse ? QPointF(-100, 0) : QPointF(100, 0);
}

} // namespace

class TestGeometryStreams : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void bytesAreLittleEndianWhateverTheStream()
    {
        FMLine line({{{1.0, -2.0}, {0.5, 0.0}}});
        const QByteArray golden = QByteArray::fromHex("01000000"
                                                      "02000000"
                                                      "000000000000f03f00000000000000c0"
                                                      "000000000000e03f0000000000000000");
        QCOMPARE(saved(line), golden);
        QCOMPARE(saved(line, QDataStream::LittleEndian), golden);
        FMPoint point({1.0, -2.0});
        QCOMPARE(saved(point), golden.mid(8, 16));
    }
    void everyCutIsRefusedAndChangesNothing()
    {
        FMPolygon polygon(kRings);
        const QByteArray bytes = saved(polygon);
        const QList<QPolygonF> before{cases::rectangle(5, 5, 6, 6)};
        FMPolygon target(before);
        for (int size = 0; size < bytes.size(); ++size)
            QVERIFY(!restored(target, bytes.left(size)));
        QVERIFY(!restored(target, bytes, 2));
        QCOMPARE(target.GetVertices(), before);
        QVERIFY(restored(target, bytes));
        QCOMPARE(target.GetArea(), 99.0);
        for (const char *lie :
             {"ffffffff", "feffff7f", "01000000feffff7f", "02000000ffffffffffffffff"})
            QVERIFY(!restored(target, QByteArray::fromHex(lie) + QByteArray(4096, '\1')));
        QCOMPARE(target.GetVertices(), kRings);
    }
    void copiesOutliveTheMemoryOfAView()
    {
        QVector<QPointF> vertices = cases::refined(kRings[0], 5) + kRings[1];
        QVector<quint32> sizes{20, 3};
        fennimark::GeometryView view;
        view.vertices = vertices.constData();
        view.vertexCount = 23;
        view.partSizes = sizes.constData();
        view.partCount = 2;
        view.bounds = {0, 10, 0, 10};
        view.tolerance = 0.5;
        std::vector<fennimark::RunBox> boxes(fennimark::runBoxCount(23));
        fennimark::buildRunBoxes(view, fennimark::ObjectKind::Polygon, boxes.data());
        view.runBoxes = boxes.data();
        auto live = fennimark::ObjectAccess::makePolygon(view, fennimark::Simplicity::Unknown);
        QCOMPARE(live->GetArea(), 99.0);
        QCOMPARE(answers({live->ContainsPoint(0.5, 9.5), live->ContainsPoint(1.75, 1.5)}), "yn");
        const FMPolygon near(cases::rectangle(10.4, 0, 12, 10)); // within the tolerance
        QVERIFY(live->BordersPolygon(near, false));
        const std::unique_ptr<TreeObject> copy(live->Copy());
        live.reset();
        vertices.fill({-1, -1});
        sizes.fill(0);
        const auto &polygon = dynamic_cast<const FMPolygon &>(*copy);
        QCOMPARE(polygon.GetArea(), 99.0);
        QCOMPARE(polygon.GetVertices()[1], kRings[1]);
        QVERIFY(polygon.BordersPolygon(near, false));
    }
    void changesMakeAnObjectDirtyAndForgetWhatWasKnown()
    {
        Movable polygon(kRings);
        QCOMPARE(answers({polygon.ContainsPoint(0.5, 0.5), polygon.IsSimple(), polygon.IsDirty()}),
                 "yyn");
        const FMProjectionInfo projection;
        polygon.TransformVertices(nullptr, projection, false);
        QVERIFY(!polygon.IsDirty());
        polygon.TransformVertices(reinterpret_cast<void *>(&shift), projection, false);
        QCOMPARE(answers({polygon.IsDirty(), polygon.ContainsPoint(100.5, 0.5),
                          polygon.ContainsPoint(0.5, 0.5)}),
                 "yyn");
        QCOMPARE(polygon.GetBounds().xMax, 110.0);
        polygon.TransformVertices(reinterpret_cast<void *>(&shift), projection, true);
        QCOMPARE(polygon.GetVertices(), kRings);
    }
};

QTEST_GUILESS_MAIN(TestGeometryStreams)
#include "tst_GeometryStreams.moc"
