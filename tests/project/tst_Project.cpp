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
#include "datainterface/VersionAPI.h"
#include "datainterface/WeightsAPI.h"
#include "support/model.h"
#include "support/support.h"

namespace {

const Interval kEarly{0, 10, true, false};
const Interval kLate{10, 20, true, true};

QByteArray bytesOf(const QString &text)
{
    QByteArray bytes;
    datainterface::BytesWriter out(&bytes);
    out << text;
    return bytes;
}

// Two geographies, every type of value in both storages, two realizations, models, metadata.
void fill(TestModel &model)
{
    const int first = addPoints(5, QString::fromUtf8("Zürich"), TF_DateTime);
    const int second = addPoints(3, QStringLiteral("second"));
    for (int geography : {first, second}) {
        for (const StorageType storage : {TimeSlice, TimeSeries}) {
            const auto add = [=](const char *name, DataType type) {
                return VORN_NewVectorDataset(geography, QString::fromUtf8(name), storage, type, 2,
                                             QStringLiteral("/folder/<3>"));
            };
            const int decimal = add("decimal", DecimalType);
            const int integer = add("integer", IntegerType);
            const int text = add("text", StringType);
            for (int realization = 0; realization < 2; ++realization) {
                for (unsigned int object = 0; object < 3; ++object) {
                    VORN_AddDataValue(decimal, realization, object, kEarly, object + 0.5, true,
                                      true);
                    VORN_AddDataValue(decimal, realization, object, kLate, object - 0.5, true,
                                      true);
                    VORN_AddDataValue(integer, realization, object, kLate, static_cast<int>(object),
                                      true, true);
                    VORN_AddDataValue(text, realization, object, kEarly,
                                      QString::fromUtf8("wörter"), true, true);
                }
            }
            VORN_SetDatasetAttribute(decimal, QStringLiteral("Weight"), 1.25);
            VORN_SetLongDescription(text, QStringLiteral("long"));
            VariogramModel variogram{DataId(decimal)};
            model.vectorData(geography).GetDataSource()->AddVariogramModel(decimal, variogram);
        }
    }
    model.controller.AddNonConVariogramModel(VariogramModel());
    model.vectorData(second).SetParentId(first);
    model.vectorData(second).SetParentObjectIds({4, 2, 0});
}

// The same in little.
void fillLittle(TestModel &model)
{
    const int geography = addPoints(3, QStringLiteral("little"));
    const int numbers =
        VORN_NewVectorDataset(geography, QStringLiteral("a"), TimeSlice, DecimalType, 1, QString());
    const int texts =
        VORN_NewVectorDataset(geography, QStringLiteral("b"), TimeSeries, StringType, 1, QString());
    VORN_AddDataValue(numbers, 0, 1, kEarly, 1.5, true, true);
    VORN_AddDataValue(texts, 0, 1, kEarly, QStringLiteral("text"), true, true);
    const int nearest = VORN_CreateNearestNeighborWeightSet(
        geography, QStringLiteral("c"), QString(), 1, InverseDistanceWeight, false, 1.0, 2.0);
    VORN_PrecalculateSpatialWeights(nearest, 5, false);
    const int clusters = VORN_CreateClusterSet(geography, QStringLiteral("d"), QString());
    VORN_AddToClusterSet(clusters, 1, kEarly, {{2, 0.5F, 0.0F, 1.0F}});
    model.controller.AddNonConVariogramModel(VariogramModel());
}

QString describe(const QVector<datum> &values)
{
    QString text;
    for (const datum &value : values)
        text += QString::number(value.type) + '/' + QString::number(value.decimalValue) + '/'
                + QString::number(value.integerValue) + '/' + value.stringValue + ' ';
    return text;
}

QString describe(const QVector<neighborDatum> &neighbors)
{
    QString text;
    for (const neighborDatum &one : neighbors)
        text += QString::number(one.id) + '*' + QString::number(one.weight) + '@'
                + QString::number(one.angle) + '/' + QString::number(one.distance) + ' ';
    return text;
}

// Everything a host can see of the model, as text.
QStringList contents(const TestModel &model)
{
    QStringList lines;
    for (int geography : model.controller.GetGeoData().keys()) {
        const GeoProps props = VORN_GetGeographyProperties(geography);
        lines.append(QString::number(props.id) + ' ' + props.name + ' '
                     + QString::number(props.objectCount) + ' ' + QString::number(props.type) + ' '
                     + text(props.timeBounds));
        for (const SpatialWeightSetProps &set : props.weightSets) {
            for (int object = 0; object < props.objectCount; ++object) {
                QVector<neighborDatum> neighbors;
                VORN_GetSpatialWeights(set.id, static_cast<unsigned int>(object), 5, neighbors,
                                       VORN_MissingData());
                lines.append(set.name + ' ' + describe(neighbors));
            }
        }
        for (const DataId &id :
             model.controller.GetGeoData().value(geography)->GetDataSource()->GetDatasetIds()) {
            const DatasetProps dataset = VORN_GetDatasetProperties(id);
            lines.append(QString::number(id) + ' ' + dataset.name + ' ' + dataset.path + ' '
                         + QString::number(dataset.variogramProps.size()) + ' '
                         + text(dataset.timeBounds));
            for (int realization = 0; realization < dataset.realizationCount; ++realization) {
                for (qint64 t : {5, 15}) {
                    QVector<datum> values;
                    QSet<int> missing;
                    VORN_GetDataValues(id, realization, t, values, missing);
                    lines.append(describe(values) + QString::number(missing.size()));
                }
            }
        }
    }
    lines.append(QString::number(model.controller.GetNonConVariogramModelIds().size()));
    return lines;
}

} // namespace

class TestProject : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void savedModelComesBack();
    void headerIsTheFilesForm();
    void damagedFilesAreRefused();
    void versionTexts_data();
    void versionTexts();
    void saveFailures();
};

void TestProject::savedModelComesBack()
{
    TestModel model;
    fill(model);
    const QStringList before = contents(model);
    const QString first = model.path(QStringLiteral("first"));
    const QString second = model.path(QStringLiteral("second"));
    QVERIFY(VORN_SaveProject(first));
    VORN_UnloadProject();
    QCOMPARE(model.controller.GetNonConVariogramModelIds(), QList<int>());
    QVERIFY(VORN_SaveProject(second)); // an empty one
    QVERIFY(VORN_LoadProject(second));
    QVERIFY(model.controller.GetGeoData().isEmpty());
    QVERIFY(VORN_LoadProject(first));
    QCOMPARE(contents(model), before);
    QVERIFY(VORN_LoadProject(first)); // which replaces all that is there
    QCOMPARE(contents(model), before);
    QVERIFY(VORN_SaveProject(second));
    QVERIFY(fileBytes(first) == fileBytes(second));

    // What is made after a load takes no id that was used before it.
    const int geography = addPoints(1);
    QVERIFY(geography > model.controller.GetGeoData().firstKey());
    QCOMPARE(model.controller.GetGeoData().size(), 3);
    QCOMPARE(model.controller.AddNonConVariogramModel(VariogramModel()), 1);
}

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
    fillLittle(model);
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

void TestProject::versionTexts_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("isRead");
    QTest::newRow("this one") << "4.00.021" << true;
    QTest::newRow("a newer one") << "4.00.022" << false;
    QTest::newRow("two digits of major") << "10.00.000" << false;
    QTest::newRow("no point") << "40000021" << false;
    QTest::newRow("empty") << "" << false;
}

void TestProject::versionTexts()
{
    QFETCH(QString, version);
    QFETCH(bool, isRead);
    TestModel model;
    addPoints(1);
    const QString path = model.path(QStringLiteral("project"));
    QVERIFY(VORN_SaveProject(path));
    VORN_UnloadProject();
    const QByteArray rest = fileBytes(path).mid(bytesOf(QStringLiteral("4.00.021")).size());
    QCOMPARE(model.load(bytesOf(version) + rest), isRead);
    QCOMPARE(model.controller.GetGeoData().size(), isRead ? 1 : 0);
}

void TestProject::saveFailures()
{
    TestModel model;
    fill(model);
    QVERIFY(!VORN_SaveProject(model.path(QStringLiteral("none/project"))));
    QVERIFY(!VORN_LoadProject(model.path(QStringLiteral("none/project"))));
    if (QFile::exists(QStringLiteral("/dev/full")))
        QVERIFY(!VORN_SaveProject(QStringLiteral("/dev/full")));
    QCOMPARE(contents(model).size(), 2 + 2 * 6 * 5 + 1);
}

QTEST_GUILESS_MAIN(TestProject)
#include "tst_Project.moc"
