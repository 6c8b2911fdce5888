// SPDX-License-Identifier: MIT
/// The stores of a vector dataset, and what its overloads by element type have in common.
///
/// The rules of the values are in the stores. What is checked before a store is called, and what
/// follows a change (time bounds, statistics, variogram models), is done here and in the sources of
/// MVectorDataset.
#pragma once
#include <tuple>
#include "datasets/elementTypes.h"
#include "datasets/seriesStore.h"
#include "datasets/sliceStore.h"

class Q_DECL_HIDDEN MVectorDataset::Stores {
public:
    explicit Stores(MVectorDataset &dataset)
        : mDataset(dataset),
          mSlices(dataset.mRealizationData, dataset.mRealizationData, dataset.mRealizationData),
          mSeries(dataset.mRealizationData, dataset.mRealizationData, dataset.mRealizationData)
    {
    }

    template <class T> datainterface::SliceStore<T> &slices()
    {
        return std::get<datainterface::SliceStore<T>>(mSlices);
    }
    template <class T> datainterface::SeriesStore<T> &series()
    {
        return std::get<datainterface::SeriesStore<T>>(mSeries);
    }
    /// Calls `visit(store)` with the store of an element type that the storage type picks.
    template <class T, class Visit> decltype(auto) visitOf(Visit &&visit)
    {
        return mDataset.isSliced() ? visit(slices<T>()) : visit(series<T>());
    }
    /// Calls `visit(store, element)` with the store that data type and storage type pick. Another
    /// data type raises "Invalid data type".
    template <class Visit>
    decltype(auto) visit(Visit &&visit, const char *file = __builtin_FILE(),
                         int line = __builtin_LINE())
    {
        return datainterface::visitElement(
            mDataset.mDataType,
            [&](auto element) -> decltype(auto) {
                using T = datainterface::ElementOf<decltype(element)>;
                return visitOf<T>(
                    [&](auto &store) -> decltype(auto) { return visit(store, element); });
            },
            file, line);
    }
    /// To be called before a map is changed by other code than its store.
    void forget()
    {
        std::apply([](auto &...store) { (store.forget(), ...); }, mSlices);
    }

    /// The slice at a time of the dataset, null without one.
    template <class T> const TimeSliceData<T> *sliceAt(int realization, qint64 time)
    {
        return slices<T>().at(realization, mDataset.timeOf(time));
    }

    /// As MVectorDataset::ReadValue, for a type T that is the dataset's.
    template <class T> bool read(int realization, int id, qint64 time, T &value);
    template <class T> MDatum interpolated(int realization, int id, qint64 time);
    template <class T>
    bool readAll(int realization, qint64 time, QVector<T> &values, QSet<int> &missing,
                 bool interpolate);
    /// Calls `visit(value)` for the value of each object that has one at the time.
    template <class T, class Visit> void visitValuesAt(int realization, qint64 time, Visit visit);

    template <class T>
    bool addCell(int realization, int id, const TimeStamp &stamp, const T &value, bool overwrite,
                 bool updateFrequencies);
    template <class T>
    bool addSlice(int realization, const TimeStamp &stamp, const QVector<T> &values,
                  const QSet<int> &missing, bool overwrite, bool updateFrequencies);
    template <class T>
    void addToSeries(int realization, int id, const TimedValues<T> &values, bool overwrite,
                     bool updateFrequencies);
    template <class T>
    bool addSeries(int realization, int id, const TimedValues<T> &values, bool overwrite,
                   bool updateFrequencies);

    template <class T> bool findSlice(int realization, qint64 time, const TimeSliceData<T> *&slice);
    template <class T> bool takeSlices(int realization, const SliceMap<T> &taken);
    template <class T> bool takeSeries(int id, int realization, TimeSeriesData<T> *taken);
    template <class T> bool takeAllSeries(int realization, const SeriesMap<T> &taken);

private:
    template <class T> bool canTake(int realization, StorageType storage) const;
    void widenBounds(const QList<TimeStamp> &intervals);
    template <class T>
    bool mergeSlice(int realization, const TimeStamp &stamp, const QVector<T> &values,
                    const QSet<int> &missing, bool overwrite, bool updateFrequencies);
    template <class T> FrequencyTable<T> *tableIf(bool updateFrequencies)
    {
        return updateFrequencies ? &mDataset.mFrequencies.tableOf<T>() : nullptr;
    }

    MVectorDataset &mDataset;
    std::tuple<datainterface::SliceStore<int>, datainterface::SliceStore<double>,
               datainterface::SliceStore<QString>>
        mSlices;
    std::tuple<datainterface::SeriesStore<int>, datainterface::SeriesStore<double>,
               datainterface::SeriesStore<QString>>
        mSeries;
};
