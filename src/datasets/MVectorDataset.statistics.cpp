// SPDX-License-Identifier: MIT
#include <cmath>
#include "Common/detail/failure.h"
#include "datasets/MVectorDataset.stores.h"

using namespace datainterface;

namespace {

/// Mean and extremes of the finite values that are added.
template <class T> class Summary {
public:
    void add(T value)
    {
        if (!std::isfinite(static_cast<double>(value)))
            return;
        ++mCount;
        mSum += static_cast<double>(value);
        mMinimum = mCount == 1 || value < mMinimum ? value : mMinimum;
        mMaximum = mCount == 1 || value > mMaximum ? value : mMaximum;
    }
    qint64 count() const { return mCount; }
    DataSetStats stats() const
    {
        DataSetStats stats;
        stats.meanValid = true;
        if (mCount > 0) {
            stats.mean = mSum / static_cast<double>(mCount);
            stats.minimum = MDatum(mMinimum);
            stats.maximum = MDatum(mMaximum);
        }
        return stats;
    }

private:
    qint64 mCount = 0;
    double mSum = 0.0;
    T mMinimum{};
    T mMaximum{};
};

/// The length of the text of a whole number.
int widthOf(double number)
{
    return QString::number(number, 'f', 0).size();
}

} // namespace

template <class T, class Visit>
void MVectorDataset::Stores::visitValuesAt(int realization, qint64 time, Visit visit)
{
    if (mDataset.isSliced()) {
        if (const TimeSliceData<T> *slice = sliceAt<T>(realization, time))
            visitHeld(*slice, visit);
        return;
    }
    const qint64 instant = mDataset.timeOf(time);
    T value{};
    visitObjects(*series<T>().of(realization), mDataset.mObjectCount,
                 [&](const TimeSeriesData<T> &one) {
                     if (one.GetValue(instant, value))
                         visit(value);
                 });
}

// A time without values gets a record too, with a valid mean and no extremes.
bool MVectorDataset::CalcMinMaxMean(int realization, qint64 time) const
{
    if (!holdsRealization(realization) || !hasStatistics(realization))
        return false;
    return visitNumericElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        if (isSliced() && !mStores->sliceAt<T>(realization, time))
            return false;
        Summary<T> summary;
        mStores->visitValuesAt<T>(realization, time, [&summary](T value) { summary.add(value); });
        mStatistics[realization].perTime.insert(TimeStamp(timeOf(time)), summary.stats());
        return true;
    });
}

bool MVectorDataset::CalcMinMaxMean(int realization) const
{
    if (!holdsRealization(realization) || !hasStatistics(realization))
        return false;
    return visitNumericElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        Summary<T> summary;
        mStores->visitOf<T>([&](const auto &store) {
            for (const auto *container : *store.of(realization))
                visitHeld(*container, [&summary](T value) { summary.add(value); });
        });
        if (summary.count() == 0)
            return false;
        mStatistics[realization].whole = summary.stats();
        return true;
    });
}

bool MVectorDataset::GetStdDev(int realization, qint64 time, double &result) const
{
    if (!hasStatistics(realization) || !holdsRealization(realization))
        return false;
    const TimeStamp instant(timeOf(time));
    return visitNumericElement(mDataType, [&](auto element) {
        using T = ElementOf<decltype(element)>;
        if (!mStatistics.at(realization).perTime.contains(instant)
            && !CalcMinMaxMean(realization, time))
            return false;
        auto &perTime = mStatistics[realization].perTime;
        const auto stats = perTime.find(instant);
        require(stats != perTime.end(), "Invalid dataset time");
        if (!stats->stdDevValid) {
            qint64 count = 0;
            double sum = 0.0;
            mStores->visitValuesAt<T>(realization, time, [&](T value) {
                if (!std::isfinite(static_cast<double>(value)))
                    return;
                const double deviation = static_cast<double>(value) - stats->mean;
                sum += deviation * deviation;
                ++count;
            });
            if (count == 0)
                return false;
            stats->stdDev = std::sqrt(sum / static_cast<double>(count));
            stats->stdDevValid = true;
        }
        result = stats->stdDev;
        return true;
    });
}

// Decimals get as many places after the point as 17 significant digits leave for the larger
// extreme, so that values of that magnitude read back exactly.
void MVectorDataset::GetDataWidths(int &width, int &decimals)
{
    require(!mStatistics.isEmpty(), "Data stats not found");
    width = 1;
    decimals = 0;
    if (mDataType == StringType) {
        const auto widen = [&width](const QString &text) { width = qMax(width, text.size()); };
        for (const MVectorDataRealization &realization : qAsConst(mRealizationData)) {
            for (const TimeSliceData<QString> *slice : realization.slicesOf<QString>())
                visitHeld(*slice, widen);
            for (const TimeSeriesData<QString> *series : realization.seriesOf<QString>())
                visitHeld(*series, widen);
        }
        return;
    }
    DataSetStats stats;
    if (!GetGlobalDataSetStats(0, stats))
        return;
    const double minimum = stats.minimum.toDouble();
    const double maximum = stats.maximum.toDouble();
    width = qMax(widthOf(minimum), widthOf(maximum));
    if (mDataType == DecimalType) {
        const int whole =
            qMax(widthOf(std::trunc(std::fabs(minimum))), widthOf(std::trunc(std::fabs(maximum))));
        decimals = qBound(0, std::numeric_limits<double>::max_digits10 - whole, 15);
        width = whole + (minimum < 0.0) + (decimals > 0 ? 1 + decimals : 0);
    }
}
