// SPDX-License-Identifier: MIT
// The three exports, byte by byte; the DBF table as an outside reader sees it.
#include <QFile>
#include <QtTest>
#include <csignal>
#include <fcntl.h>
#include <shapefil.h>
#include <sys/resource.h>
#include <unistd.h>
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

enum Format { Csv, Geoeas, Dbf };
const QVector<Format> kFormats{Csv, Geoeas, Dbf};

// From time 0 on, or over the times given.
bool exportAs(Format format, MVectorDataSource &source, const QString &path,
              const QList<DataId> &ids, const QString &missing = QString(), int realization = 0,
              qint64 start = 0, qint64 end = 1000)
{
    switch (format) {
    case Csv:
        return source.ExportDatasetsAsCSV(path, ids, TF_Integer, start, end, missing, realization);
    case Geoeas:
        return source.ExportDatasetsAsGeoeas(path, QStringLiteral("title"), ids, TF_Integer, start,
                                             end, missing, realization);
    case Dbf:
        break;
    }
    return source.ExportDatasetsAsDBF(path, ids, TF_Integer, start, end, missing, realization);
}

// What a scope prints on standard error.
class Printed {
public:
    explicit Printed(const QString &path) : mPath(path), mSaved(dup(STDERR_FILENO))
    {
        fflush(stderr);
        const int file = open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT, 0600);
        dup2(file, STDERR_FILENO);
        close(file);
    }
    ~Printed() { restore(); }
    Printed(const Printed &) = delete;
    Printed &operator=(const Printed &) = delete;
    QByteArray text()
    {
        restore();
        return fileBytes(mPath);
    }

private:
    void restore()
    {
        fflush(stderr);
        dup2(mSaved, STDERR_FILENO);
    }
    const QString mPath;
    const int mSaved;
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
    void everyFormatRefuses_data();
    void everyFormatRefuses();
    void fullDisksAreTold_data();
    void fullDisksAreTold();
    void numbersThatAreNotFiniteAreMissing();
    void valuesAreReadOnceForSeveralTimes();
    void dbf();
    void dbfNamesStayDistinct();
    void dbfHoldsTheMissingText();
    void dbfFieldsFitTheValues_data();
    void dbfFieldsFitTheValues();
    void dbfHasTheNameThatWasAsked();
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

void TestExports::everyFormatRefuses_data()
{
    QTest::addColumn<int>("unknownIds");
    QTest::addColumn<int>("realization");
    QTest::addColumn<int>("end");
    QTest::addColumn<QString>("name");
    QTest::newRow("id of no dataset") << 1 << 0 << 9 << "out";
    QTest::newRow("negative realization") << 0 << -1 << 9 << "out";
    QTest::newRow("realization beyond the last") << 0 << 1 << 9 << "out";
    QTest::newRow("range that ends before it starts") << 0 << 0 << -1 << "out";
    QTest::newRow("no such folder") << 0 << 0 << 9 << "none/out";
}

void TestExports::everyFormatRefuses()
{
    QFETCH(int, unknownIds);
    QFETCH(int, realization);
    QFETCH(int, end);
    QFETCH(QString, name);
    Fixture fixture(TF_Integer);
    fixture.fill(0, 10, 20);
    for (const Format format : kFormats) {
        const QString path = fixture.model.path(name);
        QCOMPARE(raisedText([&] {
                     QVERIFY(!exportAs(format, *fixture.source, path,
                                       {fixture.numbers, fixture.texts + unknownIds}, "NA",
                                       realization, 0, end));
                 }),
                 QString());
        QCOMPARE(fileText(path), QStringLiteral("no file"));
    }
}

void TestExports::fullDisksAreTold_data()
{
    QTest::addColumn<int>("objects");
    QTest::addColumn<int>(
        "percent"); // of the file's size that there is room for; -1: a full device
    QTest::newRow("device, last flush") << 10 << -1;
    QTest::newRow("device, rows") << 20000 << -1;
    QTest::newRow("limit, last flush") << 20000 << 99;
    QTest::newRow("limit, rows") << 20000 << 40;
}

void TestExports::fullDisksAreTold()
{
    QFETCH(int, objects);
    QFETCH(int, percent);
    if (percent < 0 && !QFile::exists(QStringLiteral("/dev/full")))
        QSKIP("no device that is always full");
    TestModel model;
    const int geography = addPoints(objects);
    const int id =
        VORN_NewVectorDataset(geography, QStringLiteral("i"), TimeSlice, IntegerType, 1, QString());
    QVERIFY(
        VORN_AddDataValues(id, 0, {0, 1, true, true}, QVector<int>(objects, 123), {}, true, true));
    MVectorDataSource &source = *model.vectorData(geography).GetVectorDataSource();
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    for (const Format format : kFormats) {
        const QString path = model.path(QStringLiteral("out%1").arg(format));
        QVERIFY2(exportAs(format, source, path, {id}), qPrintable(path));
        rlimit whole{};
        getrlimit(RLIMIT_FSIZE, &whole);
        rlimit cut = whole;
        if (percent >= 0)
            cut.rlim_cur = static_cast<rlim_t>(QFileInfo(path).size() * percent / 100);
        QFile::remove(path);
        if (percent < 0)
            QFile::link(QStringLiteral("/dev/full"), path);
        Printed printed(model.path(QStringLiteral("printed")));
        setrlimit(RLIMIT_FSIZE, &cut);
        const bool isDone = exportAs(format, source, path, {id});
        setrlimit(RLIMIT_FSIZE, &whole);
        QCOMPARE(printed.text(), QByteArray());
        QVERIFY2(!isDone, qPrintable(path));
    }
    std::signal(SIGXFSZ, before);
}

void TestExports::numbersThatAreNotFiniteAreMissing()
{
    Fixture fixture(TF_Integer);
    auto *dataset = static_cast<MVectorDataset *>(fixture.source->GetDataset(fixture.numbers));
    for (const double value : {qQNaN(), qInf(), -qInf()}) {
        QVERIFY(dataset->SetTimeSliceData(
            0, {{stamp("[0, 1]"), new TimeSliceData<double>(QVector<double>{value, 2.5}, {})}},
            true));
        const QString path = fixture.model.path(QStringLiteral("out.dbf"));
        for (const Format format : {Csv, Geoeas}) {
            QVERIFY(exportAs(format, *fixture.source, path, {fixture.numbers}, "NA"));
            QCOMPARE(fileText(path).section('\n', -3),
                     format == Csv ? QStringLiteral("0,0,1,NA\n1,0,1,2.5\n")
                                   : QStringLiteral("0 0 1 NA\n1 0 1 2.5\n"));
        }
        QVERIFY(exportAs(Dbf, *fixture.source, path, {fixture.numbers}));
        const DbfReader table(path);
        QCOMPARE(table.field(3), QStringLiteral("mean_value N 4.1"));
        QCOMPARE(DBFIsAttributeNULL(table.handle, 0, 3), 1);
        QCOMPARE(table.cell(1, 3), QStringLiteral("2.5"));
    }
}

// One dataset cuts the intervals of the others: gaps, slices and series that go on, a static one.
void TestExports::valuesAreReadOnceForSeveralTimes()
{
    TestModel model;
    const int geography = addPoints(2);
    MVectorDataSource &source = *model.vectorData(geography).GetVectorDataSource();
    const auto dataset = [&](const char *name, StorageType storage) {
        return VORN_NewVectorDataset(geography, name, storage, IntegerType, 1, QString());
    };
    const int fine = dataset("fine", TimeSlice);
    const int gap = dataset("gap", TimeSlice);
    const int series = dataset("series", TimeSeries);
    const int fixed = dataset("fixed", TimeSlice);
    for (int t = 0; t < 5; ++t)
        VORN_AddDataValues(fine, 0, {t, t, true, true}, QVector<int>{t, -t}, {}, true, true);
    VORN_AddDataValues(gap, 0, {0, 1, true, true}, QVector<int>{10, 11}, {}, true, true);
    VORN_AddDataValues(gap, 0, {3, 4, true, true}, QVector<int>{30, 31}, {1}, true, true);
    VORN_AddDataValue(series, 0, 0, {1, 3, true, true}, 5, true, true);
    VORN_AddDataValue(series, 0, 1, {2, 4, true, true}, 6, true, true);
    static_cast<MVectorDataset *>(source.GetDataset(fixed))->SetStatic(true);
    VORN_AddDataValues(fixed, 0, {0, 0, true, true}, QVector<int>{7, 8}, {}, true, true);
    const QString path = model.path(QStringLiteral("out.csv"));
    QVERIFY(exportAs(Csv, source, path, {fine, gap, series, fixed}, "-"));
    QStringList rows;
    for (const QString &row : fileText(path).split('\n').mid(1)) {
        if (!row.isEmpty() && row.section(',', 1, 1) == row.section(',', 2, 2))
            rows += row.section(',', 1, 1) + ':' + row.section(',', 3);
    }
    QCOMPARE(rows,
             (QStringList{"0:0,10,-,7", "0:0,11,-,8", "1:1,10,5,7", "1:-1,11,-,8", "2:2,-,5,7",
                          "2:-2,-,6,8", "3:3,30,5,7", "3:-3,-,6,8", "4:4,30,-,7", "4:-4,-,6,8"}));
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

void TestExports::dbfFieldsFitTheValues_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QVector<double>>("values");
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QStringList>("cells"); // the last object is missing
    const int real = DecimalType;
    const int whole = IntegerType;
    QTest::newRow("longer than the statistics know")
        << whole << QVector<double>{-1234567, 5} << ""
        << "v N 8.0" << QStringList{"-1234567", "5", "null"};
    QTest::newRow("ends of the range")
        << whole << QVector<double>{-2147483648.0, 2147483647} << "-1"
        << "v N 11.0" << QStringList{"-2147483648", "2147483647", "-1"};
    QTest::newRow("a missing text that is no number") << whole << QVector<double>{3} << "NA"
                                                      << "v N 2.0" << QStringList{"3", "null"};
    QTest::newRow("a missing text that is not finite") << real << QVector<double>{3.5} << "inf"
                                                       << "v N 4.1" << QStringList{"3.5", "null"};
    QTest::newRow("a missing number beyond any field") << whole << QVector<double>{3} << "1e300"
                                                       << "v C 20.0" << QStringList{"3", "1e300"};
    QTest::newRow("many decimals")
        << real << QVector<double>{1e-18, 0.5} << ""
        << "v N 21.18" << QStringList{"0.000000000000000001", "0.500000000000000000", "null"};
    QTest::newRow("too wide for a number")
        << real << QVector<double>{1e20, -3.25, 1.0 / 3.0} << ""
        << "v C 20.0" << QStringList{"1e+20", "-3.25", "0.3333333333333333", ""};
    QTest::newRow("longer than the text field is as a rule")
        << real << QVector<double>{-1.2345678901234568e-300} << "-"
        << "v C 24.0" << QStringList{"-1.2345678901234568e-300", "-"};
    QTest::newRow("negative zero and fractions")
        << real << QVector<double>{-0.25, 12} << ""
        << "v N 5.2" << QStringList{"-0.25", "12.00", "null"};
    QTest::newRow("nothing but missing") << real << QVector<double>{} << ""
                                         << "v N 2.0" << QStringList{"null"};
}

void TestExports::dbfFieldsFitTheValues()
{
    QFETCH(int, type);
    QFETCH(QVector<double>, values);
    QFETCH(QString, missing);
    QFETCH(QString, field);
    QFETCH(QStringList, cells);
    TestModel model;
    const int geography = addPoints(cells.size());
    MVectorDataSource &source = *model.vectorData(geography).GetVectorDataSource();
    // Beyond 2^53, where a double would lose the last second.
    const qint64 t = (qint64(1) << 60) + 1;
    const int id = VORN_NewVectorDataset(geography, QStringLiteral("v"), TimeSlice,
                                         static_cast<DataType>(type), 2, QString());
    // Realization 0 and its statistics say that one digit is enough.
    if (type == IntegerType)
        VORN_AddDataValue(id, 0, 0, {t, t, true, true}, 1, true, true);
    else
        VORN_AddDataValue(id, 0, 0, {t, t, true, true}, 1.0, true, true);
    double least = 0.0;
    QVERIFY(VORN_GetMin(id, 0, least));
    for (int i = 0; i < values.size(); ++i) {
        if (type == IntegerType)
            VORN_AddDataValue(id, 1, static_cast<unsigned>(i), {t, t, true, true},
                              static_cast<int>(values[i]), true, true);
        else
            VORN_AddDataValue(id, 1, static_cast<unsigned>(i), {t, t, true, true}, values[i], true,
                              true);
    }
    if (values.isEmpty()) {
        VORN_AddDataValue(id, 1, 0, {t, t, true, true}, 1.0, true, true);
        VORN_SetMissingVectorId(id, 1, 0, {t, t, true, true});
    }
    const QString path = model.path(QStringLiteral("out.dbf"));
    QVERIFY(exportAs(Dbf, source, path, {id}, missing, 1, t, t));
    const DbfReader table(path);
    QCOMPARE(table.field(3), field);
    QStringList found;
    for (int record = 0; record < DBFGetRecordCount(table.handle); ++record) {
        const bool isNull = DBFIsAttributeNULL(table.handle, record, 3) && field.contains(" N ");
        found += isNull ? QStringLiteral("null") : table.cell(record, 3);
        QCOMPARE(table.cell(record, 1), QString::number(t));
    }
    QCOMPARE(found, cells);
}

void TestExports::dbfHasTheNameThatWasAsked()
{
    Fixture fixture(TF_Integer);
    fixture.fill(0, 10, 20);
    for (const char *name : {"OUT.DBF", "a.b/table", "out.dbf.part"}) {
        const QString path = fixture.model.path(name);
        QDir().mkpath(QFileInfo(path).path());
        QVERIFY(exportAs(Dbf, *fixture.source, path, {fixture.texts}));
        const QString copy = fixture.model.path(QStringLiteral("copy.dbf"));
        QFile::remove(copy);
        QVERIFY2(QFile::copy(path, copy), name);
        const DbfReader table(copy);
        QCOMPARE(table.cell(1, 3), QStringLiteral("with, \"quotes\""));
        // shapelib's own name for it would end so.
        QVERIFY2(!QFile::exists(fixture.model.path(QStringLiteral("OUT.dbf")))
                     && !QFile::exists(path + ".dbf"),
                 name);
    }
}

QTEST_GUILESS_MAIN(TestExports)
#include "tst_Exports.moc"
