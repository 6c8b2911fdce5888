// SPDX-License-Identifier: MIT
#include "datainterface/VariogramAPI.h"
#include <algorithm>
#include <optional>
#include "Common/detail/failure.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"
#include "datainterface/VORN_Progress.h"
#include "frame/frameState.h"

using datainterface::controller;

namespace {

// A dataset with the geography that it lies in; both null when the id is unknown.
struct Found {
    const MGeoData *geography = nullptr;
    MDataset *dataset = nullptr;
};

Found find(int dataId)
{
    const MGeoData *geography = controller()->GetGeoData().value(DataId(dataId).GeoId(), nullptr);
    MDataset *dataset = geography ? geography->GetDataSource()->GetDataset(dataId) : nullptr;
    return dataset ? Found{geography, dataset} : Found{};
}

bool hasStructures(const VariogramModel &model)
{
    return std::any_of(model.centroidModels.begin(), model.centroidModels.end(),
                       [](const VariogramModelAtT &atT) { return !atT.structures.isEmpty(); });
}

} // namespace

VariogramModelProps VORN_GenerateVariogramModel(const QString &name, int dataId, const Interval &interval,
                                                int estimator, int locationsId, int lagCount, bool flagA,
                                                double parameter, bool flagB, bool)
{
    const Found found = find(dataId);
    datainterface::require(found.dataset, "Invalid dataset id");

    VariogramModel model{DataId(dataId)};
    model.name = name;
    std::optional<VORN_Progress> progress;
    if (!VORN_Progress::UsingProgressBar())
        progress.emplace("Variogram model", "Calculating variogram model...", "Cancel");
    const bool fitted = controller()->GenerateVariogramModel(
        model, dataId, interval, static_cast<VariogramModel::EstimatorTypes>(estimator), locationsId, lagCount, flagA,
        parameter, flagB);
    progress.reset();

    if (!fitted || !hasStructures(model) || !found.dataset->AddVariogramModel(model, true))
        return {};
    controller()->MarkProjectDirty();
    return model.GetProperties(found.geography);
}

QList<int> VORN_GetVariogramModelIds(int dataId)
{
    const MDataset *dataset = find(dataId).dataset;
    return dataset ? dataset->GetVariogramModelIds() : QList<int>();
}

VariogramModelProps VORN_GetVariogramModelProperties(int dataId, int modelId)
{
    const Found found = find(dataId);
    VariogramModel model;
    if (!found.dataset || !found.dataset->GetVariogramModel(modelId, model))
        return {};
    return model.GetProperties(found.geography);
}

VariogramModelProps VORN_GetNonConVariogramModelProperties(int modelId)
{
    VariogramModel model;
    if (!controller()->GetNonConVariogramModel(modelId, model))
        return {};
    return model.GetProperties(nullptr);
}

QString VORN_SuggestUniqueVariogramModelName(int dataId, const QString &base)
{
    const MDataset *dataset = find(dataId).dataset;
    const QList<QString> taken = dataset ? dataset->GetVariogramModelNames() : QList<QString>();
    QString name = base;
    for (int n = 2; taken.contains(name); ++n)
        name = base + QLatin1Char(' ') + QString::number(n);
    return name;
}

void VORN_ShowVariogramModelDialog(const QString &name, int dataset, int locations, int estimator, int weightsDataset,
                                   int lagCount, int fitA, int fitB, int fitDataset, int fitC, int fitD, bool flagA,
                                   bool flagB)
{
    VariogramModel model(name, dataset, locations, estimator, weightsDataset, lagCount, fitA, fitB, fitDataset, fitC,
                         fitD);
    controller()->ShowVariogramModelDialog(model, flagA, model.id, flagB);
}
