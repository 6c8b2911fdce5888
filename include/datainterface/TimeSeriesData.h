// SPDX-License-Identifier: MIT
/// One shape of a vector dataset's values: one object over time.
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

/// One value of one object and the interval on which it holds. 32 bytes in memory and, for numbers,
/// in the block.
template <class T> struct TimeSeriesEntry {
    TimeStamp stamp;
    T value{};
};
template <class T>
class QTypeInfo<TimeSeriesEntry<T>> : public QTypeInfoMerger<TimeSeriesEntry<T>, TimeStamp, T> {
};

/// The history of one object: entries sorted by interval, which never overlap. T is int, double or
/// QString.
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
    /// False, with `value` untouched, when no entry holds the instant.
    bool GetValue(qint64 time, T &value) const;
    /// Inserts at its sorted place. Overlaps are the caller's to prevent.
    void AddValue(const TimeStamp &stamp, const T &value);
    QMap<TimeStamp, T> GetValues() const;
    QList<TimeStamp> GetIntervals() const;
    QVector<Entry> GetEntries() const;
    /// Replaces the history; entries sorted and free of overlap.
    void SetEntries(const QVector<Entry> &entries);

    /// The entries in place: GetCount() of them, valid until the next change or the last check-in.
    /// Check out first.
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
