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

} // namespace

class TestDataContainer : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everyElementTypeAnswersAlike();
    void typesThatDoNotFitAreRefused();
    void readsAreGuarded();
    void writesClearTheMarkAndIncrementsDoNot();
    void numbersAreFittedIn();
    void sortingLeavesOutWhatIsNoNumber();

private:
    void answersAlike(Container container, Type type);
};

void TestDataContainer::everyElementTypeAnswersAlike()
{
    answersAlike(fourOf<double>(Type(0x1)), Type(0x1));
    answersAlike(fourOf<float>(Type(0x20000)), Type(0x20000));
    answersAlike(fourOf<half>(Type(0x3)), Type(0x3));
    answersAlike(fourOf<qint8>(Type(0x10)), Type(0x10));
    answersAlike(fourOf<qint16>(Type(0x200000)), Type(0x200000));
    answersAlike(fourOf<qint32>(Type(0x30)), Type(0x30));
    answersAlike(fourOf<qint64>(Type(0x40)), Type(0x40));
    answersAlike(fourOf<quint8>(Type(0x1000000)), Type(0x1000000));
    answersAlike(fourOf<quint16>(Type(0x20000000)), Type(0x20000000));
    answersAlike(fourOf<quint32>(Type(0x30000000)), Type(0x30000000));
    answersAlike(fourOf<quint64>(Type(0x40000000)), Type(0x40000000));
    answersAlike(Container(QVector<QString>{"3", "1", "", "2"}, QSet<int>{2}), Type(0x8000));
}

void TestDataContainer::answersAlike(Container container, Type type)
{
    const InCase inType(int{type});
    QCOMPARE(container.type(), type);
    QCOMPARE(container.validCount(), 3);
    QCOMPARE(container[0], 3.0);
    QCOMPARE(container.intvalue(1), qint64(1));
    QCOMPARE(container.uintvalue(3), quint64(2));
    QCOMPARE(container.strvalue(0), QString("3"));
    const Container copy = container;
    QVERIFY(container.getDataPtr() != copy.getDataPtr()); // to be written through
    const bool isText = type == Type(0x8000);
    QCOMPARE(raisedText([&] { container.getNumericDataPtr(); }),
             isText ? QString("Invalid data type") : QString());

    const int ranks[] = {2, 0, 3, 1}; // the missing one is last
    for (int a = 0; a < 4; ++a) {
        for (int b = 0; b < 4; ++b)
            QCOMPARE(container.compareValues(a, b), (ranks[a] > ranks[b]) - (ranks[a] < ranks[b]));
    }
    QVector<int> order;
    container.getSortedIndices(order);
    QCOMPARE(order, (QVector<int>{1, 3, 0}));
    if (isText)
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
    const VORN_MissingData none;
    const auto raised = [&none](Type type, const auto &values) {
        return raisedText([&] { Container(type, values, none); });
    };
    const QString expected("Invalid data type");
    QCOMPARE(raised(Container::FloatData, QVector<double>{1}), expected);
    QCOMPARE(raised(Container::UInt16Data, QVector<unsigned short>{1}), expected);
    QCOMPARE(raised(Container::Int8Data, QVector<short>{1}), expected);
    QCOMPARE(raised(Container::DoubleCells, QVector<double>{1}), QString());
    QCOMPARE(raisedText([] { Container(static_cast<Type>(0x5), 3); }), expected);
    QCOMPARE(Container(Container::HalfCells, QVector<unsigned short>{0x3C00}, none)[0], 1.0);
    QVERIFY(Container(QVector<unsigned char>{1}, QVector<unsigned int>{5}, none).hasColorTable());
}

void TestDataContainer::readsAreGuarded()
{
    const Container empty;
    const Container container = fourOf<double>(Container::DoubleData);
    const QStringList texts{raisedText([&] { empty.value(0); }),
                            raisedText([&] { container.compareData(VORN_ConstDataContainer()); }),
                            raisedText([&] { VORN_ConstDataContainer().validCount(); }),
                            raisedText([&] { container.value(4); }),
                            raisedText([&] { container.value(-1); }),
                            raisedText([&] { container[2]; }),
                            raisedText([&] { container.intvalue(2); }),
                            raisedText([&] { container.compareValues(4, 0); }),
                            raisedText([&] { container.compareValues(0, -1); })};
    QCOMPARE(texts.join('|'),
             QString("Empty data container|Empty data container|Empty data container|"
                     "id>=0 and id<nObjects|id>=0 and id<nObjects|Missing data value|"
                     "Data value is missing|id1>=0 and id1<nObjects|id2>=0 and id2<nObjects"));
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
    const auto fitted = [](Type type, auto value) {
        Container one(type, 1);
        one.setValue(0, value);
        return one.intvalue(0);
    };
    const qint64 last = std::numeric_limits<qint64>::max();
    QCOMPARE(fitted(Container::UInt8Data, 300.0), qint64(255));
    QCOMPARE(fitted(Container::UInt8Data, -5.0), qint64(0));
    QCOMPARE(fitted(Container::Int8Data, 300), qint64(127));
    QCOMPARE(fitted(Container::Int8Data, -(qint64(1) << 40)), qint64(-128));
    QCOMPARE(fitted(Container::Int8Data, short(-128)), qint64(-128));
    QCOMPARE(fitted(Container::UInt64Data, -1), qint64(0));
    QCOMPARE(fitted(Container::UInt64Data, last), last);
    QCOMPARE(fitted(Container::Int64Data, qQNaN()), qint64(0));
    QCOMPARE(fitted(Container::Int64Data, 1e300), last);
    QCOMPARE(fitted(Container::DoubleData, -1e30), std::numeric_limits<qint64>::min());
    Container floats(Container::FloatData, 1);
    QVERIFY(floats.setValue(0, 0.1));
    QCOMPARE(floats.strvalue(0), QString("0.1"));
    QVERIFY(floats.setValue(0, -1e300));
    QCOMPARE(floats.value(0), -double(std::numeric_limits<float>::max()));
    QVERIFY(floats.setValue(0, qInf()));
    QCOMPARE(floats.value(0), qInf());
    Container halves(Container::HalfData, 1);
    QVERIFY(halves.setValue(0, 100000));
    QCOMPARE(halves.value(0), 65504.0);
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
