// SPDX-License-Identifier: MIT
// The conversion of a dataset to another data type, container by container: at any time at most one
// container of each dataset is in memory.
#include "datainterface/MVectorDataset.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include "Common/detail/failure.h"
#include "datainterface/VORN_Progress.h"
#include "datasets/dataContainer.elements.h"
#include "datasets/datasetCopies.h"

using namespace datainterface;

namespace {

// No double has more decimals: all further ones are zeros.
constexpr int kMostDecimals = 1074;

// Converts one value. A text that is not a number becomes 0.
template <class To, class From> To convertedValue(const From &value, int precision)
{
    Q_UNUSED(precision)
    if constexpr (std::is_same_v<From, QString> && std::is_same_v<To, double>)
        return value.toDouble();
    else if constexpr (std::is_same_v<From, QString> && std::is_same_v<To, int>)
        return integerFrom<int>(value.toDouble());
    else if constexpr (std::is_same_v<From, int> && std::is_same_v<To, double>)
        return value;
    else if constexpr (std::is_same_v<From, int> && std::is_same_v<To, QString>)
        return QString::number(value);
    else if constexpr (std::is_same_v<From, double> && std::is_same_v<To, int>)
        return integerFrom<int>(value);
    else if constexpr (std::is_same_v<From, double> && std::is_same_v<To, QString>)
        return precision == 0 && std::abs(value) < std::numeric_limits<int>::max()
                   ? QString::number(integerFrom<int>(value))
                   : QString::number(precision == 0 ? std::trunc(value) : value, 'f',
                                     std::min(precision, kMostDecimals));
    else
        fail("Invalid data type");
}

// Counts values, and reports progress after every hundred of them.
class Meter {
public:
    explicit Meter(qint64 total) : mTotal(std::max<qint64>(total, 1)) {}
    /// Calls `work(first, last)` for consecutive ranges of the positions 0 to count - 1. False when
    /// the user cancels.
    template <class Work> bool walk(int count, Work work)
    {
        constexpr int kInterval = 100;
        for (int first = 0; first < count;) {
            const int last =
                first + std::min(count - first, kInterval - static_cast<int>(mDone % kInterval));
            work(first, last);
            mDone += last - first;
            first = last;
            if (mDone % kInterval == 0 && !report())
                return false;
        }
        return true;
    }

private:
    bool report() const
    {
        if (!VORN_Progress::UsingProgressBar())
            return true;
        return VORN_Progress::UpdateProgress(
            static_cast<int>(std::min<qint64>(100, 100 * mDone / mTotal)), nullptr);
    }

    const qint64 mTotal;
    qint64 mDone = 0;
};

// Gives each realization an equal part of the range of the progress bar.
class RealizationProgress {
public:
    RealizationProgress(int realization, int count) : mOpen(VORN_Progress::UsingProgressBar())
    {
        if (!mOpen)
            return;
        VORN_Progress::SetProgressBarSubSection(100 * realization / count,
                                                100 * (realization + 1) / count);
        VORN_Progress::PushProgressBarSection();
    }
    ~RealizationProgress()
    {
        if (!mOpen || !VORN_Progress::UsingProgressBar())
            return;
        try {
            VORN_Progress::PopProgressBarSection();
        } catch (...) { // a host's slot has replaced the bar; the new one lacks this section
        }
    }
    RealizationProgress(const RealizationProgress &) = delete;
    RealizationProgress &operator=(const RealizationProgress &) = delete;

private:
    const bool mOpen;
};

// Null when the user cancels. Missing positions hold a default value.
template <class To, class From>
std::unique_ptr<TimeSliceData<To>> convertedSlice(const TimeSliceData<From> &slice, int precision,
                                                  Meter &meter)
{
    constexpr bool areNumbers = std::is_arithmetic_v<From> && std::is_arithmetic_v<To>;
    const CheckedOut<TimeSliceData<From>> hold(slice);
    const QSet<int> missing = slice.GetMissingIds();
    const From *from = slice.Data();
    QVector<To> values(slice.GetCount());
    To *to = values.data();
    const bool isDone = meter.walk(values.size(), [&](int first, int last) {
        for (int object = first; object < last; ++object)
            if (areNumbers || !missing.contains(object))
                to[object] = convertedValue<To>(from[object], precision);
    });
    if (!isDone)
        return nullptr;
    if (areNumbers)
        for (int object : missing)
            to[object] = To();
    return std::make_unique<TimeSliceData<To>>(values, missing);
}

template <class To, class From>
std::unique_ptr<TimeSeriesData<To>> convertedSeries(const TimeSeriesData<From> &series,
                                                    int precision, Meter &meter)
{
    const CheckedOut<TimeSeriesData<From>> hold(series);
    const TimeSeriesEntry<From> *from = series.Data();
    QVector<TimeSeriesEntry<To>> entries(series.GetCount());
    TimeSeriesEntry<To> *to = entries.data();
    const bool isDone = meter.walk(entries.size(), [&](int first, int last) {
        for (int i = first; i < last; ++i) {
            to[i].stamp = from[i].stamp;
            to[i].value = convertedValue<To>(from[i].value, precision);
        }
    });
    return isDone ? std::make_unique<TimeSeriesData<To>>(entries) : nullptr;
}

// Counting pages every series in, so it is done for a progress bar only.
template <class T> qint64 valueCount(const SeriesMap<T> &series)
{
    qint64 count = 0;
    if (VORN_Progress::UsingProgressBar())
        for (const TimeSeriesData<T> *one : series)
            count += one->GetCount();
    return count;
}

template <class To, class From>
bool convertRealization(MVectorDataset &target, const MVectorDataset &source, int realization,
                        int precision)
{
    if (source.GetStorageType() == MVectorDataset::TimeSlice) {
        const SliceMap<From> &slices = *slicesOf<From>(source, realization);
        Meter meter(static_cast<qint64>(slices.size()) * source.GetObjectCount());
        OwnedContainers<SliceMap<To>> converted;
        for (auto slice = slices.cbegin(); slice != slices.cend(); ++slice) {
            auto container = convertedSlice<To>(*slice.value(), precision, meter);
            if (!container)
                return false;
            converted.insert(slice.key(), std::move(container));
        }
        return converted.handOver([&](const SliceMap<To> &map) {
            return target.SetTimeSliceData(realization, map, true);
        });
    }
    const SeriesMap<From> &series = *seriesOf<From>(source, realization);
    Meter meter(valueCount(series));
    OwnedContainers<SeriesMap<To>> converted;
    for (auto one = series.cbegin(); one != series.cend(); ++one) {
        auto container = convertedSeries<To>(*one.value(), precision, meter);
        if (!container)
            return false;
        converted.insert(one.key(), std::move(container));
    }
    return converted.handOver(
        [&](const SeriesMap<To> &map) { return target.SetTimeSeriesData(realization, map, true); });
}

} // namespace

bool MVectorDataset::ConvertDataset(const MVectorDataset *source, int precision)
{
    require(source->GetDataType() != GetDataType(), "Invalid data type");
    const int realizations = source->GetRealizationCount();
    for (int realization = 0; realization < realizations; ++realization) {
        const RealizationProgress progress(realization, realizations);
        const bool isDone = visitElement(source->GetDataType(), [&](auto fromElement) {
            return visitElement(GetDataType(), [&](auto toElement) {
                using From = ElementOf<decltype(fromElement)>;
                using To = ElementOf<decltype(toElement)>;
                return convertRealization<To, From>(*this, *source, realization, precision);
            });
        });
        if (!isDone)
            return false;
    }
    RecalculateFrequencies();
    takeOverStatic(*this, *source);
    return true;
}
