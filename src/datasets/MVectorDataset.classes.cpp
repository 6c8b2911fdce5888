// SPDX-License-Identifier: MIT
// Legends and shapes of a distribution. Classes come from the frequency table: they need no pass over the values.
#include <memory>
#include "Common/detail/failure.h"
#include "Common/quantiles.h"
#include "datainterface/DatasetProps.h"
#include "datainterface/StatisticsAPI.h"
#include "datainterface/VORN_Progress.h"
#include "datasets/elementTypes.h"

using namespace datainterface;

namespace {

// The range is divided by the number of breaks and not by that of classes, so that the last class is twice as wide as
// the others: legends have always been cut so.
QList<double> equalIntervals(int breakCount, double minimum, double maximum)
{
    QList<double> breaks;
    for (int i = 0; i < breakCount - 1; ++i)
        breaks.append(minimum + i * (maximum - minimum) / breakCount);
    breaks.append(maximum);
    return breaks;
}

QList<double> quantileBreaks(int breakCount, const QVector<double> &sorted)
{
    QMap<int, QPair<double, double>> classes;
    quantiles(sorted, breakCount - 1, classes);
    QList<double> breaks;
    if (!classes.isEmpty())
        breaks.append(classes.first().first);
    for (const QPair<double, double> &limits : qAsConst(classes))
        breaks.append(limits.second);
    return breaks;
}

QList<double> jenks(int breakCount, const QVector<double> &sorted, bool showProgress)
{
    std::unique_ptr<VORN_Progress> progress;
    if (showProgress && breakCount > 2)
        progress = std::make_unique<VORN_Progress>("Jenks classes", "Creating Jenks classes...", "Cancel");
    return MDataset::GetJenksBreaks(breakCount, sorted);
}

} // namespace

/// Every finite key of the frequency table as often as it is counted.
QVector<double> MVectorDataset::sortedValues() const
{
    QVector<double> values;
    visitNumericElement(mDataType, [&](auto element) {
        const auto &table = mFrequencies.tableOf<ElementOf<decltype(element)>>();
        for (auto it = table.cbegin(); it != table.cend(); ++it) {
            const double key = it.key();
            if (std::isfinite(key) && it.value() > 0)
                values.insert(values.end(), it.value(), key);
        }
    });
    return values;
}

QList<double> MVectorDataset::GetIntervalBreaks(int, int breakCount, MDataset::ClassificationType classification,
                                                bool showProgress)
{
    const QVector<double> sorted = sortedValues();
    switch (classification) {
    case EqualIntervals:
        return sorted.isEmpty() ? equalIntervals(breakCount, 0.0, 0.0)
                                : equalIntervals(breakCount, sorted.first(), sorted.last());
    case Quantiles: return quantileBreaks(breakCount, sorted);
    case Jenks: return jenks(breakCount, sorted, showProgress);
    }
    fail("Invalid data type");
}

DatasetProps MVectorDataset::GetProperties(const MGeoData *geography)
{
    DatasetProps props = MDataset::GetProperties(geography);
    props.storageType = mStorageType;
    return props;
}

bool MVectorDataset::IsNormalScoreDataset(qint64 time, int realization) const
{
    constexpr double kTolerance = 1e-05;
    if (!realizationAt(realization) || !hasStatistics(realization) || mDataType != DecimalType)
        return false;
    DataSetStats stats;
    QVector<double> values;
    QSet<int> missing;
    if (!GetDataSetStats(realization, time, stats) || !(std::fabs(stats.mean) <= kTolerance)
        || !GetValues(realization, time, values, missing, false))
        return false;

    QVector<OrderedDouble> present;
    for (int id = 0; id < values.size(); ++id) {
        if (!missing.contains(id))
            present.append(values.at(id));
    }
    if (present.isEmpty())
        return false;
    const int n = present.size();
    const int m = qMin(n / 2 + 1, n); // counted from 1
    std::nth_element(present.begin(), present.begin() + (m - 1), present.end());
    double score = 0.0;
    VORN_GetNormalQuantile((m - 0.5) / n, score);
    return std::fabs(present.at(m - 1) - score) <= kTolerance;
}

