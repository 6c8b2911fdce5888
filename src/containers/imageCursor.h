// SPDX-License-Identifier: MIT
/// Reads and writes the fields of a block image by pointer, without the cost of a stream for every
/// element.
#pragma once
#include <QByteArray>
#include <QString>
#include <QStringView>
#include <QtEndian>
#include <cstring>
#include <limits>
#include "Common/detail/failure.h"

namespace datainterface {

constexpr quint32 kNullText = 0xffffffffU;

/// Reads an image from front to back. After a read beyond the end, ok() is false and every later
/// read returns 0.
class ImageReader {
public:
    static constexpr qint64 kMinTextBytes = 4;

    explicit ImageReader(const QByteArray &image, int at = 0)
        : mImage(image.constData()), mAt(at), mSize(image.size())
    {
    }

    bool ok() const { return mOk; }
    int at() const { return static_cast<int>(mAt); }
    qint64 left() const { return mOk ? mSize - mAt : 0; }

    template <class T> T integer()
    {
        const char *from = take(sizeof(T));
        return from ? qFromBigEndian<T>(from) : T(0);
    }

    /// A count of elements of at least `minElementBytes` each; 0, with ok() false, when the image
    /// is too short for them.
    int count(qint64 minElementBytes)
    {
        const auto n = integer<qint32>();
        mOk = mOk && n >= 0 && n <= left() / minElementBytes;
        return mOk ? n : 0;
    }

    /// Null when fewer bytes are left.
    const char *take(qint64 bytes)
    {
        mOk = mOk && bytes <= mSize - mAt;
        if (!mOk)
            return nullptr;
        const char *from = mImage + mAt;
        mAt += bytes;
        return from;
    }

    void skipText()
    {
        const auto bytes = integer<quint32>();
        if (bytes != kNullText)
            takeText(bytes);
    }

    QString text()
    {
        const auto bytes = integer<quint32>();
        if (bytes == kNullText)
            return QString();
        const char *from = takeText(bytes);
        if (!from)
            return QString();
        QString result(static_cast<int>(bytes / 2), Qt::Uninitialized);
        qFromBigEndian<quint16>(from, result.size(), result.data());
        return result;
    }

private:
    const char *takeText(quint32 bytes)
    {
        mOk = mOk && bytes % 2 == 0;
        return take(bytes);
    }

    const char *mImage;
    qint64 mAt;
    qint64 mSize;
    bool mOk = true;
};

/// Writes an image, whose size must be known, from front to back.
class ImageWriter {
public:
    /// Raises "size" when one array cannot hold `size` bytes.
    explicit ImageWriter(qint64 size)
    {
        require(size <= std::numeric_limits<int>::max() - 64, "size");
        mImage = QByteArray(static_cast<int>(size), Qt::Uninitialized);
        mTo = mImage.data();
    }

    static qint64 textBytes(QStringView text) { return 4 + 2 * qint64(text.size()); }

    template <class T> void integer(T value)
    {
        qToBigEndian(value, mTo);
        mTo += sizeof(T);
    }

    /// @return the address of the bytes in the image.
    char *raw(const void *from, qint64 bytes)
    {
        char *to = mTo;
        if (bytes > 0)
            std::memcpy(to, from, static_cast<size_t>(bytes));
        mTo += bytes;
        return to;
    }

    void text(QStringView text)
    {
        if (text.isNull())
            return integer(kNullText);
        integer(static_cast<quint32>(text.size()) * 2);
        qToBigEndian<quint16>(text.data(), text.size(), mTo);
        mTo += 2 * qint64(text.size());
    }

    const QByteArray &image() const { return mImage; }

private:
    QByteArray mImage;
    char *mTo;
};

} // namespace datainterface
