// SPDX-License-Identifier: MIT
#include <QtTest>
#include "datainterface/dataContainer.h"
#include "support/checks.h"
#include "support/support.h"

using Container = VORN_DataContainer;
using Type = VORN_DataContainer::DataType;

namespace {

/// Four numbers of an element type, the third missing.
template <class T> Container fourOf(Type type)
{
    const T values[] = {T(3), T(1), T(0), T(2)};
    return Container(type, values, 4, QSet<int>{2});
}

Container fourOfType(Type type)
{
    switch (type) {
    case Container::DoubleData:
        return fourOf<double>(type);
    case Container::FloatCells:
        return fourOf<float>(type);
    case Container::HalfData:
        return fourOf<half>(type);
    case Container::Int8Data:
        return fourOf<qint8>(type);
    case Container::Int16Cells:
        return fourOf<qint16>(type);
    case Container::Int32Data:
        return fourOf<qint32>(type);
    case Container::Int64Data:
        return fourOf<qint64>(type);
    case Container::UInt8Cells:
        return fourOf<quint8>(type);
    case Container::UInt16Data:
        return fourOf<quint16>(type);
    case Container::UInt32Data:
        return fourOf<quint32>(type);
    case Container::UInt64Data:
        return fourOf<quint64>(type);
    default:
        return Container(QVector<QString>{"3", "1", "", "2"}, QSet<int>{2});
    }
}

} // namespace

class TestDataContainer : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyElementTypeAnswersAlike_data();
    void everyElementTypeAnswersAlike();
    void typesThatDoNotFitAreRefused();
    void readsAreGuarded();
    void writesClearTheMarkAndIncrementsDoNot();
    void numbersAreFittedIn();
    void sortingLeavesOutWhatIsNoNumber();
};

void TestDataContainer::everyElementTypeAnswersAlike_data()
{
    QTest::addColumn<int>("type");
    for (const int type : {0x1, 0x20000, 0x3, 0x10, 0x200000, 0x30, 0x40, 0x8000, 0x1000000,
                           0x20000000, 0x30000000, 0x40000000})
        QTest::addRow("0x%x", static_cast<unsigned>(type)) << type;
}

void TestDataContainer::everyElementTypeAnswersAlike()
{
    QFETCH(int, type);
    Container container = fourOfType(static_cast<Type>(type));
    QCOMPARE(static_cast<int>(container.type()), type);
    QCOMPARE(container.validCount(), 3);
    QCOMPARE(container[0], 3.0);
    QCOMPARE(container.intvalue(1), qint64(1));
    QCOMPARE(container.uintvalue(3), quint64(2));
    QCOMPARE(container.strvalue(0), QString("3"));
    const Container copy = container;
    QVERIFY(container.getDataPtr() != copy.getDataPtr()); // to be written through
    QCOMPARE(raisedText([&] { container.getNumericDataPtr(); }),
             type == 0x8000 ? QString("Invalid data type") : QString());

    const int ranks[] = {2, 0, 3, 1}; // the missing one is last
    for (int a = 0; a < 4; ++a) {
        for (int b = 0; b < 4; ++b)
            QCOMPARE(container.compareValues(a, b), (ranks[a] > ranks[b]) - (ranks[a] < ranks[b]));
    }
    QVector<int> order;
    container.getSortedIndices(order);
    QCOMPARE(order, (QVector<int>{1, 3, 0}));

    if (type == 0x8000)
        return;
    QVERIFY(container.incValue(1, 4));
    QCOMPARE(container[1], 5.0);
    container.fillMissingValues(9.0, 9);
    QVERIFY(container.isMissing(2));
    QVERIFY(container.setValue(2, 6.0));
    QCOMPARE(container[2], 6.0);
    QVERIFY(!container.setValue(2, QString("7")));
}

void TestDataContainer::typesThatDoNotFitAreRefused()
{
    const QString expected("Invalid data type");
    const VORN_MissingData none;
    QCOMPARE(raisedText([&] { Container(Container::FloatData, QVector<double>{1}, none); }),
             expected);
    QCOMPARE(
        raisedText([&] { Container(Container::UInt16Data, QVector<unsigned short>{1}, none); }),
        expected);
    QCOMPARE(raisedText([&] { Container(Container::Int8Data, QVector<short>{1}, none); }),
             expected);
    QCOMPARE(raisedText([&] { Container(static_cast<Type>(0x5), 3); }), expected);
    QCOMPARE(raisedText([&] { Container(Container::DoubleCells, QVector<double>{1}, none); }),
             QString());
    QCOMPARE(Container(Container::HalfCells, QVector<unsigned short>{0x3C00}, none)[0], 1.0);
    QCOMPARE(
        Container(QVector<unsigned char>{1}, QVector<unsigned int>{5, 6}, none).hasColorTable(),
        true);
}

void TestDataContainer::readsAreGuarded()
{
    const Container empty;
    QCOMPARE(raisedText([&] { empty.value(0); }), QString("Empty data container"));
    const Container container = fourOf<double>(Container::DoubleData);
    QCOMPARE(raisedText([&] { container.value(4); }), QString("id>=0 and id<nObjects"));
    QCOMPARE(raisedText([&] { container.value(-1); }), QString("id>=0 and id<nObjects"));
    QCOMPARE(raisedText([&] { container[2]; }), QString("Missing data value"));
    QCOMPARE(raisedText([&] { container.intvalue(2); }), QString("Data value is missing"));
    QCOMPARE(raisedText([&] { container.compareValues(4, 0); }),
             QString("id1>=0 and id1<nObjects"));
    QCOMPARE(raisedText([&] { container.compareValues(0, -1); }),
             QString("id2>=0 and id2<nObjects"));
    QCOMPARE(raisedText([&] { container.compareData(VORN_ConstDataContainer()); }),
             QString("Empty data container"));
    QCOMPARE(raisedText([&] { VORN_ConstDataContainer().validCount(); }),
             QString("Empty data container"));
    QCOMPARE(VORN_ConstDataContainer().id(), -1);
}

void TestDataContainer::writesClearTheMarkAndIncrementsDoNot()
{
    Container container = fourOf<qint32>(Container::Int32Data);
    QVERIFY(!container.incValue(2, 1));
    QVERIFY(container.isMissing(2));
    QVERIFY(container.setValue(2, 8));
    QVERIFY(!container.isMissing(2));
    QCOMPARE(answers({container.setValue(4, 8), container.incValue(-1, 8)}), "nn");
    const Container texts(QVector<QString>{"2.5", "x"}, QSet<int>());
    QCOMPARE(texts[0], 2.5);
    QCOMPARE(texts.intvalue(0), 2);
    QCOMPARE(texts[1], 0.0);
}

void TestDataContainer::numbersAreFittedIn()
{
    Container bytes(Container::UInt8Data, 2);
    QCOMPARE(answers({bytes.setValue(0, 300.0), bytes.setValue(1, -5.0)}), "yy");
    QCOMPARE(bytes[0], 255.0);
    QCOMPARE(bytes[1], 0.0);
    Container small(Container::Int8Data, 3);
    QVERIFY(small.setValue(0, 300) && small.setValue(1, -(qint64(1) << 40))
            && small.setValue(2, short(-128)));
    for (int id = 0; id < 3; ++id)
        QCOMPARE(small[id], id == 0 ? 127.0 : -128.0);
    Container large(Container::UInt64Data, 2);
    QVERIFY(large.setValue(0, -1) && large.setValue(1, std::numeric_limits<qint64>::max()));
    QCOMPARE(large.uintvalue(0), quint64(0));
    QCOMPARE(large.intvalue(1), std::numeric_limits<qint64>::max());
    Container whole(Container::Int64Data, 2);
    QCOMPARE(answers({whole.setValue(0, qQNaN()), whole.setValue(1, 1e300)}), "yy");
    QCOMPARE(whole.intvalue(0), qint64(0));
    QCOMPARE(whole.intvalue(1), std::numeric_limits<qint64>::max());
    Container decimals(Container::DoubleData, 1);
    QVERIFY(decimals.setValue(0, -1e30));
    QCOMPARE(decimals.intvalue(0), std::numeric_limits<qint64>::min());
    Container floats(Container::FloatData, 1);
    QVERIFY(floats.setValue(0, 0.1));
    QCOMPARE(floats.strvalue(0), QString("0.1"));
    Container ints(Container::Int32Data, 1);
    QCOMPARE(answers({ints.setValue(0, std::numeric_limits<int>::max()), ints.incValue(0, 1)}),
             "yy");
    QCOMPARE(ints.intvalue(0), qint64(std::numeric_limits<int>::min()));
}

void TestDataContainer::sortingLeavesOutWhatIsNoNumber()
{
    const Container container(Container::DoubleData, QVector<double>{2, qQNaN(), -1, qInf(), 0},
                              QSet<int>{4});
    QVector<int> order;
    container.getSortedIndices(order);
    QCOMPARE(order, (QVector<int>{2, 0}));
    QVERIFY(!container.isMissing(1));
}

QTEST_GUILESS_MAIN(TestDataContainer)
#include "tst_dataContainer.moc"
