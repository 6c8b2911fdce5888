// SPDX-License-Identifier: MIT
#include <QTranslator>
#include <QtTest>
#include "datainterface/TimeAPI.h"
#include "support/checks.h"
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
    void constructs()
    {
        const auto time = [](TimeFormat format, int a, int b, int c, int d, int e, int f) {
            return VORN_ConstructTime(format, a, b, c, d, e, f);
        };
        QCOMPARE(time(TF_Date, 1752, 9, 14, 99, 99, 99), qint64(0));
        QCOMPARE(time(TF_Date, 2000, 2, 30, 0, 0, 0), qint64(-1));
        // 90,352 days from 14 September 1752: Julian day numbers 2361222 and 2451545 + 29.
        QCOMPARE(time(TF_Date, 2000, 2, 29, 0, 0, 0), qint64(2451604 - 2361222) * kDay);
        QCOMPARE(time(TF_Time, 23, 59, 59, 0, 0, 0), qint64(86399));
        QCOMPARE(time(TF_Time, 24, 0, 0, 0, 0, 0), qint64(-1));
        QCOMPARE(time(TF_DateTime, 1752, 9, 13, 0, 0, 1), 1 - kDay);
        QCOMPARE(time(TF_DateTime, 1752, 9, 14, 0, 60, 0), qint64(-1));
        QCOMPARE(time(TF_Integer, -7, 0, 0, 0, 0, 0), qint64(-7));
        QCOMPARE(time(static_cast<TimeFormat>(9), 1, 1, 1, 1, 1, 1), qint64(-1));
        // Days before the epoch truncate toward it.
        QCOMPARE(datainterface::ConvertToDate(-1), QDate(1752, 9, 14));
        QCOMPARE(datainterface::ConvertToDate(-kDay - 1), QDate(1752, 9, 13));
    }

    void componentsOfADate()
    {
        int a = 0, b = 0, c = 0, d = 7, e = 7, f = 7;
        QVERIFY(VORN_GetTimeComponents(day(1999, 12, 31), TF_Date, &a, &b, &c, nullptr, nullptr,
                                       nullptr));
        QCOMPARE(QVector<int>({a, b, c}), QVector<int>({1999, 12, 31}));
        QVERIFY(VORN_GetTimeComponents(day(1999, 12, 31) + 3661, TF_DateTime, &a, nullptr, &c, &d,
                                       &e, &f));
        QCOMPARE(QVector<int>({a, c, d, e, f}), QVector<int>({1999, 31, 0, 0, 0}));
        QVERIFY(VORN_GetTimeComponents((qint64(5) << 32) | 0xFFFFFFFE, TF_Integer, &a, &b, &c, &d,
                                       &e, &f));
        QCOMPARE(a, -2);
        QVERIFY(!VORN_GetTimeComponents(3600, TF_Time, &a, &b, &c, &d, &e, &f));
        QVERIFY(datainterface::ConvertToTime(3600).isNull());
        QVERIFY(!VORN_GetTimeComponents(0, static_cast<TimeFormat>(4), &a, &b, &c, &d, &e, &f));
        QVERIFY(!VORN_GetTimeComponents(std::numeric_limits<qint64>::max(), TF_Date, &a, &b, &c, &d,
                                        &e, &f));
    }

    void steps_data()
    {
        QTest::addColumn<int>("format");
        QTest::addColumn<TimeStep>("by");
        QTest::addColumn<qint64>("from");
        QTest::addColumn<qint64>("expected");
        const auto check = [](const char *name, TimeFormat format, const TimeStep &by, qint64 from,
                              qint64 expected) {
            QTest::newRow(name) << int(format) << by << from << expected;
        };
        check("month end", TF_Date, step(0, 1, 0, false), day(2001, 1, 31), day(2001, 2, 28));
        check("exact month", TF_Date, step(0, 1, 0, true), day(2001, 1, 31), day(2001, 3, 2));
        check("years first", TF_Date, step(1, 1, 1, false), day(2000, 1, 31), day(2001, 3, 1));
        check("from a leap day", TF_Date, step(1, 0, 0, false), day(2000, 2, 29), day(2001, 2, 28));
        check("exact years", TF_Date, step(2, 0, -1, true), 0, 729 * kDay);
        check("exact days wrap at 32 bits", TF_Date, step(0, 0, 25000, true), 0,
              25000 * kDay - (qint64(1) << 32));
        check("drops the time of day", TF_Date, step(0, 0, 1, false), 5 * kDay + 30, 6 * kDay);
        check("within the day", TF_Time, clockStep(1, 2, 3), 10, 10 + 3723);
        check("stops at midnight", TF_Time, clockStep(1, 0, 0), 86000, 86399);
        check("below zero", TF_Time, clockStep(-1, 0, 0), 10, -3590);
        check("calendar drops the time of day", TF_DateTime, step(0, 1, 0, false),
              day(2000, 1, 31) + 59, day(2000, 2, 29));
        check("exact keeps it", TF_DateTime, step(0, 0, 1, true), 59, kDay + 59);
        TimeStep ticks;
        ticks.steps = -3;
        check("ticks", TF_Integer, ticks, 1, -2);
        check("no format", static_cast<TimeFormat>(8), ticks, 1, 1);
    }
    void steps()
    {
        QFETCH(int, format);
        QFETCH(TimeStep, by);
        QFETCH(qint64, from);
        QFETCH(qint64, expected);
        QCOMPARE(VORN_UpdateTime(static_cast<TimeFormat>(format), by, from), expected);
    }

    // Days at which the clocks of a zone are set: one without an hour, one without midnight.
    void zonesDoNotCount_data()
    {
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QDate>("date");
        QTest::newRow("an hour less") << QByteArray("Europe/Berlin") << QDate(2020, 3, 29);
        QTest::newRow("an hour more") << QByteArray("Europe/Berlin") << QDate(2020, 10, 25);
        QTest::newRow("no midnight") << QByteArray("America/Sao_Paulo") << QDate(2017, 10, 15);
    }
    void zonesDoNotCount()
    {
        QFETCH(QByteArray, zone);
        QFETCH(QDate, date);
        const bool hadZone = qEnvironmentVariableIsSet("TZ");
        const QByteArray before = qgetenv("TZ");
        qputenv("TZ", zone);
        tzset();
        const auto restore = qScopeGuard([&] {
            hadZone ? qputenv("TZ", before) : qunsetenv("TZ");
            tzset();
        });
        const auto clockChanges = [&date] {
            return QDateTime(date, QTime(12, 0)).offsetFromUtc()
                   != QDateTime(date.addDays(-1), QTime(12, 0)).offsetFromUtc();
        };
        if (!clockChanges())
            QSKIP("the machine does not know the zone");
        const qint64 t = day(date.year(), date.month(), date.day());
        for (const int hours : {-24, 1, 2, 24, 36})
            QCOMPARE(VORN_UpdateTime(TF_DateTime, clockStep(hours, 0, 0), t) - t,
                     hours * qint64(3600));
        QCOMPARE(VORN_UpdateTime(TF_DateTime, step(0, 0, 1, false), t) - t, kDay);
        int a = 0, b = 0, c = 0, d = 7, e = 7, f = 7;
        QVERIFY(VORN_GetTimeComponents(t, TF_DateTime, &a, &b, &c, &d, &e, &f));
        QCOMPARE(QVector<int>({a, b, c, d, e, f}),
                 QVector<int>({date.year(), date.month(), date.day(), 0, 0, 0}));
        QCOMPARE(VORN_ConstructTime(TF_DateTime, a, b, c, 23, 59, 59) - t, kDay - 1);
    }

    void texts()
    {
        const auto told = [](int format, qint64 time) {
            QString text;
            return VORN_GetTimeString(static_cast<TimeFormat>(format), time, text) ? text
                                                                                   : "failed";
        };
        const QLocale locale = QLocale::system();
        QCOMPARE(told(TF_Date, day(2000, 2, 29)),
                 locale.toString(QDate(2000, 2, 29), "d MMM yyyy"));
        QCOMPARE(told(TF_Time, 3600), QString());
        QCOMPARE(told(TF_DateTime, 3600),
                 QString(locale.toString(QDate(1752, 9, 14), "d MMM yyyy") + " "));
        QCOMPARE(told(TF_Integer, -5), QString("-5"));
        QCOMPARE(told(4, 1), QString());
    }

    void stepTexts()
    {
        const auto told = [](const TimeStep &step, int format) {
            return datainterface::TimeStepToString(step, static_cast<TimeFormat>(format));
        };
        TimeStep all = step(1, -2, 3, false);
        all.hours = 4;
        all.minutes = 5;
        all.seconds = 6;
        all.steps = 7;
        QCOMPARE(told(step(0, 1, 0, true), TF_Date), QString("[0y,1m,0d] (exact)"));
        QCOMPARE(told(all, TF_Time), QString("[4h,5m,6s]"));
        QCOMPARE(told(all, TF_DateTime), QString("[1y,-2m,3d] [4h,5m,6s]"));
        all.exact = true;
        QCOMPARE(told(all, TF_DateTime), QString("[1y,-2m,3d] [4h,5m,6s] (exact)"));
        QCOMPARE(told(all, TF_Integer), QString("7"));
        QCOMPARE(told(all, -1), QString());
    }

    void intervalTextAgreesWithTheStamp()
    {
        for (const TimeStamp &stamp : stamps("[1, 5) (0, 86400]")) {
            QString text;
            QVERIFY(VORN_GetIntervalString(TF_Integer, stamp, text));
            QCOMPARE(text, ::text(stamp));
            QVERIFY(VORN_GetIntervalString(TF_DateTime, stamp, text));
            QCOMPARE(text, stamp.toString(TF_DateTime, "d MMM yyyy", "hh:mm:ss"));
        }
    }

    void textsGoThroughTheTranslator()
    {
        class Minus : public QTranslator {
        public:
            bool isEmpty() const override { return false; }
            QString translate(const char *context, const char *source, const char *,
                              int) const override
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
};

QTEST_GUILESS_MAIN(TestCalendar)
#include "tst_Calendar.moc"
