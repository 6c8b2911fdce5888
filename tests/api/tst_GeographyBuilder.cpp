// SPDX-License-Identifier: MIT
// Building vector geographies through the public functions.
#include <QDir>
#include <QtTest>
#include <functional>
#include <limits>
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
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

Q_DECLARE_METATYPE(std::function<bool(unsigned int)>)

class TestGeographyBuilder : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void nothingIsBuiltUnstarted();
    void oneGeographyAtATime();
    void geometriesOfEachKind_data();
    void geometriesOfEachKind();
    void badGeometriesAreRefused();
    void projectionsBecomeTags_data();
    void projectionsBecomeTags();
    void projectionIsTakenFromAnother();
};

void TestGeographyBuilder::nothingIsBuiltUnstarted()
{
    TestModel model;
    QCOMPARE(finish(), 0);
    QCOMPARE(VORN_CreateNewObjectChain(), -1);
    QVERIFY(!VORN_AbortNewVectorGeography());
    QVERIFY(!VORN_AddPointToChain(0, QPointF(), kSpan));
    QVERIFY(!VORN_AddLineToChain(0, {{QPointF(0, 0), QPointF(1, 1)}}, kSpan));
    QVERIFY(!VORN_AddPolygonToChain(0, QList<QPointF>{QPointF(0, 0), QPointF(1, 1), QPointF(1, 0)},
                                    kSpan));
    QVERIFY(!VORN_SetAdjacencyTolerance(1.0));
    QVERIFY(!VORN_SetNewGeographyProjection(kProjected));
    const int files = scratchFileCount();
    QVERIFY(start());
    QCOMPARE(finish(), -1); // nothing was added
    QCOMPARE(finish(), 0);
    QVERIFY(addPoints(3) >= 0);
    QCOMPARE(scratchFileCount(), files);
}

void TestGeographyBuilder::oneGeographyAtATime()
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

void TestGeographyBuilder::geometriesOfEachKind_data()
{
    using Add = std::function<bool(unsigned int)>;
    QTest::addColumn<Add>("add");
    QTest::addColumn<int>("type");
    QTest::addColumn<QRectF>("bounds");
    QTest::newRow("points") << Add([](unsigned int chain) {
        return VORN_AddPointToChain(chain, QPointF(2, 3), kSpan);
    }) << 2 << QRectF(2, 3, 0, 0);
    QTest::newRow("lines") << Add([](unsigned int chain) {
        return VORN_AddLineToChain(
            chain, {{QPointF(0, 0), QPointF(4, 1)}, {QPointF(5, 5), QPointF(6, 7)}}, kSpan);
    }) << 4 << QRectF(0, 0, 6, 7);
    QTest::newRow("ring") << Add([](unsigned int chain) {
        return VORN_AddPolygonToChain(
            chain, QList<QPointF>{QPointF(1, 1), QPointF(3, 1), QPointF(3, 4)}, kSpan);
    }) << 1 << QRectF(1, 1, 2, 3);
    QTest::newRow("rings") << Add([](unsigned int chain) {
        const QList<QPointF> shell{QPointF(0, 0), QPointF(9, 0), QPointF(9, 9), QPointF(0, 9)};
        const QList<QPointF> hole{QPointF(1, 1), QPointF(2, 1), QPointF(2, 2)};
        return VORN_AddPolygonToChain(chain, QList<QList<QPointF>>{shell, hole}, kSpan);
    }) << 1 << QRectF(0, 0, 9, 9);
}

void TestGeographyBuilder::geometriesOfEachKind()
{
    using Add = std::function<bool(unsigned int)>;
    QFETCH(Add, add);
    QFETCH(int, type);
    QFETCH(QRectF, bounds);
    TestModel model;
    QVERIFY(start());
    const unsigned int chain = newChain();
    QVERIFY(add(chain));
    QVERIFY(!add(chain));     // the interval is taken
    QVERIFY(!add(chain + 1)); // no such chain
    QVERIFY(!add(0xFFFFFFFFU));
    const GeoProps props = VORN_GetGeographyProperties(finish());
    QCOMPARE(props.type, type);
    QCOMPARE(props.bounds, bounds);
    QCOMPARE(props.objectCount, 1);
    QCOMPARE(props.timeBounds, stamp("[0, 10]"));
    QCOMPARE(props.name, QStringLiteral("g"));
    QCOMPARE(props.metaData.value(QStringLiteral("History")), QVariant(QStringLiteral("history")));
}

void TestGeographyBuilder::badGeometriesAreRefused()
{
    TestModel model;
    QVERIFY(start());
    const unsigned int chain = newChain();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    QVERIFY(!VORN_AddPointToChain(chain, QPointF(nan, 0), kSpan));
    QVERIFY(!VORN_AddPointToChain(chain, QPointF(0, 0), {10, 0, true, true}));
    QVERIFY(!VORN_AddLineToChain(chain, {{QPointF(0, 0)}}, kSpan));
    QVERIFY(!VORN_AddLineToChain(chain, {}, kSpan));
    QVERIFY(!VORN_AddPolygonToChain(chain, QList<QPointF>{QPointF(0, 0), QPointF(1, 1)}, kSpan));
    QVERIFY(!VORN_AddPolygonToChain(chain, QList<QList<QPointF>>{}, kSpan));
    QVERIFY(VORN_AddPointToChain(chain, QPointF(0, 0), kSpan));
    QVERIFY(
        !VORN_AddLineToChain(newChain(), {{QPointF(0, 0), QPointF(1, 1)}}, kSpan)); // another kind
    QVERIFY(finish() >= 0);
}

void TestGeographyBuilder::projectionsBecomeTags_data()
{
    QTest::addColumn<QString>("wkt");
    QTest::addColumn<QVariant>("projection");
    QTest::addColumn<QVariant>("unit");
    QTest::newRow("none") << QString() << QVariant("Unknown") << QVariant("Unknown");
    QTest::newRow("projected") << kProjected << QVariant("Grid") << QVariant("metre");
    QTest::newRow("geographic") << kGeographic << QVariant("Unprojected") << QVariant(9102);
}

void TestGeographyBuilder::projectionsBecomeTags()
{
    QFETCH(QString, wkt);
    QFETCH(QVariant, projection);
    QFETCH(QVariant, unit);
    TestModel model;
    QVERIFY(start());
    QVERIFY(!VORN_SetNewGeographyProjection(QStringLiteral("no system")));
    if (!wkt.isEmpty())
        QVERIFY(VORN_SetNewGeographyProjection(wkt));
    QVERIFY(VORN_AddPointToChain(newChain(), QPointF(1, 1), kSpan));
    QVERIFY(!VORN_SetNewGeographyProjection(kProjected)); // too late
    MVectorData &geography = model.vectorData(finish());
    QCOMPARE(geography.GetMetaData()[QStringLiteral("Projection")], projection);
    QCOMPARE(geography.GetMetaData()[QStringLiteral("Distance unit")], unit);
    QString text;
    QVERIFY(geography.GetDistanceUnit(text));
    QCOMPARE(text, unit.toString());
}

void TestGeographyBuilder::projectionIsTakenFromAnother()
{
    TestModel model;
    const auto finishPoint = [&]() -> MVectorData & {
        VORN_AddPointToChain(newChain(), QPointF(1, 1), kSpan);
        return model.vectorData(finish());
    };
    QVERIFY(start());
    QVERIFY(!VORN_SetAdjacencyTolerance(-1.0));
    QVERIFY(!VORN_SetAdjacencyTolerance(std::numeric_limits<double>::infinity()));
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

QTEST_GUILESS_MAIN(TestGeographyBuilder)
#include "tst_GeographyBuilder.moc"
