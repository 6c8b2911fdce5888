// SPDX-License-Identifier: MIT
// Building vector geographies through the public functions.
#include <QDir>
#include <QtTest>
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

namespace {

const Interval kSpan{0, 10, true, true};
const QRectF kBounds(0, 0, 10, 10);

const QString kProjected = QStringLiteral(
    "PROJCS[\"Grid\",GEOGCS[\"Base\",DATUM[\"D\",SPHEROID[\"S\",6378137,298.25]],PRIMEM["
    "\"Greenwich\",0],"
    "UNIT[\"degree\",0.0174532925199433]],PROJECTION[\"Transverse_Mercator\"],UNIT[\"metre\",1]]");
const QString kGeographic = QStringLiteral(
    "GEOGCS[\"Base\",DATUM[\"D\",SPHEROID[\"S\",6378137,298.25]],PRIMEM[\"Greenwich\",0],"
    "UNIT[\"degree\",0.0174532925199433]]");

bool start()
{
    return VORN_StartNewVectorGeography(kBounds, 0, 10, -1);
}

unsigned int newChain()
{
    return static_cast<unsigned int>(VORN_CreateNewObjectChain());
}

int finish()
{
    return VORN_FinishVectorGeography(QStringLiteral("g"), QStringLiteral("history"), TF_Integer);
}

int scratchFileCount()
{
    return QDir(ControllerBase::GetVORNDataPath())
        .entryList({QStringLiteral("TMP*")}, QDir::Files)
        .size();
}

} // namespace

class TestGeographyBuilder : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void nothingIsBuiltUnstarted()
    {
        TestModel model;
        QCOMPARE(finish(), 0);
        QCOMPARE(VORN_CreateNewObjectChain(), -1);
        const QList<QPointF> ring{QPointF(0, 0), QPointF(1, 1), QPointF(1, 0)};
        QCOMPARE(
            answers({VORN_AbortNewVectorGeography(), VORN_AddPointToChain(0, QPointF(), kSpan),
                     VORN_AddLineToChain(0, {ring}, kSpan), VORN_AddPolygonToChain(0, ring, kSpan),
                     VORN_SetAdjacencyTolerance(1.0), VORN_SetNewGeographyProjection(kProjected)}),
            "nnnnnn");
        const int files = scratchFileCount();
        QVERIFY(start());
        QCOMPARE(finish(), -1); // nothing was added
        QCOMPARE(finish(), 0);
        QVERIFY(addPoints(3) >= 0);
        QCOMPARE(scratchFileCount(), files);
    }

    void oneGeographyAtATime()
    {
        TestModel model;
        const int like = addPoints(2);
        QVERIFY(start());
        QVERIFY(VORN_AddPointToChain(newChain(), QPointF(1, 1), kSpan));
        QVERIFY(!start());
        QVERIFY(!VORN_StartNewVectorGeography(like));
        const int first = finish();
        QCOMPARE(VORN_GetGeographyProperties(first).objectCount, 1);
        QVERIFY(VORN_StartNewVectorGeography(like));
        QVERIFY(VORN_AbortNewVectorGeography());
        QVERIFY(start());
    }

    void geometriesOfEachKind()
    {
        const auto check = [](int type, const QRectF &bounds, auto add) {
            const InCase inBounds(bounds);
            TestModel model;
            QVERIFY(start());
            const unsigned int chain = newChain();
            // The interval is taken, and there are no such chains.
            QCOMPARE(answers({add(chain), add(chain), add(chain + 1), add(0xFFFFFFFFU)}), "ynnn");
            const GeoProps props = VORN_GetGeographyProperties(finish());
            QCOMPARE(props.type, type);
            QCOMPARE(props.bounds, bounds);
            QCOMPARE(props.objectCount, 1);
            QCOMPARE(props.timeBounds, stamp("[0, 10]"));
            QCOMPARE(props.name, QStringLiteral("g"));
            QCOMPARE(props.metaData.value(QStringLiteral("History")),
                     QVariant(QStringLiteral("history")));
        };
        const QList<QPointF> ring{QPointF(1, 1), QPointF(3, 1), QPointF(3, 4)};
        const QList<QPointF> shell{QPointF(0, 0), QPointF(9, 0), QPointF(9, 9), QPointF(0, 9)};
        check(2, QRectF(2, 3, 0, 0),
              [](unsigned int chain) { return VORN_AddPointToChain(chain, QPointF(2, 3), kSpan); });
        check(4, QRectF(0, 0, 9, 9), [&](unsigned int chain) {
            return VORN_AddLineToChain(chain, {ring, shell}, kSpan);
        });
        check(1, QRectF(1, 1, 2, 3),
              [&](unsigned int chain) { return VORN_AddPolygonToChain(chain, ring, kSpan); });
        check(1, QRectF(0, 0, 9, 9), [&](unsigned int chain) {
            return VORN_AddPolygonToChain(chain, QList<QList<QPointF>>{shell, ring}, kSpan);
        });
    }

    void badGeometriesAreRefused()
    {
        TestModel model;
        QVERIFY(start());
        const unsigned int chain = newChain();
        QCOMPARE(answers({VORN_AddPointToChain(chain, QPointF(qQNaN(), 0), kSpan),
                          VORN_AddPointToChain(chain, QPointF(0, 0), {10, 0, true, true}),
                          VORN_AddLineToChain(chain, {}, kSpan),
                          VORN_AddPolygonToChain(chain, QList<QList<QPointF>>{}, kSpan)}),
                 "nnnn");
        QVERIFY(VORN_AddPointToChain(chain, QPointF(0, 0), kSpan));
        QVERIFY(!VORN_AddLineToChain(newChain(), {{QPointF(0, 0), QPointF(1, 1)}},
                                     kSpan)); // another kind
        QVERIFY(finish() >= 0);
    }

    void projectionsBecomeTags_data()
    {
        QTest::addColumn<QString>("wkt");
        QTest::addColumn<QVariant>("projection");
        QTest::addColumn<QVariant>("unit");
        const auto check = [](const QString &wkt, const QVariant &projection,
                              const QVariant &unit) {
            QTest::newRow(qPrintable(projection.toString())) << wkt << projection << unit;
        };
        check(QString(), "Unknown", "Unknown");
        check(kProjected, "Grid", "metre");
        check(kGeographic, "Unprojected", 9102);
    }
    void projectionsBecomeTags()
    {
        QFETCH(QString, wkt);
        QFETCH(QVariant, projection);
        QFETCH(QVariant, unit);
        TestModel model;
        QVERIFY(start());
        QVERIFY(!VORN_SetNewGeographyProjection(QStringLiteral("no system")));
        QVERIFY(wkt.isEmpty() || VORN_SetNewGeographyProjection(wkt));
        QVERIFY(VORN_AddPointToChain(newChain(), QPointF(1, 1), kSpan));
        QVERIFY(!VORN_SetNewGeographyProjection(kProjected)); // too late
        MVectorData &geography = model.vectorData(finish());
        QCOMPARE(geography.GetMetaData()[QStringLiteral("Projection")], projection);
        QCOMPARE(geography.GetMetaData()[QStringLiteral("Distance unit")], unit);
        QString text;
        QVERIFY(geography.GetDistanceUnit(text));
        QCOMPARE(text, unit.toString());
    }

    void projectionIsTakenFromAnother()
    {
        TestModel model;
        const auto finishPoint = [&]() -> MVectorData & {
            VORN_AddPointToChain(newChain(), QPointF(1, 1), kSpan);
            return model.vectorData(finish());
        };
        QVERIFY(start());
        QVERIFY(!VORN_SetAdjacencyTolerance(-1.0));
        QVERIFY(!VORN_SetAdjacencyTolerance(qInf()));
        QVERIFY(VORN_SetAdjacencyTolerance(0.25));
        QVERIFY(VORN_SetNewGeographyProjection(kProjected)); // which keeps the tolerance
        const MVectorData &first = finishPoint();
        QCOMPARE(first.GetFennims()->GetAdjacencyTolerance(), 0.25);
        QVERIFY(!VORN_StartNewVectorGeography(kBounds, 0, 10, first.GetId() + 1));
        QVERIFY(VORN_StartNewVectorGeography(kBounds, 0, 10, first.GetId()));
        QCOMPARE(finishPoint().GetMetaData()[QStringLiteral("Projection")], QVariant("Grid"));
        QVERIFY(VORN_StartNewVectorGeography(first.GetId()));
        QCOMPARE(finishPoint().GetMetaData()[QStringLiteral("Projection")], QVariant("Grid"));
    }
};

QTEST_GUILESS_MAIN(TestGeographyBuilder)
#include "tst_GeographyBuilder.moc"
