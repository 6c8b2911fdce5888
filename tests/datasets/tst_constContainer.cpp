// SPDX-License-Identifier: MIT
// The view of a dataset: what it holds, and for how long.
#include <QtTest>
#include <memory>
#include "datainterface/DataAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataset.h"
#include "datainterface/dataContainer.h"
#include "support/model.h"
#include "support/support.h"

class TestConstContainer : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { mModel.reset(); }
    void holdsTheValuesOfOneTime();
    void holdsTheDataForItsLife();
    void anEarlyCheckInIsNotRepeated();
    void outlivesItsDataset();
    void badRequestsRaise();
    void isComparedByValue();

private:
    int addDataset(DataType type);
    MVectorDataset &dataset(int id)
    {
        return dynamic_cast<MVectorDataset &>(
            *mModel->vectorData(mGeography).GetDataSource()->GetDataset(id));
    }
    int holders(int id) { return dataset(id).GetTimeSliceDecimalData(0)->first()->CheckOutCount(); }

    std::unique_ptr<TestModel> mModel;
    int mGeography = -1;
    int mDecimals = -1; ///< 1.5, missing, 3 on [0, 10]
};

void TestConstContainer::init()
{
    mModel = std::make_unique<TestModel>();
    mGeography = addPoints(3);
    mDecimals = addDataset(DecimalType);
    dataset(mDecimals).AddTimeSliceValues(0, stamp("[0, 10]"), QVector<double>{1.5, 9, 3}, {1},
                                          true, true);
}

int TestConstContainer::addDataset(DataType type)
{
    return VORN_NewVectorDataset(mGeography, "d", TimeSlice, type, 1, "/");
}

void TestConstContainer::holdsTheValuesOfOneTime()
{
    const VORN_ConstDataContainer decimals(mDecimals, 5, 0, false);
    QCOMPARE(decimals.type(), VORN_DataContainer::DoubleData);
    QCOMPARE(decimals.count(), 3);
    QCOMPARE(decimals.validCount(), 2);
    QCOMPARE(decimals[2], 3.0);
    QCOMPARE(decimals.strvalue(0), QString("1.5"));
    QCOMPARE(raisedText([&] { decimals[1]; }), QString("Missing data value"));
    const int texts = addDataset(StringType);
    QCOMPARE(VORN_ConstDataContainer(texts, 5, 0, false).validCount(), 0);
    dataset(texts).AddTimeSliceValues(0, stamp("[0, 10]"), QVector<QString>{"b", "2", "a"}, {},
                                      true, true);
    const VORN_ConstDataContainer container(texts, 5, 0, false);
    QVector<int> order;
    container.getSortedIndices(order);
    QCOMPARE(order, (QVector<int>{1, 2, 0}));
    QCOMPARE(container.intvalue(1), qint64(2));
    VORN_ConstDataContainer values;
    QVERIFY(!dataset(mDecimals).GetStaticData(0, values));
    dataset(mDecimals).SetStatic(true);
    QVERIFY(dataset(mDecimals).GetStaticData(0, values));
    QCOMPARE(values[0], 1.5);
}

void TestConstContainer::holdsTheDataForItsLife()
{
    {
        const VORN_ConstDataContainer first(mDecimals, 5, 0, false);
        QCOMPARE(holders(mDecimals), 1);
        VORN_ConstDataContainer second(first);
        QCOMPARE(holders(mDecimals), 2);
        second = VORN_ConstDataContainer();
        QCOMPARE(holders(mDecimals), 1);
        second = first;
        QCOMPARE(holders(mDecimals), 2);
    }
    QCOMPARE(holders(mDecimals), 0);
}

void TestConstContainer::anEarlyCheckInIsNotRepeated()
{
    dataset(mDecimals).CheckOutTimeSlice(0, 5, 0);
    {
        const VORN_ConstDataContainer container(mDecimals, 5, 0, false);
        QVERIFY(container.CheckInData(0, 5, 0));
        QCOMPARE(holders(mDecimals), 1);
    }
    QCOMPARE(holders(mDecimals), 1); // somebody else's
    dataset(mDecimals).CheckInTimeSlice(0, 5, 0);
}

void TestConstContainer::outlivesItsDataset()
{
    const VORN_ConstDataContainer container(mDecimals, 5, 0, false);
    QVERIFY(VORN_RemoveDataset(mDecimals));
    QCOMPARE(container[0], 1.5);
    QCOMPARE(raisedText([&] { container.CheckInData(0, 5, 0); }), QString("Invalid dataset type"));
}

void TestConstContainer::badRequestsRaise()
{
    const QString shape("data.doubleVectorData.size() == nObjects");
    QCOMPARE(raisedText([&] { VORN_ConstDataContainer(0x7FFF0000, 0, 0, false); }),
             QString("Invalid geography id"));
    QCOMPARE(raisedText([&] { VORN_ConstDataContainer(mDecimals + 50, 0, 0, false); }),
             QString("Invalid dataset type"));
    QCOMPARE(raisedText([&] { VORN_ConstDataContainer(mDecimals, 0, 3, false); }), shape);
    dataset(mDecimals).Resize(2);
    QCOMPARE(raisedText([&] { VORN_ConstDataContainer(mDecimals, 0, 0, false); }), shape);
    QCOMPARE(holders(mDecimals), 0);
}

void TestConstContainer::isComparedByValue()
{
    const VORN_ConstDataContainer view(mDecimals, 5, 0, false);
    VORN_DataContainer copy(view);
    QCOMPARE(copy.validCount(), 2);
    QVERIFY(copy.compareData(view));
    copy.setValue(0, 7.0);
    QVERIFY(!copy.compareData(view));
    copy = view;
    copy.setValue(1, 0.0);
    QVERIFY(!copy.compareData(view)); // present here, missing there
    QVERIFY(!VORN_DataContainer(VORN_DataContainer::Int32Data, 3).compareData(view));
}

QTEST_GUILESS_MAIN(TestConstContainer)
#include "tst_constContainer.moc"
