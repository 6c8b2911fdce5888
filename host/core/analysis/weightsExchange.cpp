// SPDX-License-Identifier: MIT
#include "core/analysis/weightsExchange.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/progress.h"
#include "core/project/text.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"

namespace meridor {
namespace {

/// The dataset whose values identify the objects. Positions are not accepted as ids: after the map
/// was sorted in another order they would silently identify other objects.
int idDataset(int geography, const QString &key)
{
    const int dataset = key.isEmpty() ? keyDataset(geography) : findDataset(geography, key);
    if (dataset < 0)
        fail(QStringLiteral(
                 "the objects of %1 have no keys, and no dataset is named that tells them "
                 "apart")
                 .arg(geographyName(geography)),
             "key");
    return dataset;
}

bool isOfOnes(const WeightsFile &weights)
{
    for (const WeightsFile::Ego &ego : weights.egos)
        for (const WeightsFile::Link &link : ego.links)
            if (link.weight != 1)
                return false;
    return true;
}

qint64 linksOf(const WeightsFile &weights)
{
    qint64 links = 0;
    for (const WeightsFile::Ego &ego : weights.egos)
        links += ego.links.size();
    return links;
}

/// The interval of a text; for an empty text the hull of all object times.
Interval spanOf(int geography, const QString &text)
{
    if (text.isEmpty())
        return VORN_GetGeographyProperties(geography).timeBounds;
    const TimeAxis axis = axisOf(geography);
    const auto span = axis.range(text);
    return span ? *span : requireSpan(axis, text);
}

} // namespace

WrittenWeights exportWeights(int set, const QString &path, const QString &key, const QString &at,
                             const QString &formatName)
{
    const WeightsFormat format = weightsFormatOf(path, formatName);
    const int geography = set >> 16;
    const int ids = idDataset(geography, key);
    WrittenWeights written;
    written.time = chooseTimeOf(geography, at);
    WeightsFile weights;
    {
        const Progress progress("Export", "Reading the weights...");
        weights = weightsAt(set, written.time, uniqueTexts(ids));
    }
    weights.key = datasetName(ids);
    written.objects = weights.egos.size();
    written.links = linksOf(weights);
    written.losesWeights = format == WeightsFormat::Gal && !isOfOnes(weights);
    writeWeights(path, weights, formatName);
    return written;
}

WeightsMatch importWeights(int geography, const QString &name, const WeightsFile &file,
                           const QString &path, const WeightsImport &options)
{
    const WeightsMatch match =
        adoptWeights(geography, name, file, uniqueTexts(idDataset(geography, options.key)),
                     spanOf(geography, options.at), options.standardize);
    if (options.strict && (!match.unknown.isEmpty() || !match.unnamed.isEmpty())) {
        geographyOf(geography)->RemoveSpatialWeightSet(match.set);
        fail(QStringLiteral("%1: ids do not match: %2")
                 .arg(path, someOf(match.unknown + match.unnamed)),
             "strict");
    }
    weightSetOf(match.set).AddInformation(QStringLiteral("Imported from %1").arg(path));
    return match;
}

} // namespace meridor
