// SPDX-License-Identifier: MIT
// The stream form has changed with the file's version:
//   type int32 | flag int8, after 109000 | int64, double, text from 103000; before that three lists
// The text is a QString before 120000 and bytes from then on.
#include "datainterface/MDatum.h"
#include <cmath>
#include <limits>
#include "Common/detail/streams.h"
#include "frame/loadContext.h"

using namespace datainterface;

namespace {

// The first element of a list, the rest dropped; of an empty list nothing.
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

// Strict and total, with every NaN one key behind all numbers.
bool precedes(double a, double b)
{
    return std::isnan(b) ? !std::isnan(a) : a < b;
}

bool equals(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

} // namespace

double MDatum::toDouble() const
{
    switch (mType) {
    case Integer:
        return static_cast<double>(mInteger);
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
        return mInteger < other.mInteger;
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
        return mInteger == other.mInteger;
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
               << value.mDecimal << value.mText;
}

QDataStream &operator>>(QDataStream &in, MDatum &value)
{
    const LoadContext context = loadContext();
    in >> value.mType;
    if (context.since(fileVersions::kDatumHasFlag))
        in >> value.mFlag;
    if (!context.since(fileVersions::kDatumIsSingle)) {
        readFirst<qint64>(in, 8, [&value](qint64 first) { value.mInteger = first; });
        readFirst<double>(in, 8, [&value](double first) { value.mDecimal = first; });
        readFirst<QString>(in, 4,
                           [&value](const QString &first) { value.mText = first.toLatin1(); });
        return in;
    }
    in >> value.mInteger >> value.mDecimal;
    if (context.since(fileVersions::kDatumTextIsBytes)) {
        readBytes(in, value.mText);
    } else {
        QString text;
        in >> text;
        value.mText = text.toLatin1();
    }
    return in;
}
