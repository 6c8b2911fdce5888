// SPDX-License-Identifier: MIT
/// Forms that vector and raster datasets of old files share: inline slices, texts as bytes, codes
/// of data types, and a frequency table for each realization.
#pragma once
#include <QDataStream>
#include <QMap>
#include <QVector>
#include <string>
#include <tuple>
#include <utility>
#include "Common/detail/streams.h"
#include "datainterface/DataType.h"

/// A slice as files before 180004 hold it: values, and the ids of their objects in the same order.
/// It exists only while a project is read. T is int, double or std::string.
template <class T> struct oldSlice {
    QVector<T> values;
    QVector<int> ids;
};

namespace datainterface {

/// The codes before 201001: 0 integer, 1 decimal, 2 text. Any other raises "Invalid data type".
DataType dataTypeFromOld(qint32 code);

/// The tables of realizations are merged until, after one of them, a table has more keys than this.
constexpr int kMergedKeyLimit = 10000;

/// @return false when the table has become too large for another realization.
template <class Map> bool mergeCounts(const Map &from, Map &to)
{
    for (auto it = from.cbegin(); it != from.cend(); ++it)
        to[it.key()] += it.value();
    return to.size() <= kMergedKeyLimit;
}
template <class From, class To, std::size_t... I>
bool mergeCounts(const From &from, To &to, std::index_sequence<I...>)
{
    return (mergeCounts(std::get<I>(from), std::get<I>(to)) & ...);
}

/// Reads the frequencies of files before 180083: a list of tables, one for each realization.
/// `Tables` is a tuple of maps, which `readTables(Tables &)` reads; its maps are the first of
/// `merged`.
/// @return the number of realizations in the list.
template <class Tables, class Merged, class ReadTables>
int readOldFrequencies(QDataStream &in, Merged &merged, ReadTables readTables)
{
    constexpr std::size_t kMaps = std::tuple_size_v<Tables>;
    bool isMerging = true;
    const int count = readCount(in, qint64(kMaps * sizeof(qint32)));
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        Tables tables;
        readTables(tables);
        isMerging = isMerging && mergeCounts(tables, merged, std::make_index_sequence<kMaps>());
    }
    return count;
}

} // namespace datainterface
