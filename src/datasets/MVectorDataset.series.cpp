// SPDX-License-Identifier: MIT
// Values added to a dataset that is stored as series, and the calls that serve both storage types:
// the arguments are checked here, the histories are edited in the SeriesStore.
#include <cmath>
#include "Common/detail/failure.h"
#include "datasets/MVectorDataset.stores.h"
#include "datasets/dataContainer.elements.h"
#include "datasets/intervalCuts.h"

using namespace datainterface;

namespace {

template <class T> T valueOf(const MDatum &datum)
{
    if constexpr (std::is_same_v<T, double>)
        return datum.decimalValue();
    else if constexpr (std::is_same_v<T, int>)
        return integerOf(datum);
    else
        return datum.text();
}

} // namespace

template <class T>
void MVectorDataset::Stores::addToSeries(int realization, int id, const TimedValues<T> &values,
                                         bool overwrite, bool updateFrequencies)
{
    series<T>().add(realization, id, values, overwrite, tableIf<T>(updateFrequencies));
    for (const auto &[stamp, value] : values)
        mDataset.mTimeBounds += stamp;
    mDataset.dataChanged(realization);
}

template <class T>
bool MVectorDataset::Stores::addSeries(int realization, int id, const TimedValues<T> &values,
                                       bool overwrite, bool updateFrequencies)
{
    if (!mDataset.holdsRealization(realization) || mDataset.mDataType != typeCode<T>()
        || mDataset.isSliced() || mDataset.mIsStatic || !mDataset.holdsObject(id))
        return false;
    TimedValues<T> kept;
    kept.reserve(values.size());
    bool areValid = true;
    for (const auto &[stamp, value] : values) {
        if constexpr (std::is_same_v<T, double>) {
            if (!std::isfinite(value))
                continue;
        }
        const TimeStamp filed = mDataset.stampOf(stamp);
        if (holdsTick(filed))
            kept.append({filed, value});
        else
            areValid = false;
    }
    if (!kept.isEmpty())
        addToSeries(realization, id, kept, overwrite, updateFrequencies);
    return areValid;
}

bool MVectorDataset::AddTimeSeriesValue(int realization, int id, const TimeStamp &stamp,
                                        const MDatum &value, bool overwrite, bool updateFrequencies)
{
    const TimeStamp filed = stampOf(stamp);
    if (!holdsRealization(realization) || isSliced() || value.isEmpty() || !holdsObject(id)
        || !holdsTick(filed))
        return false;
    visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        mStores->addToSeries<T>(realization, id, {{filed, valueOf<T>(value)}}, overwrite,
                                updateFrequencies);
    });
    return true;
}

bool MVectorDataset::AddTimeSeriesValues(int realization, int id, const TimedValues<int> &values,
                                         bool overwrite, bool updateFrequencies)
{
    return mStores->addSeries(realization, id, values, overwrite, updateFrequencies);
}

bool MVectorDataset::AddTimeSeriesValues(int realization, int id, const TimedValues<double> &values,
                                         bool overwrite, bool updateFrequencies)
{
    return mStores->addSeries(realization, id, values, overwrite, updateFrequencies);
}

bool MVectorDataset::AddTimeSeriesValues(int realization, int id,
                                         const TimedValues<QString> &values, bool overwrite,
                                         bool updateFrequencies)
{
    return mStores->addSeries(realization, id, values, overwrite, updateFrequencies);
}

bool MVectorDataset::AddDataValue(int realization, int id, const TimeStamp &stamp,
                                  const MDatum &value, bool overwrite, bool updateFrequencies)
{
    return isSliced()
               ? AddTimeSliceValue(realization, id, stamp, value, overwrite, updateFrequencies)
               : AddTimeSeriesValue(realization, id, stamp, value, overwrite, updateFrequencies);
}

bool MVectorDataset::SetMissing(int realization, int id, const TimeStamp &stamp)
{
    knownRealization(realization);
    const TimeStamp filed = stampOf(stamp);
    if (!holdsObject(id) || !holdsTick(filed))
        return false;
    const bool changed = mStores->visit([&](auto &store, auto element) {
        return store.setMissing(realization, id, filed,
                                mFrequencies.tableOf<ElementOf<decltype(element)>>());
    });
    dataChanged(realization);
    return changed;
}
