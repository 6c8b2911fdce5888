// SPDX-License-Identifier: MIT
#include <QtTest>
#include <limits>
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/TimeAPI.h"
#include "support/support.h"

class TestNoChange : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { VORN_DoneWithTesting(); }
    void objects_data();
    void objects();
    void values_data();
    void values();
    void nothingAskedIsAllOfTime();
    void unknownIdsFail();
    void stepTextFollowsTheGeography();

private:
    int newDataset(const QString &name, const QList<TimeStamp> &slices);

    int mGeography = -1;
    int mFirst = -1;
    int mSecond = -1;
};

// One point that is always there and one that comes and goes.
void TestNoChange::initTestCase()
{
    VORN_InitializeForTesting();
    QVERIFY(VORN_StartNewVectorGeography(QRectF(0, 0, 10, 10), 0, 100, -1));
    for (const char *span : {"[0, 100]", "[20, 60)"}) {
        const int chain = VORN_CreateNewObjectChain();
        QVERIFY(VORN_AddPointToChain(static_cast<unsigned>(chain), QPointF(1 + chain, 2),
                                     interval(span)));
    }
    mGeography = VORN_FinishVectorGeography(QStringLiteral("g"), QString(), TF_Date);
    QVERIFY(mGeography >= 0);
    mFirst = newDataset(QStringLiteral("first"), stamps("[0, 25) [25, 40] (40, 50)"));
    mSecond = newDataset(QStringLiteral("second"), stamps("(30, 90]"));
}

int TestNoChange::newDataset(const QString &name, const QList<TimeStamp> &slices)
{
    const int id = VORN_NewVectorDataset(mGeography, name, TimeSlice, IntegerType, 1, QString());
    for (const TimeStamp &slice : slices)
        VORN_AddDataValues(id, 0, slice, QVector<int>{1, 2}, QSet<int>(), true, true);
    return id;
}

void TestNoChange::objects_data()
{
    QTest::addColumn<qint64>("time");
    QTest::addColumn<QString>("expected");
    QTest::newRow("before the second comes") << qint64(10) << "[0, 20)";
    QTest::newRow("when it comes") << qint64(20) << "[20, 60)";
    QTest::newRow("after it went") << qint64(60) << "[60, 100]";
    QTest::newRow("nothing there") << qint64(101) << QString();
}

void TestNoChange::objects()
{
    QFETCH(qint64, time);
    QFETCH(QString, expected);
    Interval found;
    QCOMPARE(VORN_GetStaticObjectInterval(mGeography, time, found), !expected.isEmpty());
    if (!expected.isEmpty())
        QCOMPARE(text(found), expected);
}

void TestNoChange::values_data()
{
    QTest::addColumn<QVector<int>>("datasets");
    QTest::addColumn<qint64>("time");
    QTest::addColumn<bool>("known");
    QTest::addColumn<QString>("expected");
    const QVector<int> first{mFirst}, both{mFirst, mSecond};
    QTest::newRow("cut by values") << first << qint64(30) << true << "[25, 40]";
    QTest::newRow("cut by both") << both << qint64(35) << true << "(30, 40]";
    QTest::newRow("cut by an object and values") << first << qint64(22) << true << "[20, 25)";
    QTest::newRow("the other order")
        << QVector<int>{mSecond, mFirst} << qint64(45) << true << "(40, 50)";
    QTest::newRow("no values of one") << both << qint64(70) << false << "[60, 90]";
    QTest::newRow("no objects") << QVector<int>{mSecond} << qint64(200) << false
                                << text(TimeStamp(std::numeric_limits<qint64>::min(),
                                                  std::numeric_limits<qint64>::max(), true, true));
}

void TestNoChange::values()
{
    QFETCH(QVector<int>, datasets);
    QFETCH(qint64, time);
    QFETCH(bool, known);
    Interval found;
    QCOMPARE(VORN_GetNoChangeInterval(datasets, time, found), known);
    QTEST(text(TimeStamp(found)), "expected");
}

void TestNoChange::nothingAskedIsAllOfTime()
{
    Interval found;
    QVERIFY(VORN_GetNoChangeInterval({}, 5, found));
    QCOMPARE(found.startTime, std::numeric_limits<qint64>::min());
    QCOMPARE(found.endTime, std::numeric_limits<qint64>::max());
}

void TestNoChange::unknownIdsFail()
{
    Interval found;
    QVERIFY(!VORN_GetStaticObjectInterval(mGeography + 1, 10, found));
    QVERIFY(!VORN_GetNoChangeInterval({mFirst, (mGeography + 1) << 16}, 30, found));
    QCOMPARE(text(found), QStringLiteral("[25, 40]")); // narrowed by what is known
    QVERIFY(!VORN_GetNoChangeInterval({mFirst + 1000}, 30, found));
    QString text = QStringLiteral("as it was");
    QVERIFY(!VORN_GetTimeStepString(mGeography + 1, TimeStep(), text));
    QCOMPARE(text, QStringLiteral("as it was"));
}

void TestNoChange::stepTextFollowsTheGeography()
{
    TimeStep step;
    step.years = 2;
    step.exact = true;
    QString text;
    QVERIFY(VORN_GetTimeStepString(mGeography, step, text));
    QCOMPARE(text, QStringLiteral("[2y,0m,0d] (exact)"));
}

QTEST_GUILESS_MAIN(TestNoChange)
#include "tst_NoChange.moc"
