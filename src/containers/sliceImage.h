// SPDX-License-Identifier: MIT
/// The bytes of a time slice's block, which are part of the file format.
///
///     slice of numbers of w bytes      slice of strings
///     0          int32 n               int32 n, above 0
///     4          n numbers, raw        n texts
///     4 + n w    int32 m               int32 m
///     8 + n w    m int32 missing ids   m int32 missing ids
///
/// Value i belongs to object i. Missing objects have a value too, which has no meaning. Integers
/// are big-endian; raw numbers are little-endian, as in memory. A text is its length in bytes as
/// uint32 (0xFFFFFFFF: null) and then UTF-16, big-endian. This version writes the missing ids in
/// ascending order; a reader accepts any order.
#pragma once
#include <QBitArray>
#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringView>
#include <QVector>
#include <type_traits>

namespace datainterface {

/// Whether the values of an image have the form that they have in memory.
template <class T> constexpr bool isRaw = std::is_arithmetic_v<T>;

/// A slice's image, which is read in place and shares its bytes with the block store. T is int,
/// double or QString.
template <class T> class SliceImage {
public:
    /// False, with an empty slice, when the image is cut short or a count is impossible. The texts
    /// of a slice of strings are walked once to find the missing ids.
    bool assign(const QByteArray &bytes);
    /// Writes missing ids in ascending order. Raises "size" when one array cannot hold the image.
    static QByteArray encode(const QVector<T> &values, const QSet<int> &missing);

    /// Empty when there is no image.
    const QByteArray &bytes() const { return mBytes; }
    int count() const { return mCount; }
    int missingCount() const { return mMissingCount; }
    /// Decodes one value; 0 <= object < count().
    T value(int object) const;
    bool isMissing(int object) const;
    /// One bit for each value; ids out of range are left out.
    QBitArray missingBits() const;
    QVector<T> values() const;
    QSet<int> missing() const;
    /// The values in the image; null when they are not raw or not aligned.
    const T *valuesInPlace() const;
    /// Removes the values from the image, after they were decoded.
    void dropValues();

private:
    QByteArray mBytes;
    int mCount = 0;
    int mMissingCount = 0;
    int mMissingAt = 0; ///< offset of the missing ids
};

/// The image of a slice of texts that are given as views.
QByteArray encodeTextSlice(const QVector<QStringView> &texts, const QSet<int> &missing);

extern template class SliceImage<int>;
extern template class SliceImage<double>;
extern template class SliceImage<QString>;

} // namespace datainterface
