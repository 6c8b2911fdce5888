// SPDX-License-Identifier: MIT
#include "core/analysis/snapshot.h"
#include <algorithm>
#include <cmath>
#include "core/grids/gridValues.h"
#include "core/project/catalog.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"
#include "datainterface/MVectorData.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/Fennims.h"

namespace meridor {
namespace {

// A null text means a missing value here, so the text of an empty value must not be null.
QString heldText(const datum &value)
{
    const QString text = textOf(value);
    return text.isNull() ? QStringLiteral("") : text;
}

QStringList gridTexts(int dataset, int realization, qint64 time, qint64 &count)
{
    QStringList texts;
    for (const double value : gridValues(dataset, time, realization)) {
        texts.append(std::isnan(value) ? QString() : exactNumber(value));
        count += !std::isnan(value);
    }
    return texts;
}

QStringList objectTexts(int dataset, int realization, qint64 time, qint64 &count)
{
    QVector<datum> values;
    QSet<int> missing;
    VORN_GetDataValues(dataset, realization, time, values, missing);
    QStringList texts;
    for (int i = 0; i < values.size(); ++i)
        texts.append(missing.contains(i) ? QString() : heldText(values[i]));
    count += values.size() - missing.size();
    return texts;
}

Snapshot::Series seriesOf(int dataset, qint64 &count)
{
    const auto textsAt = rasterOf(dataset) ? &gridTexts : &objectTexts;
    const int realizations = std::max(1, VORN_GetDatasetProperties(dataset).realizationCount);
    Snapshot::Series series;
    for (int realization = 0; realization < realizations; ++realization) {
        for (const Interval &interval : dataTimes(dataset, realization)) {
            series.intervals.append(interval);
            series.values.append(textsAt(dataset, realization, instantOf(interval), count));
        }
    }
    return series;
}

QStringList existence(int id)
{
    QStringList texts;
    const auto *geography = dynamic_cast<const MVectorData *>(geographyOf(id));
    if (!geography)
        return texts;
    for (const int chainId : geography->GetFennimIdMap()) {
        QString text;
        for (const auto &observation :
             geography->GetFennims()->GetChainById(chainId)->GetObservations())
            text +=
                QStringLiteral("%1 %2 %3;")
                    .arg(exactNumber(observation.first.start), exactNumber(observation.first.end),
                         QString::number(observation.first.flags));
        texts.append(text);
    }
    return texts;
}

bool same(const QVector<Interval> &a, const QVector<Interval> &b)
{
    return std::equal(
        a.begin(), a.end(), b.begin(), b.end(), [](const Interval &x, const Interval &y) {
            return x.startTime == y.startTime && x.endTime == y.endTime
                   && x.inclusiveStart == y.inclusiveStart && x.inclusiveEnd == y.inclusiveEnd;
        });
}

} // namespace

Snapshot takeSnapshot()
{
    Snapshot snapshot;
    for (const int geography : geographyIds()) {
        snapshot.shapes.insert(geographyName(geography), existence(geography));
        for (const int dataset : datasetIds(geography))
            snapshot.datasets.insert(geographyName(geography) + QLatin1Char('/')
                                         + datasetName(dataset),
                                     seriesOf(dataset, snapshot.count));
    }
    return snapshot;
}

QStringList differences(const Snapshot &a, const Snapshot &b)
{
    QStringList names;
    if (a.shapes != b.shapes)
        names.append(QStringLiteral("shapes"));
    const QStringList keys = a.datasets.keys() + b.datasets.keys();
    for (const QString &name : keys) {
        const Snapshot::Series before = a.datasets.value(name);
        const Snapshot::Series after = b.datasets.value(name);
        const bool both = a.datasets.contains(name) && b.datasets.contains(name);
        if ((!both || before.values != after.values || !same(before.intervals, after.intervals))
            && !names.contains(name))
            names.append(name);
    }
    return names;
}

} // namespace meridor
