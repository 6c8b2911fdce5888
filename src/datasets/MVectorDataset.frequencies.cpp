// SPDX-License-Identifier: MIT
#include "Common/detail/failure.h"
#include "datasets/elementTypes.h"
#include "datasets/frequencyTally.h"
#include "datasets/heldValues.h"

using namespace datainterface;

namespace {

template <class T> void countHeld(const TimeSliceData<T> &slice, FrequencyTally<T> &tally)
{
    const CheckedOut<TimeSliceData<T>> hold(slice);
    HeldValues<T>(slice).visit([&tally](int, const T &value) { tally.count(value); });
}
template <class T> void countHeld(const TimeSeriesData<T> &series, FrequencyTally<T> &tally)
{
    const CheckedOut<TimeSeriesData<T>> hold(series);
    std::for_each(series.Data(), series.Data() + series.GetCount(),
                  [&tally](const auto &entry) { tally.count(entry.value); });
}

template <class T> MDatum datumOf(const T &key)
{
    if constexpr (std::is_same_v<T, OrderedDouble>)
        return MDatum(static_cast<double>(key));
    else
        return MDatum(key);
}

} // namespace

template <class T> bool MVectorDataset::updateFrequency(const T &value, bool add)
{
    auto &table = mFrequencies.tableOf<T>();
    if (add)
        return countUp(table, value);
    countDown(table, value);
    return true;
}

bool MVectorDataset::UpdateFrequencies(int value, bool add)
{
    return updateFrequency(value, add);
}

bool MVectorDataset::UpdateFrequencies(double value, bool add)
{
    return updateFrequency(value, add);
}

bool MVectorDataset::UpdateFrequencies(const QString &value, bool add)
{
    return updateFrequency(value, add);
}

// Containers are read until the table is over its limit; what comes behind would not be counted.
template <class T> bool MVectorDataset::recountFrequencies()
{
    auto &table = mFrequencies.tableOf<T>();
    table.clear();
    FrequencyTally<T> tally(table, std::numeric_limits<int>::max(), FrequencyTally<T>::Up);
    const auto countContainers = [&tally](const auto &containers) {
        for (auto it = containers.begin(); it != containers.end() && !tally.isFull(); ++it)
            countHeld(**it, tally);
    };
    for (const MVectorDataRealization &realization : qAsConst(mRealizationData)) {
        if (isSliced())
            countContainers(realization.slicesOf<T>());
        else
            countContainers(realization.seriesOf<T>());
    }
    tally.finish();
    return true;
}

bool MVectorDataset::RecalculateIntegerFrequencies()
{
    return recountFrequencies<int>();
}

bool MVectorDataset::RecalculateDecimalFrequencies()
{
    return recountFrequencies<double>();
}

bool MVectorDataset::RecalculateStringFrequencies()
{
    return recountFrequencies<QString>();
}

bool MVectorDataset::RecalculateFrequencies()
{
    switch (mDataType) {
    case DecimalType:
        return RecalculateDecimalFrequencies();
    case IntegerType:
        return RecalculateIntegerFrequencies();
    case StringType:
        return RecalculateStringFrequencies();
    default:
        return false;
    }
}

QMap<MDatum, int> MVectorDataset::GetDataFrequencies()
{
    QMap<MDatum, int> frequencies;
    visitElement(mDataType, [&](auto element) {
        const auto &table = mFrequencies.tableOf<ElementOf<decltype(element)>>();
        for (auto it = table.cbegin(); it != table.cend(); ++it)
            frequencies.insert(datumOf(it.key()), it.value());
    });
    return frequencies;
}

int MVectorDataset::GetDatumFrequency(const MDatum &value) const
{
    return visitElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        const auto &table = mFrequencies.tableOf<T>();
        if constexpr (std::is_same_v<T, int>) {
            const int key = static_cast<int>(value.integerValue());
            return key == value.integerValue() ? table.value(key, 0) : 0;
        } else if constexpr (std::is_same_v<T, double>) {
            return table.value(value.decimalValue(), 0);
        } else {
            return table.value(value.text(), 0);
        }
    });
}

// Full to the key, and not over it: legends ask for exactly this.
int MVectorDataset::UniqueValueCount(bool *capped) const
{
    const int count = visitElement(mDataType, [&](auto element) {
        return mFrequencies.tableOf<ElementOf<decltype(element)>>().size();
    });
    if (capped)
        *capped = count == kFrequencyKeyLimit;
    return count;
}

bool MVectorDataset::AllUniqueValues(int realization, bool *capped)
{
    if (UniqueValueCount(capped) != mObjectCount)
        return false;
    if (!isSliced()) {
        for (int id = 0; id < mObjectCount; ++id) {
            if (GetTimeSeriesIntervals(realization, id).size() != 1)
                return false;
        }
        return true;
    }
    const QList<TimeStamp> ts = GetTimeSliceIntervals(realization);
    require(ts.size() > 0, "ts.size()");
    return ts.size() == 1 && GetDataCount(realization, ts.first().timeInInterval()) == mObjectCount;
}
