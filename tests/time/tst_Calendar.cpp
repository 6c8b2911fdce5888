// SPDX-License-Identifier: MIT
#include <QTranslator>
#include <QtTest>
#include "datainterface/TimeAPI.h"
#include "support/support.h"
#include "time/calendar.h"

namespace {

constexpr qint64 kDay = 86400;

qint64 day(int year, int month, int dayOfMonth)
{
    return VORN_ConstructTime(TF_Date, year, month, dayOfMonth, 0, 0, 0);
}

TimeStep step(int years, int months, int days, bool exact)
{
    TimeStep step;
    step.years = years;
    step.months = months;
    step.days = days;
    step.exact = exact;
    return step;
}

TimeStep clockStep(int hours, int minutes, int seconds)
{
    TimeStep step;
    step.hours = hours;
    step.minutes = minutes;
    step.seconds = seconds;
    return step;
}

} // namespace

Q_DECLARE_METATYPE(TimeStep)

class TestCalendar : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void constructs_data();
    void constructs();
    void componentsOfADate();
    void timesOfDayHaveNoComponents();
    void daysBeforeTheEpochTruncateTowardIt();
    void steps_data();
    void steps();
    void texts_data();
    void texts();
    void stepTexts_data();
    void stepTexts();
    void intervalTextAgreesWithTheStamp();
    void textsGoThroughTheTranslator();
};

void TestCalendar::constructs_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QVector<int>>("parts");
    QTest::addColumn<qint64>("expected");
    using Parts = QVector<int>;
    QTest::newRow("epoch") << int(TF_Date) << Parts{1752, 9, 14, 99, 99, 99} << qint64(0);
    QTest::newRow("day after") << int(TF_Date) << Parts{1752, 9, 15, 0, 0, 0} << kDay;
    QTest::newRow("no such day") << int(TF_Date) << Parts{2000, 2, 30, 0, 0, 0} << qint64(-1);
    // 90,352 days from 14 September 1752: Julian day numbers 2361222 and 2451545 + 29.
    QTest::newRow("leap day") << int(TF_Date) << Parts{2000, 2, 29, 0, 0, 0}
                              << qint64(2451604 - 2361222) * kDay;
    QTest::newRow("time") << int(TF_Time) << Parts{23, 59, 59, 0, 0, 0} << qint64(86399);
    QTest::newRow("no such hour") << int(TF_Time) << Parts{24, 0, 0, 0, 0, 0} << qint64(-1);
    QTest::newRow("both") << int(TF_DateTime) << Parts{1752, 9, 13, 0, 0, 1} << 1 - kDay;
    QTest::newRow("no such minute")
        << int(TF_DateTime) << Parts{1752, 9, 14, 0, 60, 0} << qint64(-1);
    QTest::newRow("number") << int(TF_Integer) << Parts{-7, 0, 0, 0, 0, 0} << qint64(-7);
    QTest::newRow("no format") << 9 << Parts{1, 1, 1, 1, 1, 1} << qint64(-1);
}

void TestCalendar::constructs()
{
    QFETCH(int, format);
    QFETCH(QVector<int>, parts);
    QTEST(VORN_ConstructTime(static_cast<TimeFormat>(format), parts[0], parts[1], parts[2],
                             parts[3], parts[4], parts[5]),
          "expected");
}

void TestCalendar::componentsOfADate()
{
    int a = 0, b = 0, c = 0, d = 7, e = 7, f = 7;
    QVERIFY(
        VORN_GetTimeComponents(day(1999, 12, 31), TF_Date, &a, &b, &c, nullptr, nullptr, nullptr));
    QCOMPARE(QVector<int>({a, b, c}), QVector<int>({1999, 12, 31}));
    QVERIFY(
        VORN_GetTimeComponents(day(1999, 12, 31) + 3661, TF_DateTime, &a, nullptr, &c, &d, &e, &f));
    QCOMPARE(QVector<int>({a, c, d, e, f}), QVector<int>({1999, 31, 0, 0, 0}));
    QVERIFY(
        VORN_GetTimeComponents((qint64(5) << 32) | 0xFFFFFFFE, TF_Integer, &a, &b, &c, &d, &e, &f));
    QCOMPARE(a, -2);
    QVERIFY(!VORN_GetTimeComponents(0, static_cast<TimeFormat>(4), &a, &b, &c, &d, &e, &f));
    QVERIFY(!VORN_GetTimeComponents(std::numeric_limits<qint64>::max(), TF_Date, &a, &b, &c, &d, &e,
                                    &f));
}

void TestCalendar::timesOfDayHaveNoComponents()
{
    int a = 3;
    QVERIFY(
        !VORN_GetTimeComponents(3600, TF_Time, &a, nullptr, nullptr, nullptr, nullptr, nullptr));
    QCOMPARE(a, 3);
    QVERIFY(datainterface::ConvertToTime(3600).isNull());
}

void TestCalendar::daysBeforeTheEpochTruncateTowardIt()
{
    QCOMPARE(datainterface::ConvertToDate(-1), QDate(1752, 9, 14));
    QCOMPARE(datainterface::ConvertToDate(-kDay), QDate(1752, 9, 13));
    QCOMPARE(datainterface::ConvertToDate(-kDay - 1), QDate(1752, 9, 13));
}

void TestCalendar::steps_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<TimeStep>("step");
    QTest::addColumn<qint64>("from");
    QTest::addColumn<qint64>("expected");
    const auto row = [](const char *name, TimeFormat format, TimeStep by, qint64 from, qint64 to) {
        QTest::newRow(name) << int(format) << by << from << to;
    };
    row("month end", TF_Date, step(0, 1, 0, false), day(2001, 1, 31), day(2001, 2, 28));
    row("exact month", TF_Date, step(0, 1, 0, true), day(2001, 1, 31), day(2001, 3, 2));
    row("years first", TF_Date, step(1, 1, 1, false), day(2000, 1, 31), day(2001, 3, 1));
    row("from a leap day", TF_Date, step(1, 0, 0, false), day(2000, 2, 29), day(2001, 2, 28));
    row("exact years", TF_Date, step(2, 0, -1, true), 0, 729 * kDay);
    row("exact days wrap at 32 bits", TF_Date, step(0, 0, 25000, true), 0,
        25000 * kDay - (qint64(1) << 32));
    row("drops the time of day", TF_Date, step(0, 0, 1, false), 5 * kDay + 30, 6 * kDay);
    row("within the day", TF_Time, clockStep(1, 2, 3), 10, 10 + 3723);
    row("stops at midnight", TF_Time, clockStep(1, 0, 0), 86000, 86399);
    row("below zero", TF_Time, clockStep(-1, 0, 0), 10, -3590);
    row("calendar drops the time of day", TF_DateTime, step(0, 1, 0, false), day(2000, 1, 31) + 59,
        day(2000, 2, 29));
    row("exact keeps it", TF_DateTime, step(0, 0, 1, true), 59, kDay + 59);
    TimeStep ticks;
    ticks.steps = -3;
    row("ticks", TF_Integer, ticks, 1, -2);
    row("no format", static_cast<TimeFormat>(8), ticks, 1, 1);
}

void TestCalendar::steps()
{
    QFETCH(int, format);
    QFETCH(TimeStep, step);
    QFETCH(qint64, from);
    QTEST(VORN_UpdateTime(static_cast<TimeFormat>(format), step, from), "expected");
}

void TestCalendar::texts_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<qint64>("time");
    QTest::addColumn<QString>("expected");
    QTest::newRow("date") << int(TF_Date) << day(2000, 2, 29)
                          << QLocale::system().toString(QDate(2000, 2, 29), "d MMM yyyy");
    QTest::newRow("time") << int(TF_Time) << qint64(3600) << QString();
    QTest::newRow("both") << int(TF_DateTime) << qint64(3600)
                          << QString(QLocale::system().toString(QDate(1752, 9, 14), "d MMM yyyy")
                                     + " ");
    QTest::newRow("number") << int(TF_Integer) << qint64(-5) << "-5";
    QTest::newRow("no format") << 4 << qint64(1) << QString();
}

void TestCalendar::texts()
{
    QFETCH(int, format);
    QFETCH(qint64, time);
    QString text;
    QVERIFY(VORN_GetTimeString(static_cast<TimeFormat>(format), time, text));
    QTEST(text, "expected");
}

void TestCalendar::stepTexts_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<TimeStep>("step");
    QTest::addColumn<QString>("expected");
    TimeStep all = step(1, -2, 3, false);
    all.hours = 4;
    all.minutes = 5;
    all.seconds = 6;
    all.steps = 7;
    QTest::newRow("date, exact") << int(TF_Date) << step(0, 1, 0, true) << "[0y,1m,0d] (exact)";
    QTest::newRow("time") << int(TF_Time) << all << "[4h,5m,6s]";
    QTest::newRow("both") << int(TF_DateTime) << all << "[1y,-2m,3d] [4h,5m,6s]";
    all.exact = true;
    QTest::newRow("both, exact") << int(TF_DateTime) << all << "[1y,-2m,3d] [4h,5m,6s] (exact)";
    QTest::newRow("number") << int(TF_Integer) << all << "7";
    QTest::newRow("no format") << -1 << all << QString();
}

void TestCalendar::stepTexts()
{
    QFETCH(int, format);
    QFETCH(TimeStep, step);
    QTEST(datainterface::TimeStepToString(step, static_cast<TimeFormat>(format)), "expected");
}

void TestCalendar::intervalTextAgreesWithTheStamp()
{
    for (const TimeStamp &stamp : stamps("[1, 5) (0, 86400]")) {
        QString text;
        QVERIFY(VORN_GetIntervalString(TF_Integer, stamp, text));
        QCOMPARE(text, ::text(stamp));
        QVERIFY(VORN_GetIntervalString(TF_DateTime, stamp, text));
        QCOMPARE(text, stamp.toString(TF_DateTime, "d MMM yyyy", "hh:mm:ss"));
    }
}

void TestCalendar::textsGoThroughTheTranslator()
{
    class Minus : public QTranslator {
    public:
        bool isEmpty() const override { return false; }
        QString translate(const char *context, const char *source, const char *, int) const override
        {
            return qstrcmp(context, "MGeoData") == 0 && qstrcmp(source, "-5") == 0
                       ? QStringLiteral("minus five")
                       : QString();
        }
    } minus;
    QCoreApplication::installTranslator(&minus);
    QString text;
    VORN_GetTimeString(TF_Integer, -5, text);
    QCOMPARE(text, QStringLiteral("minus five"));
    VORN_GetTimeString(TF_Integer, -6, text);
    QCOMPARE(text, QStringLiteral("-6"));
    QCoreApplication::removeTranslator(&minus);
}

QTEST_GUILESS_MAIN(TestCalendar)
#include "tst_Calendar.moc"
