// SPDX-License-Identifier: MIT
/// A container of a vector dataset: the values of one object over time.
#pragma once
#include <QList>
#include <QMap>
#include <QString>
#include <QTypeInfo>
#include <QVector>
#include <memory>
#include "datainterface/PagedContainer.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/export.h"

/// One value of one object and its interval. 32 bytes in memory and, for numbers, in the block.
template <class T> struct TimeSeriesEntry {
    TimeStamp stamp;
    T value{};
};
template <class T>
class QTypeInfo<TimeSeriesEntry<T>> : public QTypeInfoMerger<TimeSeriesEntry<T>, TimeStamp, T> {
};

/// The history of one object: entries sorted by interval. The intervals never overlap. T is int,
/// double or QString.
template <class T>
class DATAINTERFACE_EXPORT TimeSeriesData : public PagedContainer<TimeSeriesData<T>> {
public:
    using Entry = TimeSeriesEntry<T>;

    TimeSeriesData();
    explicit TimeSeriesData(const QMap<TimeStamp, T> &values);
    /// Entries must be sorted and free of overlap.
    explicit TimeSeriesData(const QVector<Entry> &entries);
    explicit TimeSeriesData(int blockId);
    TimeSeriesData(const TimeSeriesData &other);
    ~TimeSeriesData();

    int GetCount() const;
    /// False, with `value` unchanged, when no interval contains the instant.
    bool GetValue(qint64 time, T &value) const;
    /// Inserts the entry in order. The caller ensures that it does not overlap another one.
    void AddValue(const TimeStamp &stamp, const T &value);
    QMap<TimeStamp, T> GetValues() const;
    QList<TimeStamp> GetIntervals() const;
    QVector<Entry> GetEntries() const;
    /// Replaces the history. Entries must be sorted and free of overlap.
    void SetEntries(const QVector<Entry> &entries);

    /// The GetCount() entries in memory. The container must be checked out; the pointer is valid
    /// until the next change or the last check-in.
    const Entry *Data() const;

private:
    friend class PagedContainer<TimeSeriesData>;
    class Content;

    mutable std::unique_ptr<Content> mContent; ///< null while paged out
};

extern template class PagedContainer<TimeSeriesData<int>>;
extern template class PagedContainer<TimeSeriesData<double>>;
extern template class PagedContainer<TimeSeriesData<QString>>;
extern template class TimeSeriesData<int>;
extern template class TimeSeriesData<double>;
extern template class TimeSeriesData<QString>;
