// SPDX-License-Identifier: MIT
#include "datainterface/VariogramAPI.h"
#include <algorithm>
#include <optional>
#include "Common/detail/failure.h"
#include "Common/uniqueName.h"
#include "api/callFrame.h"
#include "datainterface/VORN_Progress.h"

using namespace datainterface;

namespace {

bool hasStructures(const VariogramModel &model)
{
    return std::any_of(model.centroidModels.begin(), model.centroidModels.end(),
                       [](const VariogramModelAtT &atT) { return !atT.structures.isEmpty(); });
}

MDataset *findDataset(int dataId)
{
    return onDataset(dataId, static_cast<MDataset *>(nullptr),
                     [](MDataset &dataset) { return &dataset; });
}

// The properties of a model, computed with the geography of its dataset.
VariogramModelProps propertiesOf(const VariogramModel &model)
{
    return onGeography(
        geographyIdOf(model.dataset), VariogramModelProps(),
        [&model](const MGeoData &geography) { return model.GetProperties(&geography); });
}

} // namespace

VariogramModelProps VORN_GenerateVariogramModel(const QString &name, int dataId,
                                                const Interval &interval, int estimator,
                                                int locationsId, int lagCount, bool flagA,
                                                double parameter, bool flagB, bool)
{
    MDataset *const dataset = findDataset(dataId);
    require(dataset, "Invalid dataset id");

    VariogramModel model{DataId(dataId)};
    model.name = name;
    std::optional<VORN_Progress> progress;
    if (!VORN_Progress::UsingProgressBar())
        progress.emplace("Variogram model", "Calculating variogram model...", "Cancel");
    const bool fitted = controller()->GenerateVariogramModel(
        model, dataId, interval, static_cast<VariogramModel::EstimatorTypes>(estimator),
        locationsId, lagCount, flagA, parameter, flagB);
    progress.reset();

    if (!fitted || !hasStructures(model) || !dataset->AddVariogramModel(model, true))
        return {};
    controller()->MarkProjectDirty();
    return propertiesOf(model);
}

QList<int> VORN_GetVariogramModelIds(int dataId)
{
    return onDataset(dataId, QList<int>(),
                     [](const MDataset &dataset) { return dataset.GetVariogramModelIds(); });
}

VariogramModelProps VORN_GetVariogramModelProperties(int dataId, int modelId)
{
    const MDataset *dataset = findDataset(dataId);
    VariogramModel model;
    return dataset && dataset->GetVariogramModel(modelId, model) ? propertiesOf(model)
                                                                 : VariogramModelProps();
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
    return onDataset(dataId, base, [&base](const MDataset &dataset) {
        const QList<QString> names = dataset.GetVariogramModelNames();
        return uniqueName(base, QSet<QString>(names.begin(), names.end()));
    });
}

void VORN_ShowVariogramModelDialog(const QString &name, int dataset, int locations, int estimator,
                                   int weightsDataset, int lagCount, int fitA, int fitB,
                                   int fitDataset, int fitC, int fitD, bool flagA, bool flagB)
{
    VariogramModel model(name, dataset, locations, estimator, weightsDataset, lagCount, fitA, fitB,
                         fitDataset, fitC, fitD);
    controller()->ShowVariogramModelDialog(model, flagA, model.id, flagB);
}
