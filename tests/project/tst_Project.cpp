// SPDX-License-Identifier: MIT
// The project file: what is saved comes back, and what is no project is refused without harm.
#include <QColor>
#include <QFile>
#include <QtTest>
#include "Common/detail/streams.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/ProjectAPI.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/VersionAPI.h"
#include "datainterface/WeightsAPI.h"
#include "support/model.h"
#include "support/support.h"

namespace {

const Interval kEarly{0, 10, true, false};
QByteArray bytesOf(const QString &text)
{
    QByteArray bytes;
    datainterface::BytesWriter out(&bytes);
    out << text;
    return bytes;
}

// Numbers, texts, cells, weights and a model.
void fill(TestModel &model)
{
    const int geography = addPoints(3, QStringLiteral("little"));
    const int numbers =
        VORN_NewVectorDataset(geography, QStringLiteral("a"), TimeSlice, DecimalType, 1, QString());
    const int texts =
        VORN_NewVectorDataset(geography, QStringLiteral("b"), TimeSeries, StringType, 1, QString());
    VORN_AddDataValue(numbers, 0, 1, kEarly, 1.5, true, true);
    VORN_AddDataValue(texts, 0, 1, kEarly, QStringLiteral("text"), true, true);
    const int grid = addGrid(1, 2);
    const int cells = VORN_NewRasterDataset(grid, "e", RasterIntegerType, 1, 32, "/a");
    VORN_AddRasterValues(cells, 0, kEarly, QVector<int>{1, 2}, 2, true, true);
    const int nearest = VORN_CreateNearestNeighborWeightSet(
        geography, QStringLiteral("c"), QString(), 1, InverseDistanceWeight, false, 1.0, 2.0);
    VORN_PrecalculateSpatialWeights(nearest, 5, false);
    const int clusters = VORN_CreateClusterSet(geography, QStringLiteral("d"), QString());
    VORN_AddToClusterSet(clusters, 1, kEarly, {{2, 0.5F, 0.0F, 1.0F}});
    model.controller.AddNonConVariogramModel(VariogramModel());
}

} // namespace

class TestProject : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void headerIsTheFilesForm();
    void damagedFilesAreRefused();
    void versionTexts();
    void saveFailures();
};

void TestProject::headerIsTheFilesForm()
{
    TestModel model;
    addPoints(1, QStringLiteral("one"));
    const QString path = model.path(QStringLiteral("project"));
    QVERIFY(VORN_SaveProject(path));
    QByteArray expected;
    datainterface::BytesWriter out(&expected);
    out << QStringLiteral("4.00.021") << QStringLiteral("Meridor");
    // A colour of the RGB form: four 16-bit channels of 0x101 times the 8-bit value, alpha first.
    out << qint8(1) << quint16(0xFFFF) << quint16(0xFFFF) << quint16(146 * 0x101) << quint16(0)
        << quint16(0);
    out << qint8(1) << qint8(1) << qint8(0) << qint8(0) << qint32(0) << qint32(0) << qint32(0);
    out << qint32(1) << QStringLiteral("one") << qint8(1) << QStringLiteral("one");
    QCOMPARE(fileBytes(path).left(expected.size()).toHex(), expected.toHex());
}

void TestProject::damagedFilesAreRefused()
{
    TestModel model;
    fill(model);
    const QString path = model.path(QStringLiteral("project"));
    QVERIFY(VORN_SaveProject(path));
    const QStringList before = contents(model);
    const QByteArray bytes = fileBytes(path);
    VORN_UnloadProject();
    for (int length = 0; length < bytes.size(); ++length) {
        QVERIFY2(!model.load(bytes.left(length)), qPrintable(QString::number(length)));
        VORN_UnloadProject();
    }
    model.loadFlipped(bytes, 400, [&model] { contents(model); });
    QVERIFY(model.load(bytes));
    QCOMPARE(contents(model), before);
}

void TestProject::versionTexts()
{
    TestModel model;
    addPoints(1);
    const QString path = model.path("project");
    QVERIFY(VORN_SaveProject(path));
    const QByteArray rest = fileBytes(path).mid(bytesOf("4.00.021").size());
    // Newer, two digits of major, without its points, empty.
    for (const char *version : {"4.00.021", "4.00.022", "10.00.000", "40000021", ""}) {
        VORN_UnloadProject();
        const bool isRead = version == QByteArray("4.00.021");
        QVERIFY2(model.load(bytesOf(version) + rest) == isRead, version);
        QCOMPARE(model.controller.GetGeoData().size(), isRead ? 1 : 0);
    }
}

void TestProject::saveFailures()
{
    TestModel model;
    fill(model);
    const QStringList before = contents(model);
    QVERIFY(!VORN_SaveProject(model.path("none/project")));
    QVERIFY(!VORN_LoadProject(model.path("none/project")));
    if (QFile::exists("/dev/full"))
        QVERIFY(!VORN_SaveProject("/dev/full"));
    QCOMPARE(contents(model), before);
    VORN_UnloadProject();
    QVERIFY(VORN_SaveProject(model.path("empty")));
    QVERIFY(VORN_LoadProject(model.path("empty")));
    QVERIFY(model.controller.GetGeoData().isEmpty());
}

QTEST_GUILESS_MAIN(TestProject)
#include "tst_Project.moc"
