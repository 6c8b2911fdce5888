// SPDX-License-Identifier: MIT
#include <QIODevice>
#include <cstring>
#include "Common/detail/streams.h"
#include "support/checks.h"
#include "support/support.h"

using namespace datainterface;

namespace {

// A device that cannot tell how much is left.
class Pipe : public QIODevice {
public:
    explicit Pipe(const QByteArray &bytes) : mBytes(bytes)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *to, qint64 most) override
    {
        const qint64 count = std::min<qint64>(most, mBytes.size() - mAt);
        std::memcpy(to, mBytes.constData() + mAt, static_cast<size_t>(count));
        mAt += count;
        return count;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray mBytes;
    qint64 mAt = 0;
};

QByteArray nested(int depth)
{
    QByteArray bytes;
    BytesWriter out(&bytes);
    QVariant value(1);
    for (int i = 0; i < depth; ++i)
        value = QVariantList{value};
    out << QMap<QString, QVariant>{{"a", value}};
    return bytes;
}

} // namespace

class TestStreams : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void formsAreFixed();
    void countsAreHeldAgainstTheBytesLeft();
    void bytesAreReadFromDevicesThatCannotTell();
    void unpackingIsThatOfQt();
    void corruptPacksAreRefused();
    void metadataOfQt4IsRead();
    void deepOrForeignMetadataIsRefused();
};

// What rests on the version of the stream and on Qt's own forms: a new Qt must not move a byte.
void TestStreams::formsAreFixed()
{
    QByteArray bytes;
    BytesWriter out(&bytes);
    writeIntSet(out, {300, -1, 2});
    out << QMap<QString, QVariant>{{"a", 1}, {"b", QVariant()}} << 1.0f << QVector<double>{-2.0};
    QCOMPARE(bytes.toHex(), QByteArray::fromHex("00000003 ffffffff 00000002 0000012c"
                                                "00000002 00000002 0062 00000000 01"
                                                "00000002 0061 00000002 00 00000001"
                                                "3ff0000000000000 00000001 c000000000000000")
                                .toHex());
}

void TestStreams::countsAreHeldAgainstTheBytesLeft()
{
    const auto read = [](const char *hex) {
        const QByteArray bytes = QByteArray::fromHex(hex);
        BytesReader in(bytes);
        const int count = readCount(in, 4);
        return qMakePair(count, int(in.status()));
    };
    QCOMPARE(read("00000002 00000000 00000000"), qMakePair(2, int(QDataStream::Ok)));
    QCOMPARE(read("00000003 00000000 00000000"), qMakePair(0, int(QDataStream::ReadCorruptData)));
    QCOMPARE(read("ffffffff 00000000 00000000"), qMakePair(0, int(QDataStream::ReadCorruptData)));
    QCOMPARE(read("000000"), qMakePair(0, int(QDataStream::ReadPastEnd)));
}

void TestStreams::bytesAreReadFromDevicesThatCannotTell()
{
    QByteArray large(40 << 20, 'x');
    QByteArray bytes;
    BytesWriter out(&bytes);
    out << large;
    for (const bool isCut : {false, true}) {
        const InCase inIsCut(isCut);
        Pipe pipe(isCut ? bytes.chopped(1) : bytes);
        QDataStream in(&pipe);
        QByteArray found;
        QCOMPARE(readBytes(in, found), !isCut);
        QVERIFY(found == (isCut ? QByteArray() : large));
    }
    // 2 GiB announced, nothing there: fails after one step, not after 2 GiB.
    Pipe pipe(QByteArray::fromHex("7fffff00"));
    QDataStream in(&pipe);
    QByteArray found;
    QVERIFY(!readBytes(in, found));
}

void TestStreams::unpackingIsThatOfQt()
{
    QByteArray noise(100000, '\0');
    quint32 state = 1;
    for (char &byte : noise)
        byte = static_cast<char>((state = state * 1664525U + 1013904223U) >> 24);
    // Zeros are the best that zlib can do.
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("a"), QByteArray(10 << 20, '\0'), noise}) {
        for (const int level : {0, 1, 9}) {
            const InCase inLevel(level);
            QByteArray found("before");
            QVERIFY(inflateBytes(qCompress(bytes, level), found));
            QVERIFY(found == bytes);
        }
    }
}

void TestStreams::corruptPacksAreRefused()
{
    const QByteArray packed = qCompress(QByteArray(1000, 'a') + QByteArray(1000, 'b'), 9);
    QByteArray found;
    for (int length = 1; length < packed.size(); ++length) {
        const InCase inCase(length);
        QCOMPARE(inflateBytes(packed.left(length), found), false);
        QCOMPARE(found, QByteArray());
    }
    for (int i = 0; i < packed.size(); ++i) {
        const InCase inCase(i);
        QByteArray damaged = packed;
        damaged[i] = static_cast<char>(damaged[i] ^ 0x41);
        QCOMPARE(inflateBytes(damaged, found), false);
        QCOMPARE(found, QByteArray());
    }
    QVERIFY(!inflateBytes(packed, found, 1999));
    QVERIFY(inflateBytes(packed, found, 2000));
}

// A float is type 135 there, and an empty text follows an invalid variant.
void TestStreams::metadataOfQt4IsRead()
{
    const QByteArray bytes = QByteArray::fromHex("00000002 00000002 0062 00000000 01 ffffffff"
                                                 "00000002 0061 00000087 00 3ff8000000000000");
    BytesReader in(bytes);
    in.setVersion(QDataStream::Qt_4_6);
    QMap<QString, QVariant> found;
    QVERIFY(readVariantMap(in, found));
    QCOMPARE(answers({in.atEnd(), found["b"].isValid()}), "yn");
    QCOMPARE(found["a"].toFloat(), 1.5f);
}

// A list nested a hundred thousand times overflows the stack of a reader that follows it.
void TestStreams::deepOrForeignMetadataIsRefused()
{
    QMap<QString, QVariant> found;
    const QByteArray shallow = nested(31);
    BytesReader allowed(shallow);
    QVERIFY(readVariantMap(allowed, found));
    const QByteArray deep = nested(33);
    BytesReader refused(deep);
    QVERIFY(!readVariantMap(refused, found));
    const QByteArray pixmap = QByteArray::fromHex("00000001 00000002 0061 00000041 00 00000000");
    BytesReader foreign(pixmap);
    QVERIFY(!readVariantMap(foreign, found));
    QCOMPARE(foreign.status(), QDataStream::ReadCorruptData);
    BytesReader bad(QByteArray::fromHex("00000002 00000002 0061 000000ff 0062"));
    QVector<QString> texts{"before"};
    QCOMPARE(answers({readList(bad, texts, 4), texts.isEmpty()}), "ny");
}

QTEST_GUILESS_MAIN(TestStreams)
#include "tst_streams.moc"
