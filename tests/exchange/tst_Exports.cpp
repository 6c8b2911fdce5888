// SPDX-License-Identifier: MIT
// The three exports, byte by byte; the DBF table as an outside reader sees it.
#include <QFile>
#include <QtTest>
#include <shapefil.h>
#include "datainterface/DataAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/TimeAPI.h"
#include "support/model.h"
#include "support/support.h"

namespace {

QString fileText(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll())
                                          : QStringLiteral("no file");
}

struct DbfReader {
    explicit DbfReader(const QString &path)
        : handle(DBFOpen(QFile::encodeName(path).constData(), "rb"))
    {
    }
    ~DbfReader() { DBFClose(handle); }
    QString field(int index) const
    {
        char name[XBASE_FLDNAME_LEN_READ + 1] = "";
        int width = 0;
        int decimals = 0;
        const char type = DBFGetNativeFieldType(handle, index);
        DBFGetFieldInfo(handle, index, name, &width, &decimals);
        return QString::fromUtf8(name) + ' ' + QLatin1Char(type) + ' ' + QString::number(width)
               + '.' + QString::number(decimals);
    }
    QString cell(int record, int index) const
    {
        return QString::fromUtf8(DBFReadStringAttribute(handle, record, index)).trimmed();
    }
    DBFHandle handle;
};

// Two objects; a decimal dataset over two intervals and a text dataset over the second half of
// them.
struct Fixture {
    explicit Fixture(TimeFormat format) : geography(addPoints(2, QStringLiteral("g"), format))
    {
        numbers = VORN_NewVectorDataset(geography, QStringLiteral("mean value"), TimeSlice,
                                        DecimalType, 1, QString());
        texts = VORN_NewVectorDataset(geography, QStringLiteral("name"), TimeSlice, StringType, 1,
                                      QString());
        source = model.vectorData(geography).GetVectorDataSource();
    }
    void fill(qint64 a, qint64 b, qint64 c)
    {
        VORN_AddDataValues(numbers, 0, {a, b, true, false}, QVector<double>{0.1, 2.0}, {1}, true,
                           true);
        VORN_AddDataValues(numbers, 0, {b, c, true, true}, QVector<double>{-12345678.0, 4.5}, {},
                           true, true);
        VORN_AddDataValues(texts, 0, {b, c, true, true},
                           QVector<QString>{"plain", "with, \"quotes\""}, {}, true, true);
    }
    TestModel model;
    int geography;
    int numbers = -1;
    int texts = -1;
    MVectorDataSource *source = nullptr;
};

} // namespace

class TestExports : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void csv();
    void geoeas();
    void datesAndTimes_data();
    void datesAndTimes();
    void rangeCutsTheIntervals();
    void refusals();
    void dbf();
    void dbfNamesStayDistinct();
    void dbfHoldsTheMissingText();
};

void TestExports::csv()
{
    Fixture fixture(TF_Integer);
    fixture.fill(0, 10, 20);
    const QString path = fixture.model.path(QStringLiteral("out.csv"));
    QVERIFY(fixture.source->ExportDatasetsAsCSV(path, {fixture.numbers, fixture.texts}, TF_Integer,
                                                0, 100, QStringLiteral("NA"), 0));
    QCOMPARE(fileText(path), QStringLiteral("ObjectId,Start,End,mean value,name\n"
                                            "0,0,10,0.1,NA\n"
                                            "1,0,10,NA,NA\n"
                                            "0,10,20,-1.234568e+07,plain\n"
                                            "1,10,20,4.5,\"with, \"\"quotes\"\"\"\n"));
}

void TestExports::geoeas()
{
    Fixture fixture(TF_DateTime);
    const qint64 day = VORN_ConstructTime(TF_DateTime, 2001, 2, 3, 0, 0, 0);
    fixture.fill(day, day + 3661, day + 86399);
    const QString path = fixture.model.path(QStringLiteral("out.dat"));
    QVERIFY(fixture.source->ExportDatasetsAsGeoeas(path, QStringLiteral("a\ntitle"),
                                                   {fixture.numbers, fixture.texts}, TF_DateTime,
                                                   day, day + 100000, QStringLiteral("-99"), 0));
    QCOMPARE(fileText(path),
             QStringLiteral(
                 "a title\n7\nObjectId\nStartDate\nStartTime\nEndDate\nEndTime\nmean value\nname\n"
                 "0 20010203 0 20010203 10101 0.1 -99\n"
                 "1 20010203 0 20010203 10101 -99 -99\n"
                 "0 20010203 10101 20010203 235959 -12345678 plain\n"
                 "1 20010203 10101 20010203 235959 4.5 \"with, \"\"quotes\"\"\"\n"));
}

void TestExports::datesAndTimes_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<qint64>("time");
    QTest::addColumn<QString>("columns");
    QTest::newRow("epoch") << int(TF_Date) << qint64(0) << "17520914";
    QTest::newRow("date") << int(TF_Date) << VORN_ConstructTime(TF_Date, 1999, 12, 31, 0, 0, 0)
                          << "19991231";
    QTest::newRow("time of day") << int(TF_Time) << qint64(86399) << "235959";
    QTest::newRow("number") << int(TF_Integer) << qint64(-123456789012) << "-123456789012";
    QTest::newRow("second before the epoch") << int(TF_DateTime) << qint64(-1) << "17520913,235959";
}

void TestExports::datesAndTimes()
{
    QFETCH(int, format);
    QFETCH(qint64, time);
    QFETCH(QString, columns);
    const auto timeFormat = static_cast<TimeFormat>(format);
    Fixture fixture(timeFormat);
    QVERIFY(VORN_AddDataValue(fixture.numbers, 0, 0, {time, time, true, true}, 1.0, true, true));
    const QString path = fixture.model.path(QStringLiteral("out.csv"));
    QVERIFY(fixture.source->ExportDatasetsAsCSV(path, {fixture.numbers}, timeFormat, time, time,
                                                QString(), 0));
    QCOMPARE(fileText(path).section('\n', 1, 1), "0," + columns + ',' + columns + ",1");
}

void TestExports::rangeCutsTheIntervals()
{
    Fixture fixture(TF_Integer);
    const QString path = fixture.model.path(QStringLiteral("out.csv"));
    QVERIFY(fixture.source->ExportDatasetsAsCSV(path, {fixture.numbers}, TF_Integer, 0, 9,
                                                QString(), 0));
    QCOMPARE(fileText(path), QStringLiteral("ObjectId,Start,End,mean value\n")); // no data, no rows
    fixture.fill(0, 10, 20);
    QVERIFY(fixture.source->ExportDatasetsAsCSV(path, {fixture.numbers}, TF_Integer, 12, 15,
                                                QString(), 0));
    QCOMPARE(fileText(path).section('\n', 1, 1), QStringLiteral("0,12,15,-1.234568e+07"));
    QCOMPARE(fileText(path).count('\n'), 3);
}

void TestExports::refusals()
{
    Fixture fixture(TF_Integer);
    fixture.fill(0, 10, 20);
    const QString inNoFolder = fixture.model.path(QStringLiteral("none/out"));
    const QString path = fixture.model.path(QStringLiteral("out"));
    const QList<DataId> unknown{fixture.numbers, fixture.texts + 1};
    QVERIFY(!fixture.source->ExportDatasetsAsCSV(inNoFolder, {fixture.numbers}, TF_Integer, 0, 9,
                                                 QString(), 0));
    QVERIFY(!fixture.source->ExportDatasetsAsDBF(inNoFolder, {fixture.numbers}, TF_Integer, 0, 9,
                                                 QString(), 0));
    QVERIFY(!fixture.source->ExportDatasetsAsGeoeas(path, QString(), unknown, TF_Integer, 0, 9,
                                                    QString(), 0));
    QVERIFY(!QFile::exists(path));
    if (QFile::exists(QStringLiteral("/dev/full")))
        QVERIFY(!fixture.source->ExportDatasetsAsCSV(QStringLiteral("/dev/full"), {fixture.numbers},
                                                     TF_Integer, 0, 9, QString(), 0));
}

void TestExports::dbf()
{
    Fixture fixture(TF_DateTime);
    const qint64 day = VORN_ConstructTime(TF_DateTime, 2001, 2, 3, 0, 0, 0);
    fixture.fill(day, day + 3661, day + 86399);
    const QString path = fixture.model.path(QStringLiteral("out.dbf"));
    QVERIFY(fixture.source->ExportDatasetsAsDBF(path, {fixture.numbers, fixture.texts}, TF_DateTime,
                                                day, day + 100000, QStringLiteral("-9999"), 0));
    const DbfReader table(path);
    QVERIFY(table.handle);
    QCOMPARE(DBFGetRecordCount(table.handle), 4);
    const QStringList names{"ObjectId", "StartDate",  "StartTime", "EndDate",
                            "EndTime",  "mean_value", "name"};
    QCOMPARE(DBFGetFieldCount(table.handle), names.size());
    for (int i = 0; i < names.size(); ++i)
        QVERIFY2(table.field(i).startsWith(names[i] + (i == 6 ? " C" : " N")),
                 qPrintable(table.field(i)));
    QCOMPARE(table.field(0), QStringLiteral("ObjectId N 11.0"));
    QCOMPARE(table.cell(3, 0), QStringLiteral("1"));
    QCOMPARE(table.cell(3, 1), QStringLiteral("20010203"));
    QCOMPARE(table.cell(3, 2), QStringLiteral("10101"));
    QCOMPARE(table.cell(3, 4), QStringLiteral("235959"));
    QCOMPARE(table.cell(0, 5).toDouble(), 0.1);
    QCOMPARE(table.cell(1, 5).toDouble(), -9999.0);
    QCOMPARE(table.cell(2, 5).toDouble(), -12345678.0);
    QCOMPARE(table.cell(3, 6), QStringLiteral("with, \"quotes\""));
    QCOMPARE(table.cell(0, 6), QStringLiteral("-9999"));
}

void TestExports::dbfNamesStayDistinct()
{
    TestModel model;
    const int geography = addPoints(1);
    MVectorDataSource *source = model.vectorData(geography).GetVectorDataSource();
    QList<DataId> ids;
    for (const char *name :
         {"temperature in May", "temperature in June", "end", "Größe in Zentimetern"})
        ids.append(VORN_NewVectorDataset(geography, QString::fromUtf8(name), TimeSlice, IntegerType,
                                         1, QString()));
    for (const DataId &id : ids)
        VORN_AddDataValue(id, 0, 0, {0, 1, true, true}, 5, true, true);
    const QString path = model.path(QStringLiteral("out.dbf"));
    QVERIFY(source->ExportDatasetsAsDBF(path, ids, TF_Integer, 0, 9, QStringLiteral("0"), 0));
    const DbfReader table(path);
    QStringList names;
    for (int i = 3; i < 7; ++i)
        names.append(table.field(i).section(' ', 0, 0));
    QCOMPARE(names,
             (QStringList{"temperatur", "temperatu2", "end2", QString::fromUtf8("Größe_in")}));
    QCOMPARE(model.controller.log.size(), 4);
    QVERIFY(model.controller.log[1].contains(QLatin1String("temperatu2")));
}

void TestExports::dbfHoldsTheMissingText()
{
    TestModel model;
    const int geography = addPoints(2);
    MVectorDataSource *source = model.vectorData(geography).GetVectorDataSource();
    const int number =
        VORN_NewVectorDataset(geography, QStringLiteral("i"), TimeSlice, IntegerType, 1, QString());
    const int decimal =
        VORN_NewVectorDataset(geography, QStringLiteral("d"), TimeSlice, DecimalType, 1, QString());
    const int wide =
        VORN_NewVectorDataset(geography, QStringLiteral("w"), TimeSlice, DecimalType, 1, QString());
    const int text =
        VORN_NewVectorDataset(geography, QStringLiteral("s"), TimeSlice, StringType, 1, QString());
    VORN_AddDataValue(number, 0, 0, {0, 1, true, true}, 5, true, true);
    VORN_AddDataValue(decimal, 0, 0, {0, 1, true, true}, 5.0, true, true);
    VORN_AddDataValues(wide, 0, {0, 1, true, true}, QVector<double>{1e300, 0.25}, {}, true, true);
    VORN_AddDataValue(text, 0, 0, {0, 1, true, true}, QString::fromUtf8("äöüß"), true, true);
    const QString path = model.path(QStringLiteral("out.dbf"));
    QVERIFY(source->ExportDatasetsAsDBF(path, {number, decimal, text, wide}, TF_Integer, 0, 9,
                                        QStringLiteral("-99999.125"), 0));
    const DbfReader table(path);
    QCOMPARE(table.cell(1, 3), QStringLiteral("-99999"));
    QCOMPARE(table.cell(1, 4).toDouble(), -99999.125);
    QCOMPARE(table.cell(1, 5), QStringLiteral("-99999.125"));
    QCOMPARE(table.cell(0, 5), QString::fromUtf8("äöüß"));
    QCOMPARE(table.field(6), QStringLiteral("w C 20.0")); // decimals too wide for a number field
    QCOMPARE(table.cell(0, 6).toDouble(), 1e300);
    QCOMPARE(table.cell(1, 6).toDouble(), 0.25);
}

QTEST_GUILESS_MAIN(TestExports)
#include "tst_Exports.moc"
