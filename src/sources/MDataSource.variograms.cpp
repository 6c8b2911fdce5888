// SPDX-License-Identifier: MIT
#include "datainterface/MDataSource.h"
#include "datainterface/VariogramModel.h"
#include "sources/askDataset.h"

using namespace datainterface;

namespace {

bool refersTo(const VariogramModel &model, const DataId &id)
{
    return model.dataset == id || model.locations == id;
}

// The ids of a dataset's models that name `id` as their dataset or their locations.
QList<int> modelsFrom(const MDataset &dataset, const DataId &id)
{
    QList<int> found;
    for (int modelId : dataset.GetVariogramModelIds()) {
        VariogramModel model;
        if (dataset.GetVariogramModel(modelId, model) && refersTo(model, id))
            found.append(modelId);
    }
    return found;
}

} // namespace

bool MDataSource::GetVariogramModel(const DataId &id, int modelId, VariogramModel &model) const
{
    return ask(*this, id, false,
               [&](const MDataset &dataset) { return dataset.GetVariogramModel(modelId, model); });
}

bool MDataSource::AddVariogramModel(const DataId &id, VariogramModel &model)
{
    return ask(*this, id, false,
               [&model](MDataset &dataset) { return dataset.AddVariogramModel(model, true); });
}

bool MDataSource::RemoveVariogramModel(const DataId &id, int modelId)
{
    return ask(*this, id, false,
               [modelId](MDataset &dataset) { return dataset.RemoveVariogramModel(modelId); });
}

bool MDataSource::ReplaceVariogramModel(const DataId &id, VariogramModel &model)
{
    return ask(*this, id, false,
               [&](MDataset &dataset) { return dataset.ReplaceVariogramModel(this, model); });
}

bool MDataSource::RemoveAllVariogramModels(const DataId &id)
{
    return ask(*this, id, false,
               [](MDataset &dataset) { return dataset.RemoveAllVariogramModels(); });
}

void MDataSource::RemoveAllVariogramModels()
{
    for (MDataset *dataset : std::as_const(mDatasets))
        dataset->RemoveAllVariogramModels();
}

bool MDataSource::DuplicateVariogramModel(const DataId &id, int modelId)
{
    return ask(*this, id, false,
               [modelId](MDataset &dataset) { return dataset.DuplicateVariogramModel(modelId); });
}

bool MDataSource::GetVariogramModelNames(const DataId &id, QList<QString> &names) const
{
    return tell(*this, id,
                [&names](const MDataset &dataset) { names = dataset.GetVariogramModelNames(); });
}

bool MDataSource::GetVariogramModelIds(const DataId &id, QList<int> &ids) const
{
    return tell(*this, id,
                [&ids](const MDataset &dataset) { ids = dataset.GetVariogramModelIds(); });
}

bool MDataSource::HasAssociatedVariogramModels(const DataId &id) const
{
    return std::any_of(mDatasets.cbegin(), mDatasets.cend(), [&id](const MDataset *dataset) {
        return !modelsFrom(*dataset, id).isEmpty();
    });
}

void MDataSource::RemoveAssociatedVariogramModels(const DataId &id)
{
    for (MDataset *dataset : std::as_const(mDatasets))
        for (int modelId : modelsFrom(*dataset, id))
            dataset->RemoveVariogramModel(modelId);
}
