// SPDX-License-Identifier: MIT
// Values added to a dataset that is stored as slices: the arguments are checked here, the slices
// are cut and merged in the SliceStore.
#include <cmath>
#include "Common/detail/failure.h"
#include "datainterface/dataContainer.h"
#include "datasets/MVectorDataset.stores.h"
#include "datasets/dataContainer.elements.h"

using namespace datainterface;

namespace {

/// The elements of a container as `To`.
template <class To, class From> QVector<To> widened(const From *values, int count)
{
    QVector<To> result;
    result.reserve(count);
    std::transform(values, values + count, std::back_inserter(result), [](const From &value) {
        if constexpr (std::is_same_v<To, double>)
            return toNumber(value);
        else
            return static_cast<To>(value);
    });
    return result;
}

/// What an element of a container becomes in a vector dataset; void where it has no place.
template <class T>
using SliceElement = std::conditional_t<
    std::is_same_v<T, QString>, QString,
    std::conditional_t<
        std::is_same_v<T, double> || std::is_same_v<T, float> || std::is_same_v<T, half>, double,
        std::conditional_t<std::is_integral_v<T> && (sizeof(T) < 4 || std::is_same_v<T, qint32>),
                           int, void>>>;

} // namespace

template <class T>
bool MVectorDataset::Stores::mergeSlice(int realization, const TimeStamp &stamp,
                                        const QVector<T> &values, const QSet<int> &missing,
                                        bool overwrite, bool updateFrequencies)
{
    if (!slices<T>().add(realization, stamp, values, missing, overwrite,
                         tableIf<T>(updateFrequencies)))
        return false;
    mDataset.mTimeBounds += stamp;
    return true;
}

template <class T>
bool MVectorDataset::Stores::addCell(int realization, int id, const TimeStamp &stamp,
                                     const T &value, bool overwrite, bool updateFrequencies)
{
    if (slices<T>().setValue(realization, id, stamp, value, overwrite,
                             tableIf<T>(updateFrequencies)))
        return true;
    const int objectCount = mDataset.mObjectCount;
    QVector<T> values(objectCount);
    values[id] = value;
    QSet<int> missing;
    missing.reserve(objectCount);
    for (int other = 0; other < objectCount; ++other) {
        if (other != id)
            missing.insert(other);
    }
    return mergeSlice(realization, stamp, values, missing, overwrite, updateFrequencies);
}

template <class T>
bool MVectorDataset::Stores::addSlice(int realization, const TimeStamp &stamp,
                                      const QVector<T> &values, const QSet<int> &missing,
                                      bool overwrite, bool updateFrequencies)
{
    if (!mDataset.holdsRealization(realization) || mDataset.mDataType != typeCode<T>()
        || !mDataset.isSliced())
        return false;
    require(values.size() == mDataset.mObjectCount, "Invalid object count");

    QSet<int> absent = missing;
    for (const int id : missing) {
        if (!mDataset.holdsObject(id))
            absent.remove(id);
    }
    if constexpr (std::is_same_v<T, double>) {
        for (int id = 0; id < values.size(); ++id) {
            if (!std::isfinite(values.at(id)))
                absent.insert(id);
        }
        if (absent.size() == mDataset.mObjectCount)
            return true;
    }
    const bool changed = mergeSlice(realization, mDataset.stampOf(stamp), values, absent, overwrite,
                                    updateFrequencies);
    if (changed)
        mDataset.invalidateStatistics(realization);
    mDataset.RemoveAllVariogramModels();
    return changed;
}

bool MVectorDataset::AddTimeSliceValue(int realization, int id, const TimeStamp &stamp,
                                       const MDatum &value, bool overwrite, bool updateFrequencies)
{
    if (!isSliced() || !holdsRealization(realization) || !holdsObject(id))
        return false;
    const TimeStamp closed(stamp.startTime, stamp.endTime, stamp.inclusiveStart,
                           stamp.inclusiveEnd);
    switch (value.type()) {
    case MDatum::Integer:
        return mStores->addCell(realization, id, closed, integerOf(value), overwrite,
                                updateFrequencies);
    case MDatum::Decimal:
        return mStores->addCell(realization, id, closed, value.decimalValue(), overwrite,
                                updateFrequencies);
    case MDatum::String:
        return mStores->addCell(realization, id, closed, value.text(), overwrite,
                                updateFrequencies);
    default:
        return false;
    }
}

bool MVectorDataset::AddTimeSliceValues(int realization, const TimeStamp &stamp,
                                        const QVector<int> &values, const QSet<int> &missing,
                                        bool overwrite, bool updateFrequencies)
{
    return mStores->addSlice(realization, stamp, values, missing, overwrite, updateFrequencies);
}

bool MVectorDataset::AddTimeSliceValues(int realization, const TimeStamp &stamp,
                                        const QVector<double> &values, const QSet<int> &missing,
                                        bool overwrite, bool updateFrequencies)
{
    return mStores->addSlice(realization, stamp, values, missing, overwrite, updateFrequencies);
}

bool MVectorDataset::AddTimeSliceValues(int realization, const TimeStamp &stamp,
                                        const QVector<QString> &values, const QSet<int> &missing,
                                        bool overwrite, bool updateFrequencies)
{
    return mStores->addSlice(realization, stamp, values, missing, overwrite, updateFrequencies);
}

bool MVectorDataset::AddTimeSliceValues(int realization, const TimeStamp &stamp,
                                        VORN_DataContainer &values, bool overwrite,
                                        bool updateFrequencies)
{
    if (!isSliced() || values.count() != mObjectCount || ContainerAccess::isEmpty(values))
        return false;
    // After setAllMissing the ids are not listed, and the values of the container count as present.
    const QSet<int> missing =
        values.missingData().isValid() ? values.missingData().missingIds() : QSet<int>();
    bool changed = false;
    ContainerAccess::visitValues(values, [&](const auto *elements) {
        using From = std::decay_t<decltype(*elements)>;
        using To = SliceElement<From>;
        if constexpr (!std::is_void_v<To>)
            changed = mStores->addSlice(realization, stamp, widened<To>(elements, mObjectCount),
                                        missing, overwrite, updateFrequencies);
    });
    return changed;
}
