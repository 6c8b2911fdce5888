// SPDX-License-Identifier: MIT
/// The content of a slice in memory. At first it is the block's image, whose bytes are shared with
/// the block store, so that reading one number decodes one number. Values and missing ids are
/// decoded separately, when all of them are first needed; those that change are decoded before the
/// change.
#pragma once
#include <QBitArray>
#include "Common/DataManager.h"
#include "Common/detail/failure.h"
#include "containers/sliceImage.h"
#include "datainterface/TimeContainers.h"

template <class T> class TimeSliceData<T>::Content {
public:
    Content() = default;
    Content(const QVector<T> &values, const QSet<int> &missing)
        : mValues(values), mMissing(missing), mHasValues(true), mHasMissing(true)
    {
    }

    /// A slice of numbers that cannot be read becomes empty. One of strings raises, also when it is
    /// empty.
    void restore(datainterface::BlockRead result, const QByteArray &image)
    {
        using datainterface::BlockRead;
        mHasValues = mHasMissing = false;
        const bool isWhole = result == BlockRead::Done && mImage.assign(image);
        const bool isAllowed = datainterface::isRaw<T> && result != BlockRead::Failed;
        datainterface::require(isAllowed || isWhole, "Invalid block id");
        datainterface::require(datainterface::isRaw<T> || count() > 0, "size");
    }
    QByteArray encode()
    {
        datainterface::require(datainterface::isRaw<T> || count() > 0, "empty dataset");
        const bool isUntouched = !mHasValues && !mHasMissing && !mImage.bytes().isEmpty();
        return isUntouched ? mImage.bytes()
                           : datainterface::SliceImage<T>::encode(values(), missing());
    }

    /// Bytes that the decoded content takes in memory.
    qint64 memory() const
    {
        constexpr qint64 kTextBytes = 64; // of a short text
        constexpr qint64 kSetBytes = 48;  // of an id in a QSet
        return count() * (qint64(sizeof(T)) + (datainterface::isRaw<T> ? 0 : kTextBytes))
               + missingCount() * kSetBytes;
    }

    int count() const { return mHasValues ? mValues.size() : mImage.count(); }
    int missingCount() const { return mHasMissing ? mMissing.size() : mImage.missingCount(); }
    T value(int object) const
    {
        if (object < 0 || object >= count())
            return T();
        return mHasValues ? mValues.at(object) : mImage.value(object);
    }
    /// The first call converts the ids of the image to bits, since most callers ask for many
    /// objects.
    bool isMissing(int object) const
    {
        if (mHasMissing)
            return mMissing.contains(object);
        if (mImage.missingCount() == 0)
            return false;
        if (mMissingBits.isEmpty())
            mMissingBits = mImage.missingBits();
        return object >= 0 && object < mMissingBits.size() ? mMissingBits.testBit(object)
                                                           : mImage.isMissing(object);
    }
    const T *data()
    {
        const T *inPlace = mHasValues ? nullptr : mImage.valuesInPlace();
        return inPlace ? inPlace : values().constData();
    }

    QVector<T> &values()
    {
        if (!mHasValues) {
            mValues = mImage.values();
            mImage.dropValues();
            mHasValues = true;
        }
        return mValues;
    }
    QSet<int> &missing()
    {
        if (!mHasMissing) {
            mMissing = mImage.missing();
            mHasMissing = true;
        }
        return mMissing;
    }

private:
    datainterface::SliceImage<T> mImage;
    QVector<T> mValues;
    QSet<int> mMissing;
    mutable QBitArray mMissingBits; ///< by object; empty until first needed
    bool mHasValues = false;        ///< values are in mValues; else in mImage
    bool mHasMissing = false;       ///< missing ids are in mMissing; else in mImage
};
