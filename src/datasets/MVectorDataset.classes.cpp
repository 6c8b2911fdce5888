// SPDX-License-Identifier: MIT
// Classes of legends and the test for normal scores. Classes are computed from the frequency table,
// without a pass over the values.
#include "datainterface/DatasetProps.h"
#include "datasets/elementTypes.h"
#include "datasets/intervalBreaks.h"
#include "datasets/normalScores.h"

using namespace datainterface;

/// Every finite key of the frequency table with its count.
ValueRuns MVectorDataset::sortedValues() const
{
    ValueRuns runs;
    visitNumericElement(mDataType, [&](auto element) {
        const auto &table = mFrequencies.tableOf<ElementOf<decltype(element)>>();
        for (auto it = table.cbegin(); it != table.cend(); ++it) {
            const double key = it.key();
            if (std::isfinite(key) && it.value() > 0)
                runs.push_back({key, it.value()});
        }
    });
    return runs;
}

QList<double> MVectorDataset::GetIntervalBreaks(int, int breakCount,
                                                MDataset::ClassificationType classification,
                                                bool showProgress)
{
    return intervalBreaks(breakCount, sortedValues(), classification, showProgress);
}

DatasetProps MVectorDataset::GetProperties(const MGeoData *geography)
{
    DatasetProps props = MDataset::GetProperties(geography);
    props.storageType = mStorageType;
    return props;
}

bool MVectorDataset::IsNormalScoreDataset(qint64 time, int realization) const
{
    if (!holdsRealization(realization) || !hasStatistics(realization) || mDataType != DecimalType)
        return false;
    DataSetStats stats;
    QVector<double> values;
    QSet<int> missing;
    if (!GetDataSetStats(realization, time, stats) || !isNormalScoreMean(stats.mean)
        || !GetValues(realization, time, values, missing, false))
        return false;

    QVector<OrderedDouble> present;
    for (int id = 0; id < values.size(); ++id) {
        if (!missing.contains(id))
            present.append(values.at(id));
    }
    return areNormalScores(stats.mean, present);
}
