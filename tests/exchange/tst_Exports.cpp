// SPDX-License-Identifier: MIT
// The three exports, byte by byte; the DBF table as an outside reader sees it.
#include <QFile>
#include <QTemporaryFile>
#include <QtTest>
#include <csignal>
#include <shapefil.h>
#include <sys/resource.h>
#include <unistd.h>
#include "datainterface/DataAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/TimeAPI.h"
#include "support/checks.h"
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
    void datesAndTimes();
    void rangeCutsTheIntervals();
    void everyFormatRefuses();
    void fullDisksAreTold();
    void numbersThatAreNotFiniteAreMissing();
    void valuesAreReadOnceForSeveralTimes();
    void dbf();
    void dbfNamesStayDistinct();
    void dbfHoldsTheMissingText();
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

void TestExports::datesAndTimes()
{
    const auto columns = [](TimeFormat format, qint64 time) {
        Fixture fixture(format);
        VORN_AddDataValue(fixture.numbers, 0, 0, {time, time, true, true}, 1.0, true, true);
        const QString path = fixture.model.path("out.csv");
        fixture.source->ExportDatasetsAsCSV(path, {fixture.numbers}, format, time, time, "", 0);
        return fileText(path).section('\n', 1, 1);
    };
    QCOMPARE(columns(TF_Date, 0), QString("0,17520914,17520914,1")); // the epoch
    QCOMPARE(columns(TF_Time, 86399), QString("0,235959,235959,1"));
    QCOMPARE(columns(TF_Integer, -123456789012), QString("0,-123456789012,-123456789012,1"));
    QCOMPARE(columns(TF_DateTime, -1), QString("0,17520913,235959,17520913,235959,1"));
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

void TestExports::everyFormatRefuses()
{
    Fixture fixture(TF_Integer);
    fixture.fill(0, 10, 20);
    const int known = fixture.texts;
    const auto refuses = [&](int id, int realization, int end, const char *name) {
        bool isRefused = true;
        for (const Format format : kFormats) {
            const QString path = fixture.model.path(name);
            const QList<DataId> ids{fixture.numbers, id};
            isRefused &= !exportAs(format, *fixture.source, path, ids, "NA", realization, 0, end)
                         && fileText(path) == "no file";
        }
        return isRefused;
    };
    QVERIFY(refuses(known + 1, 0, 9, "out"));
    QVERIFY(refuses(known, -1, 9, "out"));
    QVERIFY(refuses(known, 1, 9, "out")); // beyond the last realization
    QVERIFY(refuses(known, 0, -1, "out"));
    QVERIFY(refuses(known, 0, 9, "none/out"));
}

void TestExports::fullDisksAreTold()
{
    struct Case {
        int objects;
        int percent; // of the file's size that there is room for; -1: a full device
    };
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    // Found by the last flush of a short file, and by the rows.
    for (const Case &one : {Case{10, -1}, {20000, -1}, {20000, 99}, {20000, 40}}) {
        if (one.percent < 0 && !QFile::exists("/dev/full"))
            continue;
        TestModel model;
        const int geography = addPoints(one.objects);
        const int id = VORN_NewVectorDataset(geography, "i", TimeSlice, IntegerType, 1, QString());
        VORN_AddDataValues(id, 0, {0, 1, true, true}, QVector<int>(one.objects, 123), {}, true,
                           true);
        MVectorDataSource &source = *model.vectorData(geography).GetVectorDataSource();
        for (const Format format : kFormats) {
            const QString path = model.path(QStringLiteral("out%1").arg(format));
            const InCase inPath(path);
            QVERIFY(exportAs(format, source, path, {id}));
            rlimit whole{};
            getrlimit(RLIMIT_FSIZE, &whole);
            rlimit cut = whole;
            if (one.percent >= 0)
                cut.rlim_cur = static_cast<rlim_t>(QFileInfo(path).size() * one.percent / 100);
            QFile::remove(path);
            if (one.percent < 0)
                QFile::link("/dev/full", path);
            // The exports' libraries are not to write to the host's terminal.
            QTemporaryFile printed;
            QVERIFY(printed.open());
            const int terminal = dup(STDERR_FILENO);
            dup2(printed.handle(), STDERR_FILENO);
            setrlimit(RLIMIT_FSIZE, &cut);
            const bool isDone = exportAs(format, source, path, {id});
            setrlimit(RLIMIT_FSIZE, &whole);
            dup2(terminal, STDERR_FILENO);
            close(terminal);
            QCOMPARE(fileBytes(printed.fileName()), QByteArray());
            QVERIFY(!isDone);
        }
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
    const QString path = fixture.model.path("out.dbf");
    QVERIFY(fixture.source->ExportDatasetsAsDBF(path, {fixture.numbers, fixture.texts}, TF_DateTime,
                                                day, day + 100000, "-9999", 0));
    const DbfReader table(path);
    QStringList names;
    for (int i = 0; i < DBFGetFieldCount(table.handle); ++i)
        names += table.field(i).section(' ', 0, 1);
    QCOMPARE(names.join(','), QString("ObjectId N,StartDate N,StartTime N,EndDate N,EndTime N,"
                                      "mean_value N,name C"));
    QCOMPARE(table.field(0), QString("ObjectId N 11.0"));
    QStringList rows;
    for (int record = 0; record < DBFGetRecordCount(table.handle); ++record)
        for (int i = 0; i < names.size(); ++i)
            rows += i == 5 ? QString::number(table.cell(record, i).toDouble(), 'g', 9)
                           : table.cell(record, i);
    QCOMPARE(rows.join(' '), QString("0 20010203 0 20010203 10101 0.1 -9999 "
                                     "1 20010203 0 20010203 10101 -9999 -9999 "
                                     "0 20010203 10101 20010203 235959 -12345678 plain "
                                     "1 20010203 10101 20010203 235959 4.5 with, \"quotes\""));
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
    const Interval span{0, 1, true, true};
    const auto add = [&](const char *name, DataType type, auto value) {
        const int id = VORN_NewVectorDataset(geography, name, TimeSlice, type, 1, QString());
        VORN_AddDataValue(id, 0, 0, span, value, true, true);
        return id;
    };
    const int number = add("i", IntegerType, 5);
    const int decimal = add("d", DecimalType, 5.0);
    const int wide = add("w", DecimalType, 1e300); // decimals too wide for a number field
    const int text = add("s", StringType, QString::fromUtf8("äöüß"));
    VORN_AddDataValue(wide, 0, 1, span, 0.25, true, true);
    const QString path = model.path("out.dbf");
    QVERIFY(exportAs(Dbf, *model.vectorData(geography).GetVectorDataSource(), path,
                     {number, decimal, text, wide}, "-99999.125"));
    const DbfReader table(path);
    QCOMPARE(table.cell(1, 3), QString("-99999"));
    QCOMPARE(table.cell(1, 4).toDouble(), -99999.125);
    QCOMPARE(table.cell(1, 5), QString("-99999.125"));
    QCOMPARE(table.cell(0, 5), QString::fromUtf8("äöüß"));
    QCOMPARE(table.field(6), QString("w C 20.0"));
    QCOMPARE(table.cell(0, 6).toDouble(), 1e300);
    QCOMPARE(table.cell(1, 6).toDouble(), 0.25);
}

void TestExports::dbfFieldsFitTheValues()
{
    // Beyond 2^53, where a double would lose the last second.
    const qint64 t = (qint64(1) << 60) + 1;
    // The field and its cells; the last object is missing.
    const auto written = [t](const QVector<double> &values, const char *missing, bool isWhole) {
        TestModel model;
        const int geography = addPoints(values.size() + 1);
        const int id = VORN_NewVectorDataset(geography, "v", TimeSlice,
                                             isWhole ? IntegerType : DecimalType, 2, QString());
        const Interval when{t, t, true, true};
        const auto add = [&](int realization, int object, double value) {
            const auto at = static_cast<unsigned>(object);
            if (isWhole)
                VORN_AddDataValue(id, realization, at, when, int(value), true, true);
            else
                VORN_AddDataValue(id, realization, at, when, value, true, true);
        };
        // Realization 0 and its statistics say that one digit is enough.
        add(0, 0, 1.0);
        double least = 0.0;
        VORN_GetMin(id, 0, least);
        add(1, 0, 1.0);
        VORN_SetMissingVectorId(id, 1, 0, when);
        for (int i = 0; i < values.size(); ++i)
            add(1, i, values[i]);
        const QString path = model.path("out.dbf");
        exportAs(Dbf, *model.vectorData(geography).GetVectorDataSource(), path, {id}, missing, 1, t,
                 t);
        const DbfReader table(path);
        QString found = table.field(3);
        for (int record = 0; record < DBFGetRecordCount(table.handle); ++record) {
            const bool isNull =
                DBFIsAttributeNULL(table.handle, record, 3) && found.contains(" N ");
            found += isNull ? QString("|null") : '|' + table.cell(record, 3);
            if (table.cell(record, 1) != QString::number(t))
                found += " at another time";
        }
        return found;
    };
    const auto whole = [&](const QVector<double> &values, const char *missing) {
        return written(values, missing, true);
    };
    const auto real = [&](const QVector<double> &values, const char *missing) {
        return written(values, missing, false);
    };
    QCOMPARE(whole({-1234567, 5}, ""), QString("v N 8.0|-1234567|5|null"));
    QCOMPARE(whole({-2147483648.0, 2147483647}, "-1"),
             QString("v N 11.0|-2147483648|2147483647|-1"));
    QCOMPARE(whole({3}, "NA"), QString("v N 2.0|3|null")); // no number
    QCOMPARE(real({3.5}, "inf"), QString("v N 4.1|3.5|null"));
    QCOMPARE(whole({3}, "1e300"), QString("v C 20.0|3|1e300")); // beyond any number field
    QCOMPARE(real({1e-18, 0.5}, ""),
             QString("v N 21.18|0.000000000000000001|0.500000000000000000|null"));
    QCOMPARE(real({1e20, -3.25, 1.0 / 3.0}, ""),
             QString("v C 20.0|1e+20|-3.25|0.3333333333333333|"));
    QCOMPARE(real({-1.2345678901234568e-300}, "-"), QString("v C 24.0|-1.2345678901234568e-300|-"));
    QCOMPARE(real({-0.25, 12}, ""), QString("v N 5.2|-0.25|12.00|null"));
    QCOMPARE(real({}, ""), QString("v N 2.0|null")); // nothing but missing
}

void TestExports::dbfHasTheNameThatWasAsked()
{
    for (const QString name : {"OUT.DBF", "a.b/table", "out.dbf.part"}) {
        Fixture fixture(TF_Integer);
        fixture.fill(0, 10, 20);
        const QFileInfo file(fixture.model.path(name));
        QDir().mkpath(file.path());
        QVERIFY(exportAs(Dbf, *fixture.source, file.filePath(), {fixture.texts}));
        // Nothing under the name that shapelib would give it.
        const QStringList files = file.dir().entryList({"*.dbf*", "table*"}, QDir::Files);
        QCOMPARE(files.filter(QRegularExpression("^(?!.*cpg)")), QStringList{file.fileName()});
    }
}

QTEST_GUILESS_MAIN(TestExports)
#include "tst_Exports.moc"
