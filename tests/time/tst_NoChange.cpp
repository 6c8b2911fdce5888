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
    void objects();
    void values();
    void unknownIdsFail();

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

void TestNoChange::objects()
{
    const auto span = [this](qint64 time) {
        Interval found;
        return VORN_GetStaticObjectInterval(mGeography, time, found) ? text(found) : QString();
    };
    QCOMPARE(span(10), QString("[0, 20)"));
    QCOMPARE(span(20), QString("[20, 60)"));
    QCOMPARE(span(60), QString("[60, 100]"));
    QCOMPARE(span(101), QString()); // nothing there
}

void TestNoChange::values()
{
    const auto span = [](const QVector<int> &datasets, qint64 time, bool known) {
        Interval found;
        const bool isKnown = VORN_GetNoChangeInterval(datasets, time, found);
        return isKnown == known ? text(TimeStamp(found)) : QString("wrong answer");
    };
    const QString always = text(TimeStamp(std::numeric_limits<qint64>::min(),
                                          std::numeric_limits<qint64>::max(), true, true));
    QCOMPARE(span({mFirst}, 30, true), QString("[25, 40]"));
    QCOMPARE(span({mFirst}, 22, true), QString("[20, 25)")); // cut by an object too
    QCOMPARE(span({mFirst, mSecond}, 35, true), QString("(30, 40]"));
    QCOMPARE(span({mSecond, mFirst}, 45, true), QString("(40, 50)"));
    QCOMPARE(span({mFirst, mSecond}, 70, false), QString("[60, 90]")); // no values of one
    QCOMPARE(span({mSecond}, 200, false), always);                     // no objects
    QCOMPARE(span({}, 5, true), always);
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
    TimeStep step;
    step.years = 2;
    QVERIFY(VORN_GetTimeStepString(mGeography, step, text));
    QCOMPARE(text, QStringLiteral("[2y,0m,0d]"));
}

QTEST_GUILESS_MAIN(TestNoChange)
#include "tst_NoChange.moc"
