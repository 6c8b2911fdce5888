// SPDX-License-Identifier: MIT
#include "datainterface/MDataset.h"
#include "Common/detail/failure.h"
#include "datainterface/MDataSource.h"

QList<int> MDataset::GetVariogramModelIds() const
{
    return mVariogramModels.keys();
}

QList<QString> MDataset::GetVariogramModelNames() const
{
    QList<QString> names;
    for (const VariogramModel &model : mVariogramModels)
        names.append(model.name);
    return names;
}

bool MDataset::GetVariogramModel(int id, VariogramModel &model) const
{
    const auto found = mVariogramModels.constFind(id);
    if (found == mVariogramModels.constEnd())
        return false;
    model = *found;
    return true;
}

bool MDataset::AddVariogramModel(VariogramModel &model, bool assignId)
{
    if (model.dataset != DataId(mId))
        return false;
    if (assignId)
        model.id = mNextVariogramId++;
    mVariogramModels.insert(model.id, model);
    Q_EMIT VariogramModelAddedSignal(mId, model.id);
    return true;
}

bool MDataset::RemoveVariogramModel(int id)
{
    if (mVariogramModels.remove(id) == 0)
        return false;
    Q_EMIT VariogramModelRemovedSignal(mId, id);
    return true;
}

bool MDataset::ReplaceVariogramModel(MDataSource *source, VariogramModel &model)
{
    const auto stored = mVariogramModels.find(model.id);
    if (stored == mVariogramModels.end())
        return false;
    if (model.dataset == DataId(mId)) {
        *stored = model;
        Q_EMIT VariogramModelChangedSignal(mId, model.id);
        return true;
    }
    MDataset *dataset = source ? source->GetDataset(model.dataset) : nullptr;
    datainterface::require(dataset, "dataset");
    RemoveVariogramModel(model.id);
    return dataset->AddVariogramModel(model, true);
}

bool MDataset::RemoveAllVariogramModels()
{
    const QList<int> ids = mVariogramModels.keys();
    mVariogramModels.clear();
    for (const int id : ids)
        Q_EMIT VariogramModelRemovedSignal(mId, id);
    return true;
}

bool MDataset::DuplicateVariogramModel(int id)
{
    VariogramModel copy;
    if (!GetVariogramModel(id, copy) || copy.dataset != DataId(mId))
        return false;
    copy.name += QStringLiteral(" copy");
    return AddVariogramModel(copy, true);
}
