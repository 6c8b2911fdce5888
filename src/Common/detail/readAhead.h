// SPDX-License-Identifier: MIT
/// Reads many small big-endian fields of a stream by pointer, from a buffer that is filled ahead of
/// the stream's position.
#pragma once
#include <QByteArray>
#include <QDataStream>
#include <QtEndian>
#include <algorithm>
#include <cstring>
#include <limits>
#include "Common/detail/streams.h"

namespace datainterface {

/// The stream must not be read during the lifetime of the object; the destructor sets its position
/// to the first byte that was not taken. A field that cannot be taken sets the stream's status.
/// From a sequential device, which cannot be set back, no more bytes are read than are asked for.
class ReadAhead {
public:
    explicit ReadAhead(QDataStream &in)
        : mIn(in), mIsSequential(in.device()->isSequential()), mUnread(bytesLeft(in))
    {
    }
    ~ReadAhead()
    {
        if (mAt < mSize)
            mIn.device()->seek(mIn.device()->pos() - (mSize - mAt));
    }
    ReadAhead(const ReadAhead &) = delete;
    ReadAhead &operator=(const ReadAhead &) = delete;

    bool ok() const { return mIn.status() == QDataStream::Ok; }
    void setCorrupt() { mIn.setStatus(QDataStream::ReadCorruptData); }
    qint64 left() const { return mUnread + (mSize - mAt); }

    /// `bytes` bytes, valid until the next call. Null, with the status set, when there are fewer.
    const char *take(qint64 bytes)
    {
        if (bytes > mSize - mAt && !fetch(bytes))
            return nullptr;
        const char *from = mWindow.constData() + mAt;
        mAt += static_cast<int>(bytes);
        return from;
    }

    /// 0 at the end.
    template <class T> T number()
    {
        const char *from = take(sizeof(T));
        return from ? qFromBigEndian<T>(from) : T(0);
    }

    /// Passes over `bytes` bytes without reading those that the buffer does not hold. False, with
    /// the status set, when there are fewer.
    bool skip(qint64 bytes)
    {
        if (bytes <= mSize - mAt) {
            mAt += static_cast<int>(bytes);
            return true;
        }
        const qint64 beyond = bytes - (mSize - mAt);
        if (!ok() || mIsSequential || beyond > mUnread
            || !mIn.device()->seek(mIn.device()->pos() + beyond))
            return fail();
        mUnread -= beyond;
        mAt = mSize = 0;
        mAhead = kLeastAheadBytes;
        return true;
    }

    /// A count of elements, checked against the bytes left as in readCount.
    int count(qint64 minElementBytes)
    {
        const auto n = number<qint32>();
        if (ok() && n >= 0 && n <= left() / minElementBytes)
            return n;
        setCorrupt();
        return 0;
    }

private:
    static constexpr int kMostAheadBytes = 1 << 16;
    static constexpr int kLeastAheadBytes = 1 << 12;
    static constexpr int kMostBytes = std::numeric_limits<int>::max() / 2;
    static constexpr int kMostSequentialBytes = 1 << 24;

    // A sequential device does not know its end, so the length that a file claims is limited before
    // memory is allocated for it.
    bool fetch(qint64 bytes)
    {
        const qint64 most = mIsSequential ? kMostSequentialBytes : kMostBytes;
        if (!ok() || bytes > left() || bytes > most)
            return fail();
        const int held = mSize - mAt;
        const qint64 ahead = mIsSequential ? 0 : std::min<qint64>(mAhead, mUnread);
        mAhead = std::min(2 * mAhead, kMostAheadBytes);
        const int wanted = static_cast<int>(std::max(bytes - held, ahead));
        if (mWindow.size() < held + wanted)
            mWindow.resize(held + wanted);
        std::memmove(mWindow.data(), mWindow.constData() + mAt, static_cast<std::size_t>(held));
        const int got = std::max(mIn.readRawData(mWindow.data() + held, wanted), 0);
        mAt = 0;
        mSize = held + got;
        if (!mIsSequential)
            mUnread -= got;
        return got == wanted || fail();
    }
    bool fail()
    {
        mIn.setStatus(QDataStream::ReadPastEnd);
        return false;
    }

    QDataStream &mIn;
    const bool mIsSequential;
    qint64 mUnread;               ///< bytes left in the device
    int mAhead = kMostAheadBytes; ///< bytes to read at a time, few where most are passed over
    QByteArray mWindow;           ///< the buffer
    int mAt = 0;                  ///< of the next byte to take
    int mSize = 0;                ///< end of the bytes read
};

} // namespace datainterface
