// SPDX-License-Identifier: MIT
// A dataset's values in another type, container by container: only one of either dataset is in memory at a time.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include "Common/detail/failure.h"
#include "datainterface/MVectorDataset.h"
#include "datainterface/VORN_Progress.h"
#include "datasets/dataContainer.elements.h"
#include "datasets/datasetCopies.h"

using namespace datainterface;

namespace {

// No double has more: what follows are zeros.
constexpr int kMostDecimals = 1074;

// One value in another type; a text that does not parse is 0.
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
            : QString::number(precision == 0 ? std::trunc(value) : value, 'f', std::min(precision, kMostDecimals));
    else
        fail("Invalid data type");
}

// Counts values and asks at every hundredth whether to go on.
class Meter {
public:
    explicit Meter(qint64 total) : mTotal(std::max<qint64>(total, 1)) {}
    bool step()
    {
        constexpr qint64 kInterval = 100;
        if (++mDone % kInterval != 0 || !VORN_Progress::UsingProgressBar())
            return true;
        return VORN_Progress::UpdateProgress(static_cast<int>(std::min<qint64>(100, 100 * mDone / mTotal)), nullptr);
    }

private:
    const qint64 mTotal;
    qint64 mDone = 0;
};

// Each realization is an equal part of the range of the progress bar.
class RealizationProgress {
public:
    RealizationProgress(int realization, int count) : mOpen(VORN_Progress::UsingProgressBar())
    {
        if (!mOpen)
            return;
        VORN_Progress::SetProgressBarSubSection(100 * realization / count, 100 * (realization + 1) / count);
        VORN_Progress::PushProgressBarSection();
    }
    ~RealizationProgress()
    {
        if (!mOpen || !VORN_Progress::UsingProgressBar())
            return;
        try {
            VORN_Progress::PopProgressBarSection();
        } catch (...) { // a bar that a host's slot made meanwhile does not have our section
        }
    }
    RealizationProgress(const RealizationProgress &) = delete;
    RealizationProgress &operator=(const RealizationProgress &) = delete;

private:
    const bool mOpen;
};

// Null after a cancel.
template <class To, class From>
std::unique_ptr<TimeSliceData<To>> convertedSlice(const TimeSliceData<From> &slice, int precision, Meter &meter)
{
    const CheckedOut<TimeSliceData<From>> hold(slice);
    const QSet<int> missing = slice.GetMissingIds();
    QVector<To> values(slice.GetCount());
    for (int object = 0; object < values.size(); ++object) {
        if (!missing.contains(object))
            values[object] = convertedValue<To>(slice.Data()[object], precision);
        if (!meter.step())
            return nullptr;
    }
    return std::make_unique<TimeSliceData<To>>(values, missing);
}

template <class To, class From>
std::unique_ptr<TimeSeriesData<To>> convertedSeries(const TimeSeriesData<From> &series, int precision, Meter &meter)
{
    const CheckedOut<TimeSeriesData<From>> hold(series);
    QVector<TimeSeriesEntry<To>> entries;
    entries.reserve(series.GetCount());
    for (int i = 0; i < series.GetCount(); ++i) {
        const TimeSeriesEntry<From> &entry = series.Data()[i];
        entries.append({entry.stamp, convertedValue<To>(entry.value, precision)});
        if (!meter.step())
            return nullptr;
    }
    return std::make_unique<TimeSeriesData<To>>(entries);
}

template <class T> qint64 valueCount(const SeriesMap<T> &series)
{
    qint64 count = 0;
    for (const TimeSeriesData<T> *one : series)
        count += one->GetCount();
    return count;
}

template <class To, class From>
bool convertRealization(MVectorDataset &target, const MVectorDataset &source, int realization, int precision)
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
