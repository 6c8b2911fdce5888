// SPDX-License-Identifier: MIT
// The fields of a value in a stream, which depend on the version of the file:
//
//   int32   type
//   int8    flag, from 109001
//   int64   integer, double decimal, text; before 103000 a list of each, whose first element counts
//
// The text is a QString before 120000. From then on it is a QByteArray: Latin-1, or the bytes
// EF BB BF and then UTF-8 for a text that Latin-1 cannot represent.
#include "datainterface/MDatum.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include "Common/detail/streams.h"
#include "frame/loadContext.h"

using namespace datainterface;

namespace {

// Precedes the UTF-8 bytes of a text that Latin-1 cannot represent.
const QByteArray kUtf8Mark = QByteArrayLiteral("\xEF\xBB\xBF");

// By pointer and size here and below, since Qt's overloads for a QByteArray end at the first NUL.
QString fromLatin1(const QByteArray &bytes)
{
    return bytes.isNull() ? QString() : QString::fromLatin1(bytes.constData(), bytes.size());
}

// Qt removes a byte order mark at the front, which is a character of the text here.
QString fromUtf8(const QByteArray &bytes)
{
    const QString text =
        bytes.isNull() ? QString() : QString::fromUtf8(bytes.constData(), bytes.size());
    return bytes.startsWith(kUtf8Mark) ? QChar(QChar::ByteOrderMark) + text : text;
}

bool isUtf8(const QByteArray &bytes)
{
    return fromUtf8(bytes).toUtf8() == bytes;
}

// A text whose Latin-1 bytes begin with those of the mark is also written in UTF-8 after the mark.
QByteArray streamForm(const QByteArray &text)
{
    const QString letters = fromUtf8(text);
    const QByteArray narrow = letters.toLatin1();
    const bool isNarrow =
        std::all_of(letters.begin(), letters.end(), [](QChar c) { return c.unicode() < 0x100; });
    return isNarrow && !narrow.startsWith(kUtf8Mark) ? narrow : kUtf8Mark + text;
}

QByteArray textFrom(const QByteArray &stored)
{
    if (!stored.startsWith(kUtf8Mark))
        return fromLatin1(stored).toUtf8();
    const QByteArray text = stored.mid(kUtf8Mark.size());
    return isUtf8(text) ? text : QString::fromLatin1(text).toUtf8();
}

// Texts of the old forms are Latin-1; other characters in them are lost.
QByteArray narrowed(const QString &text)
{
    return QString::fromLatin1(text.toLatin1()).toUtf8();
}

// Assigns the first element of a list and skips the others. Assigns nothing for an empty list.
template <class T, class Assign>
void readFirst(QDataStream &in, qint64 minElementBytes, Assign assign)
{
    const int count = readCount(in, minElementBytes);
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        T element{};
        in >> element;
        if (i == 0 && in.status() == QDataStream::Ok)
            assign(element);
    }
}

// A strict weak order in which all NaNs are equivalent and follow every number.
bool precedes(double a, double b)
{
    return std::isnan(b) ? !std::isnan(a) : a < b;
}

bool equals(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

} // namespace

MDatum::MDatum(const char *value) : mType(String), mText(value)
{
    if (!isUtf8(mText))
        mText = QString::fromLatin1(mText).toUtf8();
}

QString MDatum::text() const
{
    return fromUtf8(mText);
}

double MDatum::toDouble() const
{
    switch (mType) {
    case Integer:
        return mIsBeyondSigned ? static_cast<double>(static_cast<quint64>(mInteger))
                               : static_cast<double>(mInteger);
    case Decimal:
        return mDecimal;
    case String:
        return mText.toDouble(); // the C locale
    default:
        return std::numeric_limits<double>::quiet_NaN();
    }
}

bool MDatum::operator<(const MDatum &other) const
{
    if (mType != other.mType)
        return mType < other.mType;
    switch (mType) {
    case Integer:
        return mIsBeyondSigned != other.mIsBeyondSigned ? other.mIsBeyondSigned
                                                        : mInteger < other.mInteger;
    case Decimal:
        return precedes(mDecimal, other.mDecimal);
    case String:
        return mText < other.mText;
    default:
        return false;
    }
}

bool MDatum::operator==(const MDatum &other) const
{
    if (mType != other.mType)
        return false;
    switch (mType) {
    case Integer:
        return mInteger == other.mInteger && mIsBeyondSigned == other.mIsBeyondSigned;
    case Decimal:
        return equals(mDecimal, other.mDecimal);
    case String:
        return mText == other.mText;
    default:
        return true;
    }
}

uint qHash(const MDatum &value, uint seed)
{
    switch (value.mType) {
    case MDatum::Integer:
        return ::qHash(value.mInteger, seed);
    case MDatum::Decimal:
        return std::isnan(value.mDecimal) ? ~seed
                                          : ::qHash(value.mDecimal, seed); // all NaNs are equal
    case MDatum::String:
        return ::qHash(value.mText, seed);
    default:
        return ::qHash(value.mType, seed);
    }
}

QDataStream &operator<<(QDataStream &out, const MDatum &value)
{
    return out << qint32(value.mType) << qint8(value.mFlag) << qint64(value.mInteger)
               << value.mDecimal << streamForm(value.mText);
}

QDataStream &operator>>(QDataStream &in, MDatum &value)
{
    const LoadContext context = loadContext();
    in >> value.mType;
    value.mIsBeyondSigned = false;
    if (context.since(fileVersions::kDatumHasFlag))
        in >> value.mFlag;
    if (!context.since(fileVersions::kDatumIsSingle)) {
        readFirst<qint64>(in, 8, [&value](qint64 first) { value.mInteger = first; });
        readFirst<double>(in, 8, [&value](double first) { value.mDecimal = first; });
        readFirst<QString>(in, 4,
                           [&value](const QString &first) { value.mText = narrowed(first); });
        return in;
    }
    in >> value.mInteger >> value.mDecimal;
    if (context.since(fileVersions::kDatumTextIsBytes)) {
        QByteArray stored;
        readBytes(in, stored);
        value.mText = textFrom(stored);
    } else {
        QString text;
        in >> text;
        value.mText = narrowed(text);
    }
    return in;
}
