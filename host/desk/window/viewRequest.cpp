// SPDX-License-Identifier: MIT
#include "desk/window/viewRequest.h"
#include <QCoreApplication>
#include <QJsonArray>
#include <QStringList>
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "desk/methods/fields.h"
#include "desk/project/things.h"
#include "desk/project/workspace.h"
#include "desk/views/graphWindow.h"
#include "desk/views/mapWindow.h"
#include "desk/views/tableWindow.h"

namespace meridor {
namespace {

const char *const kNames[] = {"map", "table", "histogram", "boxes", "scatter", "time", "moran"};

QString tr(const char *text)
{
    return QCoreApplication::translate("ViewRequest", text);
}

ViewWindow *open(Workspace &workspace, const ViewRequest &request)
{
    switch (request.kind) {
    case ViewKind::Map:
        return openMap(workspace, request.datasets.value(0, -1));
    case ViewKind::Table:
        return openTable(workspace, request.geography);
    default:
        static const GraphKind kinds[] = {GraphKind::Histogram, GraphKind::BoxPlot,
                                          GraphKind::Scatter, GraphKind::TimePlot,
                                          GraphKind::Moran};
        return openGraph(
            workspace,
            kinds[static_cast<int>(request.kind) - static_cast<int>(ViewKind::Histogram)],
            request.datasets, request.weights);
    }
}

} // namespace

QString viewKindName(ViewKind kind)
{
    return QLatin1String(kNames[static_cast<int>(kind)]);
}

QJsonObject toJson(const ViewRequest &request)
{
    QJsonArray datasets;
    for (const int id : request.datasets)
        datasets.append(datasetWord(id));
    QJsonObject json{{QStringLiteral("kind"), viewKindName(request.kind)},
                     {QStringLiteral("datasets"), datasets}};
    if (request.kind == ViewKind::Table)
        json.insert(QStringLiteral("geography"), geographyName(request.geography));
    if (request.weights >= 0)
        json.insert(QStringLiteral("weights"),
                    QString(geographyName(request.weights >> 16) + QLatin1Char('/')
                            + nameOf({Thing::WeightSet, request.weights, -1})));
    return json;
}

ViewRequest viewRequestOf(const QJsonObject &json)
{
    ViewRequest request;
    const QString kind = json.value(QStringLiteral("kind")).toString();
    int found = -1;
    for (int i = 0; i < static_cast<int>(std::size(kNames)); ++i)
        if (kind == QLatin1String(kNames[i]))
            found = i;
    if (found < 0)
        fail(tr("there is no view \"%1\"").arg(kind));
    request.kind = static_cast<ViewKind>(found);
    for (const QJsonValue &name : json.value(QStringLiteral("datasets")).toArray())
        request.datasets.append(findDataset(name.toString()));
    if (request.kind == ViewKind::Table)
        request.geography = findGeography(json.value(QStringLiteral("geography")).toString());
    if (const QString set = json.value(QStringLiteral("weights")).toString(); !set.isEmpty())
        request.weights = findWeightSet(set);
    return request;
}

ViewWindow *makeView(Workspace &workspace, const ViewRequest &request)
{
    const int wanted = request.kind == ViewKind::Table     ? 0
                       : request.kind == ViewKind::Scatter ? 2
                                                           : 1;
    if (request.datasets.size() < wanted) {
        workspace.tell(wanted == 2 ? tr("A scatter plot needs two datasets of one geography.")
                                   : tr("Choose a dataset first."),
                       true);
        return nullptr;
    }
    if (request.kind == ViewKind::Moran && request.weights < 0) {
        workspace.tell(tr("A Moran scatter plot needs a weight set of the geography."), true);
        return nullptr;
    }
    return open(workspace, request);
}

} // namespace meridor
