// SPDX-License-Identifier: MIT
#include <QMap>
#include <cmath>
#include <limits>
#include "datainterface/MDatum.h"
#include "support/streamed.h"
#include "support/support.h"

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

} // namespace

class TestMDatum : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { dataInterfaceVersionLoading = 0; }
    void presentFormIsFixed();
    void textsAreWhole();
    void textsOfOtherWritersAreRead();
    void unusedFieldsAreKept();
    void valuesAreOrdered();
    void numbersAreReadFromAnyType();
    void nanIsOneKeyBehindAllNumbers();
};

void TestMDatum::presentFormIsFixed()
{
    QCOMPARE(
        streamed(MDatum(qint64(-2))).toHex(' '),
        QByteArray("00 00 00 00 00 ff ff ff ff ff ff ff fe 00 00 00 00 00 00 00 00 ff ff ff ff"));
    QCOMPARE(streamed(MDatum()).left(4).toHex(), QByteArray("00000003"));
}

void TestMDatum::textsAreWhole()
{
    struct Case {
        QString text;
        const char *utf8;
        const char *stored; // with its length
    };
    dataInterfaceVersionLoading = productVersionNumber;
    for (const Case &one :
         {Case{"\u00e9", "c3a9", "00000001e9"},
          {"\u6771\u4eac", "e69db1e4baac", "00000009efbbbfe69db1e4baac"},
          {"\u00e9\u0416", "c3a9d096", "00000007efbbbfc3a9d096"},
          {QString(QChar(QChar::ByteOrderMark)) + "a", "efbbbf61", "00000007efbbbfefbbbf61"},
          // Latin-1 that looks like the mark.
          {"\u00ef\u00bb\u00bf", "c3afc2bbc2bf", "00000009efbbbfc3afc2bbc2bf"},
          {"", "", "00000000"}}) {
        const MDatum value(one.text);
        QCOMPARE(value.text(), one.text);
        QCOMPARE(QByteArray(value.charstr()).toHex(), QByteArray(one.utf8));
        QCOMPARE(MDatum(value.charstr()), value);
        const QByteArray bytes = streamed(value);
        QCOMPARE(bytes.mid(21).toHex(), QByteArray(one.stored));
        MDatum again;
        QVERIFY(isRead(bytes, again));
        QCOMPARE(again, value);
    }
    // A NUL is a character like any other, but charstr() ends at it.
    const QString withNul = QString("a") + QChar(0) + QString("b");
    QCOMPARE(MDatum(withNul).text(), withNul);
    MDatum again;
    QVERIFY(isRead(streamed(MDatum(withNul)), again));
    QCOMPARE(again.text(), withNul);
}

// The other forms are in the attributes of old projects.
void TestMDatum::textsOfOtherWritersAreRead()
{
    const auto text = [](int version, const char *hex) {
        dataInterfaceVersionLoading = version;
        const QByteArray bytes = QByteArray::fromHex(hex);
        MDatum found;
        return isRead(bytes, found) && readableCut<MDatum>(bytes) == -1 ? found.text() : QString();
    };
    const char *zeros = "0000000000000000 0000000000000000";
    const QByteArray marked = QByteArray("00000002 05 ") + zeros + " 00000005 efbbbf c3a9";
    QCOMPARE(text(120000, marked), QString("\u00e9"));
    const QByteArray wide = QByteArray("00000002 ") + zeros + " 00000002 0416";
    QCOMPARE(text(109000, wide), QString("?"));
    QCOMPARE(text(0, "00000002 00000000 00000000 00000002 00000002 00e9 00000002 0062"),
             QString("\u00e9")); // a list
}

// All five fields travel whatever the type is, and an empty old list leaves the caller's field.
void TestMDatum::unusedFieldsAreKept()
{
    dataInterfaceVersionLoading = productVersionNumber;
    const QByteArray bytes =
        QByteArray::fromHex("0000000207 0000000000000005 3ff8000000000000 0000000161");
    MDatum value;
    QVERIFY(isRead(bytes, value));
    QCOMPARE(streamed(value).toHex(), bytes.toHex());

    dataInterfaceVersionLoading = 102999;
    QVERIFY(isRead(QByteArray::fromHex("00000000 00000000 00000000 00000000"), value));
    QCOMPARE(value.integerValue(), qint64(5));
    QCOMPARE(value.decimalValue(), 1.5);
    QCOMPARE(QByteArray(value.charstr()), QByteArray("a"));
}

void TestMDatum::valuesAreOrdered()
{
    const auto isBelow = [](const MDatum &a, const MDatum &b) {
        return a < b && !(b < a) && a != b && !(b < b);
    };
    QVERIFY(isBelow(MDatum(qint64(1) << 40), MDatum((qint64(1) << 40) + 1)));
    QVERIFY(isBelow(MDatum(std::numeric_limits<qint64>::max()), MDatum(quint64(1) << 63)));
    QVERIFY(isBelow(MDatum(quint64(1) << 63), MDatum(~quint64(0))));
    QVERIFY(isBelow(MDatum(-0.5), MDatum(0.25)));
    QVERIFY(isBelow(MDatum("z"), MDatum("\xe9"))); // unsigned bytes
    QVERIFY(isBelow(MDatum("a"), MDatum("aa")));
    QVERIFY(isBelow(MDatum(5), MDatum(1.0))); // types by code
    QVERIFY(isBelow(MDatum("z"), MDatum()));
}

void TestMDatum::numbersAreReadFromAnyType()
{
    QCOMPARE(MDatum(-7).toDouble(), -7.0);
    QCOMPARE(MDatum(quint64(1) << 63).toDouble(), std::ldexp(1.0, 63));
    QCOMPARE(MDatum("2.5e3").toDouble(), 2500.0);
    QCOMPARE(MDatum("2,5").toDouble(), 0.0); // a text of another locale
    QCOMPARE(MDatum("north").toDouble(), 0.0);
    QVERIFY(qIsNaN(MDatum().toDouble()));
}

void TestMDatum::nanIsOneKeyBehindAllNumbers()
{
    QMap<MDatum, int> counts;
    for (const double number :
         {kNaN, 2.0, -kNaN, -1.0, 0.0, -0.0, std::numeric_limits<double>::infinity(), kNaN})
        ++counts[MDatum(number)];
    QCOMPARE(counts.values(), (QList<int>{1, 2, 1, 1, 3}));
    QVERIFY(MDatum(kNaN) == MDatum(-kNaN));
    QCOMPARE(qHash(MDatum(kNaN)), qHash(MDatum(-kNaN)));
    QCOMPARE(qHash(MDatum(0.0)), qHash(MDatum(-0.0)));
}

QTEST_GUILESS_MAIN(TestMDatum)
#include "tst_MDatum.moc"
