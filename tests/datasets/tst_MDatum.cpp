// SPDX-License-Identifier: MIT
#include <QMap>
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
    void formsOfAllAgesAreRead();
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
    QCOMPARE(streamed(MDatum(QString::fromUtf8("é"))).right(5).toHex(), QByteArray("00000001e9"));
    QCOMPARE(streamed(MDatum()).left(4).toHex(), QByteArray("00000003"));
}

void TestMDatum::formsOfAllAgesAreRead()
{
    const auto check = [](const char *name, int version, const char *hex, const MDatum &expected) {
        dataInterfaceVersionLoading = version;
        const QByteArray bytes = QByteArray::fromHex(hex);
        MDatum found;
        QVERIFY2(isRead(bytes, found), name);
        QVERIFY2(found == expected, streamed(found).toHex());
        QVERIFY2(readableCut<MDatum>(bytes) == -1, name);
    };
    const MDatum text("\xe9");
    const char *wide = "00000002 0000000000000001 0000000000000000 00000002 00e9";
    const char *wideWithFlag = "00000002 05 0000000000000001 0000000000000000 00000002 00e9";
    check("bytes, with the flag", 120000,
          "00000002 05 0000000000000001 0000000000000000 00000001 e9", text);
    check("wide text, with the flag", 119999, wideWithFlag, text);
    check("wide text, first with the flag", 109001, wideWithFlag, text);
    check("wide text, last without the flag", 109000, wide, text);
    check("single values begin", 103000, wide, text);
    check("beyond Latin-1", 109000, "00000002 0000000000000000 0000000000000000 00000002 0416",
          MDatum("?"));
    check("lists", 102999, "00000001 00000000 00000002 3ff8000000000000 4000000000000000 00000000",
          MDatum(1.5));
    check("lists, integer", 102999, "00000000 00000001 fffffffffffffff7 00000000 00000000",
          MDatum(-9));
    check("lists, text", 0, "00000002 00000000 00000000 00000002 00000002 00e9 00000002 0062",
          text);
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
    QVERIFY(isBelow(MDatum(-0.5), MDatum(0.25)));
    QVERIFY(isBelow(MDatum("z"), MDatum("\xe9"))); // unsigned bytes
    QVERIFY(isBelow(MDatum("a"), MDatum("aa")));
    QVERIFY(isBelow(MDatum(5), MDatum(1.0))); // types by code
    QVERIFY(isBelow(MDatum("z"), MDatum()));
}

void TestMDatum::numbersAreReadFromAnyType()
{
    QCOMPARE(MDatum(-7).toDouble(), -7.0);
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
