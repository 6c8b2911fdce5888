// SPDX-License-Identifier: MIT
#include "Common/detail/failure.h"
#include "datasets/elementTypes.h"
#include "datasets/frequencyTally.h"
#include "datasets/heldValues.h"

using namespace datainterface;

namespace {

template <class T> bool update(FrequencyTable<T> &table, const T &value, bool add)
{
    if (add)
        return countUp(table, value);
    countDown(table, value);
    return true;
}

/// Counts all values anew. Containers are read until the table is over its limit: the values after
/// that would not be counted.
template <class T>
bool recount(FrequencyTable<T> &table, const QMap<int, MVectorDataRealization> &realizations,
             MVectorDataset::StorageType storage)
{
    table.clear();
    FrequencyTally<T> tally(table, std::numeric_limits<int>::max(), FrequencyTally<T>::Up);
    const auto countContainers = [&tally](const auto &containers) {
        for (auto it = containers.begin(); it != containers.end() && !tally.isFull(); ++it)
            visitHeld(**it, [&tally](const T &value) { tally.count(value); });
    };
    for (const MVectorDataRealization &realization : realizations) {
        if (storage == MVectorDataset::TimeSlice)
            countContainers(realization.slicesOf<T>());
        else
            countContainers(realization.seriesOf<T>());
    }
    tally.finish();
    return true;
}

template <class T> MDatum datumOf(const T &key)
{
    if constexpr (std::is_same_v<T, OrderedDouble>)
        return MDatum(static_cast<double>(key));
    else
        return MDatum(key);
}

} // namespace

bool MVectorDataset::UpdateFrequencies(int value, bool add)
{
    return update(mFrequencies.tableOf<int>(), value, add);
}

bool MVectorDataset::UpdateFrequencies(double value, bool add)
{
    return update(mFrequencies.tableOf<double>(), value, add);
}

bool MVectorDataset::UpdateFrequencies(const QString &value, bool add)
{
    return update(mFrequencies.tableOf<QString>(), value, add);
}

bool MVectorDataset::RecalculateIntegerFrequencies()
{
    return recount<int>(mFrequencies.tableOf<int>(), mRealizationData, mStorageType);
}

bool MVectorDataset::RecalculateDecimalFrequencies()
{
    return recount<double>(mFrequencies.tableOf<double>(), mRealizationData, mStorageType);
}

bool MVectorDataset::RecalculateStringFrequencies()
{
    return recount<QString>(mFrequencies.tableOf<QString>(), mRealizationData, mStorageType);
}

bool MVectorDataset::RecalculateFrequencies()
{
    if (mDataType != DecimalType && mDataType != IntegerType && mDataType != StringType)
        return false; // The type of a damaged file.
    return visitElement(mDataType, [this](auto element) {
        using T = ElementOf<decltype(element)>;
        return recount<T>(mFrequencies.tableOf<T>(), mRealizationData, mStorageType);
    });
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

// Capped means that the table has exactly kFrequencyKeyLimit keys, not more: legends depend on it.
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
    require(!ts.isEmpty(), "ts.size()");
    return ts.size() == 1 && GetDataCount(realization, ts.first().timeInInterval()) == mObjectCount;
}
