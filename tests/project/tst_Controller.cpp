// SPDX-License-Identifier: MIT
// The controller and the functions that hand a request on to it.
#include <QFile>
#include <QFileInfo>
#include <QtTest>
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "frame/frameState.h"
#include "support/checks.h"
#include "support/model.h"
#include "support/support.h"

class TestController : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void namesAreNumberedFromTwo();
    void graphsOfOneDatasetHaveNoScheme();
    void filesThatAreNoGeography();
    void removedGeographyIsTheCallers();
    void scratchFilesAreUniqueAndPrivate();
    void testingRunNeedsNoHost();
};

void TestController::namesAreNumberedFromTwo()
{
    TestModel model;
    const int a = addPoints(1, "A");
    QCOMPARE(VORN_GetUniqueGeographyName("a"), QString("a"));
    QCOMPARE(VORN_GetUniqueGeographyName("A"), QString("A 2"));
    addPoints(1, "A 2");
    QCOMPARE(VORN_GetUniqueGeographyName("A"), QString("A 3"));
    QCOMPARE(VORN_GetUniqueGeographyName("A 2"), QString("A 2 2"));

    const QString name = QString::fromUtf8("Größe");
    const QString second = name + " 2";
    VORN_NewVectorDataset(a, name, TimeSlice, DecimalType, 1, QString());
    QCOMPARE(VORN_GetUniqueDatasetName(a, name), second);
    QCOMPARE(VORN_SuggestUniqueDatasetName(a, name), second);
    QCOMPARE(VORN_GetUniqueDatasetName(a + 77, name), name);
    QVERIFY(VORN_GetDatasetByName(a, name) >= 0);
    QCOMPARE(VORN_GetDatasetByName(a, name.toLower()), -1);
    ControllerBase other; // knows its own geographies, whichever controller is installed
    QCOMPARE(other.GetUniqueDatasetName(a, name), name);
    datainterface::setController(nullptr);
    QCOMPARE(model.controller.GetUniqueDatasetName(a, name), second);
    datainterface::setController(&model.controller);
}

void TestController::graphsOfOneDatasetHaveNoScheme()
{
    TestModel model;
    const QPointF points[2];
    const QRectF bounds;
    QCOMPARE(VORN_DisplayScatterplot(1, 2, 3, "s", ColorSchemeInfo(), points, &bounds), 1);
    VORN_DisplayBoxplot(4, 5, "b");
    VORN_DisplayHistogram(6, 7, "h");
    VORN_DisplayTimePlot(8, "t");
    QString asked;
    for (const auto &graph : model.controller.graphs)
        asked += QStringLiteral("%1%2 %3 %4 %5%6|")
                     .arg(graph.title)
                     .arg(graph.type)
                     .arg(graph.t)
                     .arg(graph.dataIds.last())
                     .arg(graph.points == points)
                     .arg(graph.bounds == &bounds);
    QCOMPARE(asked, QString("s0 3 2 11|b1 5 4 00|h2 7 6 00|t4 0 8 00|"));
}

void TestController::filesThatAreNoGeography()
{
    TestModel model;
    const auto open = [&](const QString &path) {
        return model.controller.AddNewVectorGeography(path, QStringLiteral("n"), QString(), TF_Date,
                                                      -1, nullptr);
    };
    QCOMPARE(raisedText([&] { open(model.path(QStringLiteral("none"))); }),
             QStringLiteral("Can't open file"));
    QFile file(model.path(QStringLiteral("text")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(open(file.fileName()), -1);
    file.write(QByteArray(10000, 'x'));
    file.close();
    QCOMPARE(open(file.fileName()), -1);
    QVERIFY(model.controller.GetGeoData().isEmpty());
}

void TestController::removedGeographyIsTheCallers()
{
    TestModel model;
    const int id = addPoints(1);
    const std::unique_ptr<MGeoData> geography(model.controller.GetGeoData().value(id));
    model.controller.ControllerBase::RemoveGeography(id);
    QCOMPARE(geography->GetName(), QStringLiteral("points"));
    QCOMPARE(VORN_GetGeographyProperties(id).id, -1);
}

void TestController::scratchFilesAreUniqueAndPrivate()
{
    QStringList paths;
    for (int i = 0; i < 3; ++i)
        paths.append(ControllerBase::GetVORNTempFile("TMP"));
    paths.removeDuplicates();
    QCOMPARE(paths.size(), 3);
    for (const QString &path : std::as_const(paths)) {
        const QFileInfo info(path);
        QVERIFY(info.exists());
        QCOMPARE(info.size(), 0);
        QVERIFY(info.fileName().startsWith(QLatin1String("TMP")));
        QVERIFY(!(info.permissions()
                  & (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther)));
        QFile::remove(path);
    }
}

void TestController::testingRunNeedsNoHost()
{
    VORN_InitializeForTesting();
    QVERIFY(datainterface::isTesting());
    const int id = addPoints(2);
    QVERIFY(id >= 0);
    const int dataset =
        VORN_NewVectorDataset(id, QStringLiteral("d"), TimeSlice, DecimalType, 1, QString());
    QVERIFY(VORN_AddDataValue(dataset, 0, 1, {0, 5, true, true}, 1.5, true, true));
    VORN_DoneWithTesting();
    QCOMPARE(answers({datainterface::isTesting(), datainterface::controller()}), "nn");
    VORN_DoneWithTesting();
}

QTEST_GUILESS_MAIN(TestController)
#include "tst_Controller.moc"
