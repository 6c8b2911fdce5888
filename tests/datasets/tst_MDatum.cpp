// SPDX-License-Identifier: MIT
#include <QMap>
#include <limits>
#include "Common/detail/streams.h"
#include "datainterface/MDatum.h"
#include "datainterface/VersionAPI.h"
#include "support/support.h"

using datainterface::BytesReader;
using datainterface::BytesWriter;

Q_DECLARE_METATYPE(MDatum)

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

QByteArray streamed(const MDatum &value)
{
    QByteArray bytes;
    BytesWriter out(&bytes);
    out << value;
    return bytes;
}

} // namespace

class TestMDatum : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void cleanup() { dataInterfaceVersionLoading = 0; }
    void presentFormIsFixed();
    void formsOfAllAgesAreRead_data();
    void formsOfAllAgesAreRead();
    void cutFormsSetTheStatus_data();
    void cutFormsSetTheStatus();
    void unusedFieldsAreKept();
    void valuesAreOrdered_data();
    void valuesAreOrdered();
    void numbersAreReadFromAnyType_data();
    void numbersAreReadFromAnyType();
    void nanIsOneKeyBehindAllNumbers();
};

void TestMDatum::presentFormIsFixed()
{
    QCOMPARE(streamed(MDatum(qint64(-2))).toHex(' '),
             QByteArray("00 00 00 00 00 ff ff ff ff ff ff ff fe 00 00 00 00 00 00 00 00 ff ff ff ff"));
    QCOMPARE(streamed(MDatum(QString::fromUtf8("é"))).right(5).toHex(), QByteArray("00000001e9"));
    QCOMPARE(streamed(MDatum()).left(4).toHex(), QByteArray("00000003"));
}

void TestMDatum::formsOfAllAgesAreRead_data()
{
    QTest::addColumn<int>("version");
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<MDatum>("expected");
    const auto row = [](const char *name, int version, const char *hex, const MDatum &expected) {
        QTest::newRow(name) << version << QByteArray(hex) << expected;
    };
    const MDatum text("\xe9");
    const char *wide = "00000002 0000000000000001 0000000000000000 00000002 00e9";
    const char *wideWithFlag = "00000002 05 0000000000000001 0000000000000000 00000002 00e9";
    row("bytes, with the flag", 120000, "00000002 05 0000000000000001 0000000000000000 00000001 e9", text);
    row("wide text, with the flag", 119999, wideWithFlag, text);
    row("wide text, first with the flag", 109001, wideWithFlag, text);
    row("wide text, last without the flag", 109000, wide, text);
    row("single values begin", 103000, wide, text);
    row("beyond Latin-1", 109000, "00000002 0000000000000000 0000000000000000 00000002 0416", MDatum("?"));
    row("lists", 102999, "00000001 00000000 00000002 3ff8000000000000 4000000000000000 00000000", MDatum(1.5));
    row("lists, integer", 102999, "00000000 00000001 fffffffffffffff7 00000000 00000000", MDatum(-9));
    row("lists, text", 0, "00000002 00000000 00000000 00000002 00000002 00e9 00000002 0062", text);
}

void TestMDatum::formsOfAllAgesAreRead()
{
    QFETCH(int, version);
    QFETCH(QByteArray, hex);
    QFETCH(MDatum, expected);
    dataInterfaceVersionLoading = version;
    const QByteArray bytes = QByteArray::fromHex(hex);
    BytesReader in(bytes);
    MDatum found;
    in >> found;
    QCOMPARE(in.status(), QDataStream::Ok);
    QVERIFY(in.atEnd());
    QVERIFY2(found == expected, streamed(found).toHex());
}

void TestMDatum::cutFormsSetTheStatus_data()
{
    formsOfAllAgesAreRead_data();
}

void TestMDatum::cutFormsSetTheStatus()
{
    QFETCH(int, version);
    QFETCH(QByteArray, hex);
    dataInterfaceVersionLoading = version;
    const QByteArray bytes = QByteArray::fromHex(hex);
    for (int length = 0; length < bytes.size(); ++length) {
        const QByteArray cut = bytes.left(length);
        BytesReader in(cut);
        MDatum found;
        in >> found;
        QVERIFY2(in.status() != QDataStream::Ok, QByteArray::number(length));
    }
}

// All five fields travel whatever the type is, and an empty old list leaves the caller's field.
void TestMDatum::unusedFieldsAreKept()
{
    dataInterfaceVersionLoading = productVersionNumber;
    const QByteArray bytes = QByteArray::fromHex("0000000207 0000000000000005 3ff8000000000000 0000000161");
    BytesReader in(bytes);
    MDatum value;
    in >> value;
    QCOMPARE(streamed(value).toHex(), bytes.toHex());

    dataInterfaceVersionLoading = 102999;
    const QByteArray lists = QByteArray::fromHex("00000000 00000000 00000000 00000000");
    BytesReader old(lists);
    old >> value;
    QCOMPARE(value.integerValue(), qint64(5));
    QCOMPARE(value.decimalValue(), 1.5);
    QCOMPARE(QByteArray(value.charstr()), QByteArray("a"));
}

void TestMDatum::valuesAreOrdered_data()
{
    QTest::addColumn<MDatum>("smaller");
    QTest::addColumn<MDatum>("larger");
    QTest::newRow("integers") << MDatum(-3) << MDatum(2);
    QTest::newRow("wide integers") << MDatum(qint64(1) << 40) << MDatum((qint64(1) << 40) + 1);
    QTest::newRow("decimals") << MDatum(-0.5) << MDatum(0.25);
    QTest::newRow("texts, as unsigned bytes") << MDatum("z") << MDatum("\xe9");
    QTest::newRow("texts, a prefix") << MDatum("a") << MDatum("aa");
    QTest::newRow("types by code") << MDatum(5) << MDatum(1.0);
    QTest::newRow("nothing is last") << MDatum("z") << MDatum();
}

void TestMDatum::valuesAreOrdered()
{
    QFETCH(MDatum, smaller);
    QFETCH(MDatum, larger);
    QVERIFY(smaller < larger);
    QVERIFY(!(larger < smaller));
    QVERIFY(smaller != larger);
    QVERIFY(!(larger < larger));
}

void TestMDatum::numbersAreReadFromAnyType_data()
{
    QTest::addColumn<MDatum>("value");
    QTest::addColumn<double>("expected");
    QTest::newRow("integer") << MDatum(-7) << -7.0;
    QTest::newRow("decimal") << MDatum(0.125) << 0.125;
    QTest::newRow("text") << MDatum("2.5e3") << 2500.0;
    QTest::newRow("text of another locale") << MDatum("2,5") << 0.0;
    QTest::newRow("no number") << MDatum("north") << 0.0;
    QTest::newRow("nothing") << MDatum() << kNaN;
}

void TestMDatum::numbersAreReadFromAnyType()
{
    QFETCH(MDatum, value);
    QFETCH(double, expected);
    QCOMPARE(value.toDouble(), expected);
}

void TestMDatum::nanIsOneKeyBehindAllNumbers()
{
    QMap<MDatum, int> counts;
    for (const double number : {kNaN, 2.0, -kNaN, -1.0, 0.0, -0.0, std::numeric_limits<double>::infinity(), kNaN})
        ++counts[MDatum(number)];
    QCOMPARE(counts.values(), (QList<int>{1, 2, 1, 1, 3}));
    QVERIFY(MDatum(kNaN) == MDatum(-kNaN));
    QCOMPARE(qHash(MDatum(kNaN)), qHash(MDatum(-kNaN)));
    QCOMPARE(qHash(MDatum(0.0)), qHash(MDatum(-0.0)));
}

QTEST_GUILESS_MAIN(TestMDatum)
#include "tst_MDatum.moc"
