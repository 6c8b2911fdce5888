// SPDX-License-Identifier: MIT
/// The bytes of a time series' block. They are file format:
///
///   of numbers   int32 n, n entries raw, 32 bytes each
///   of strings   int32 n, n times: int64 start, int64 end, int32 and int32 inclusive flags, text
///
/// A raw entry is little-endian memory: start, end, two flag bytes, six zero bytes, and eight bytes
/// of value, an int in the first four of them. All else is as in a slice's image.
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
    /// The gaps of the entries come out as zeros. Raises "size" beyond what one array holds.
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
