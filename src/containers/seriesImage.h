// SPDX-License-Identifier: MIT
/// The bytes of a time series' block, which are part of the file format. Entries ascend in time.
///
///     series of numbers             series of strings
///     0   int32 n                   0   int32 n
///     4   n raw entries             4   n entries of variable length
///
///     raw entry, 32 bytes, as in memory      entry of strings, all big-endian
///      0  int64 start                         0  int64 start
///      8  int64 end                           8  int64 end
///     16  uint8 start inclusive              16  int32 start inclusive
///     17  uint8 end inclusive                20  int32 end inclusive
///     18  6 zero bytes                       24  text
///     24  double, or int and 4 zero bytes
///
/// Integers outside of raw entries are big-endian; a text is as in a slice's image (sliceImage.h).
#pragma once
#include <QByteArray>
#include <QVector>
#include "datainterface/TimeContainers.h"

namespace datainterface {

/// T is int, double or QString.
template <class T> struct SeriesImage {
    using Entry = TimeSeriesEntry<T>;

    /// False, with `entries` empty, when the image is cut short or its count is impossible.
    static bool decode(const QByteArray &image, QVector<Entry> &entries);
    /// The padding of entries is written as zeros. Raises "size" when one array cannot hold the
    /// image.
    static QByteArray encode(const QVector<Entry> &entries);

    /// The number of raw entries, 0 when the image is cut short. Numbers only.
    static int count(const QByteArray &image);
    /// One raw entry, 0 <= index < count(). Numbers only.
    static Entry entry(const QByteArray &image, int index);
};

extern template struct SeriesImage<int>;
extern template struct SeriesImage<double>;
extern template struct SeriesImage<QString>;

} // namespace datainterface
