// SPDX-License-Identifier: MIT
/// Variogram models of datasets and of the project, by identifiers.
#pragma once
#include <QList>
#include <QString>
#include "datainterface/TimeStamp.h"
#include "datainterface/VariogramModel.h"
#include "datainterface/export.h"

/// Has the host fit a model to a dataset and adds the model to it. A progress bar is shown unless
/// one is open already. The arguments after `interval` are passed to
/// ControllerBase::GenerateVariogramModel without being interpreted.
/// @return the summary of the new model; an empty one with the id -1 when the fit was cancelled or
///         gave no structures. An unknown dataset raises "Invalid dataset id".
DATAINTERFACE_EXPORT VariogramModelProps VORN_GenerateVariogramModel(
    const QString &name, int dataId, const Interval &interval, int estimator, int locationsId,
    int lagCount, bool flagA, double parameter, bool flagB, bool flagC);
/// Empty for an unknown dataset.
DATAINTERFACE_EXPORT QList<int> VORN_GetVariogramModelIds(int dataId);
/// An empty summary with the id -1 for an unknown dataset or model.
DATAINTERFACE_EXPORT VariogramModelProps VORN_GetVariogramModelProperties(int dataId, int modelId);
/// The same for a nonconditional model of the project.
DATAINTERFACE_EXPORT VariogramModelProps VORN_GetNonConVariogramModelProperties(int modelId);
/// Returns `base`, or "base n" with the smallest n from 2 on, so that no model of the dataset has
/// that name. Returns `base` for an unknown dataset.
DATAINTERFACE_EXPORT QString VORN_SuggestUniqueVariogramModelName(int dataId, const QString &base);
/// Opens the host's dialog for a model made of the name and the ten numbers, in the order of
/// VariogramModel's constructor. The two flags are passed to
/// ControllerBase::ShowVariogramModelDialog.
DATAINTERFACE_EXPORT void VORN_ShowVariogramModelDialog(const QString &name, int dataset,
                                                        int locations, int estimator,
                                                        int weightsDataset, int lagCount, int fitA,
                                                        int fitB, int fitDataset, int fitC,
                                                        int fitD, bool flagA, bool flagB);
