// SPDX-License-Identifier: MIT
// Copies of whole datasets, container by container: into another value type, or through a map of objects. Only one
// container of either dataset is in memory at a time.
#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include "Common/detail/failure.h"
#include "datainterface/MVectorDataset.h"
#include "datainterface/TimeAPI.h"
#include "datainterface/VORN_Progress.h"
#include "datasets/elementTypes.h"
#include "datasets/ownedContainers.h"

using namespace datainterface;

namespace {

template <class T> using SliceMap = MVectorDataset::SliceMap<T>;
template <class T> using SeriesMap = MVectorDataset::SeriesMap<T>;

template <class T> const SliceMap<T> *slicesOf(const MVectorDataset &dataset, int realization)
{
    if constexpr (std::is_same_v<T, double>)
        return dataset.GetTimeSliceDecimalData(realization);
    else if constexpr (std::is_same_v<T, int>)
        return dataset.GetTimeSliceIntegerData(realization);
    else
        return dataset.GetTimeSliceStringData(realization);
}

template <class T> const SeriesMap<T> *seriesOf(const MVectorDataset &dataset, int realization)
{
    if constexpr (std::is_same_v<T, double>)
        return dataset.GetTimeSeriesDecimalData(realization);
    else if constexpr (std::is_same_v<T, int>)
        return dataset.GetTimeSeriesIntegerData(realization);
    else
        return dataset.GetTimeSeriesStringData(realization);
}

// Toward zero. What an int cannot hold becomes the nearest that it can, a NaN 0.
int truncated(double value)
{
    if (std::isnan(value))
        return 0;
    if (value >= std::numeric_limits<int>::max())
        return std::numeric_limits<int>::max();
    if (value <= std::numeric_limits<int>::min())
        return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

// One value in another type; a text that does not parse is 0.
template <class To, class From> To convertedValue(const From &value, int precision)
{
    Q_UNUSED(precision)
    if constexpr (std::is_same_v<From, QString> && std::is_same_v<To, double>)
        return value.toDouble();
    else if constexpr (std::is_same_v<From, QString> && std::is_same_v<To, int>)
        return truncated(value.toDouble());
    else if constexpr (std::is_same_v<From, int> && std::is_same_v<To, double>)
        return value;
    else if constexpr (std::is_same_v<From, int> && std::is_same_v<To, QString>)
        return QString::number(value);
    else if constexpr (std::is_same_v<From, double> && std::is_same_v<To, int>)
        return truncated(value);
    else if constexpr (std::is_same_v<From, double> && std::is_same_v<To, QString>)
        return precision == 0 && std::abs(value) < std::numeric_limits<int>::max()
            ? QString::number(truncated(value))
            : QString::number(precision == 0 ? std::trunc(value) : value, 'f', precision);
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

// The values of the objects that the map names; an object without one, and one that the source does not have, is
// missing.
template <class T>
std::unique_ptr<TimeSliceData<T>> importedSlice(const TimeSliceData<T> &slice, const QVector<int> &objectMap,
                                                int objectCount)
{
    const CheckedOut<TimeSliceData<T>> hold(slice);
    QVector<T> values(objectCount);
    QSet<int> missing;
    for (int object = 0; object < objectCount; ++object) {
        const int from = objectMap.value(object, -1);
        if (from < 0 || from >= slice.GetCount() || slice.IsMissing(from))
            missing.insert(object);
        else
            values[object] = slice.Data()[from];
    }
    return std::make_unique<TimeSliceData<T>>(values, missing);
}

template <class T>
bool importRealization(MVectorDataset &target, const MVectorDataset &source, int realization,
                       const QVector<int> &objectMap)
{
    if (source.GetStorageType() == MVectorDataset::TimeSlice) {
        const SliceMap<T> &slices = *slicesOf<T>(source, realization);
        OwnedContainers<SliceMap<T>> imported;
        for (auto slice = slices.cbegin(); slice != slices.cend(); ++slice)
            imported.insert(slice.key(), importedSlice(*slice.value(), objectMap, target.GetObjectCount()));
        return imported.handOver([&](const SliceMap<T> &map) {
            return target.SetTimeSliceData(realization, map, true);
        });
    }
    const SeriesMap<T> &series = *seriesOf<T>(source, realization);
    OwnedContainers<SeriesMap<T>> imported;
    for (int object = 0; object < std::min(objectMap.size(), target.GetObjectCount()); ++object)
        if (const TimeSeriesData<T> *one = series.value(objectMap[object], nullptr))
            imported.insert(object, std::make_unique<TimeSeriesData<T>>(*one));
    return imported.handOver(
        [&](const SeriesMap<T> &map) { return target.SetTimeSeriesData(realization, map, true); });
}

// A static source has its one slice under time 0, where a static copy looks for it.
void takeOverStatic(MVectorDataset &target, const MVectorDataset &source)
{
    if (source.IsStatic() && target.GetStorageType() == MVectorDataset::TimeSlice)
        target.SetStatic(true);
}

} // namespace

bool MVectorDataset::ConvertDataset(const MVectorDataset *source, int precision)
{
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

bool MVectorDataset::ImportDataset(const MDataset *source, const QVector<int> &objectMap)
{
    const auto *vector = dynamic_cast<const MVectorDataset *>(source);
    require(vector != nullptr, "Invalid data type");
    for (int realization = 0; realization < vector->GetRealizationCount(); ++realization) {
        const bool isDone = visitElement(vector->GetDataType(), [&](auto element) {
            return importRealization<ElementOf<decltype(element)>>(*this, *vector, realization, objectMap);
        });
        if (!isDone)
            return false;
    }
    RecalculateFrequencies();
    takeOverStatic(*this, *vector);
    const QString name = vector->GetMetaData(QStringLiteral("Name")).toString();
    AddToLongDescription(
        QStringLiteral("Subsetted from dataset (\"%1\") on %2\n").arg(name, VORN_GetDateTime()));
    return true;
}
