// SPDX-License-Identifier: MIT
/// The bytes of a time slice's block. They are file format:
///
///   of numbers   int32 n, n numbers raw, int32 m, m missing ids as int32
///   of strings   int32 n, n texts, int32 m, m missing ids as int32
///
/// Integers are big-endian; "raw" is the machine's little-endian memory in one copy. A text is its
/// length in bytes (0xFFFFFFFF: null) and UTF-16, big-endian.
#pragma once
#include <QBitArray>
#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringView>
#include <QVector>
#include <type_traits>

namespace datainterface {

/// Whether values lie in an image as they lie in memory.
template <class T> constexpr bool isRaw = std::is_arithmetic_v<T>;

/// A slice's image, read in place. It shares its bytes with the block store. T is int, double or
/// QString.
template <class T> class SliceImage {
public:
    /// False, and empty, when the image is cut short or a count is impossible. Strings are walked
    /// once.
    bool assign(const QByteArray &bytes);
    /// Missing ids are written in ascending order. Raises "size" beyond what one array holds.
    static QByteArray encode(const QVector<T> &values, const QSet<int> &missing);

    /// Empty when there is no image.
    const QByteArray &bytes() const { return mBytes; }
    int count() const { return mCount; }
    int missingCount() const { return mMissingCount; }
    /// 0 <= object < count(); the others are not decoded.
    T value(int object) const;
    bool isMissing(int object) const;
    /// One bit for each value; ids of others are left out.
    QBitArray missingBits() const;
    QVector<T> values() const;
    QSet<int> missing() const;
    /// The values where they lie; null when they are not raw or not aligned.
    const T *valuesInPlace() const;
    /// Lets go of the values, once they are held elsewhere.
    void dropValues();

private:
    QByteArray mBytes;
    int mCount = 0;
    int mMissingCount = 0;
    int mMissingAt = 0; ///< offset of the missing ids
};

/// The image of a slice of texts that lie elsewhere.
QByteArray encodeTextSlice(const QVector<QStringView> &texts, const QSet<int> &missing);

extern template class SliceImage<int>;
extern template class SliceImage<double>;
extern template class SliceImage<QString>;

} // namespace datainterface
