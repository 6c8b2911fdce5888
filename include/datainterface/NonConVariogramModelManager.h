// SPDX-License-Identifier: MIT
/// The project's variogram models that belong to no dataset.
#pragma once
#include <QList>
#include <QMap>
#include <QObject>
#include "datainterface/VariogramModel.h"
#include "datainterface/export.h"

/// Holds the nonconditional models by id. Ids only ascend, also across saves and loads, so none is
/// used twice in a project.
class DATAINTERFACE_EXPORT NonConVariogramModelManager : public QObject {
    Q_OBJECT
public:
    explicit NonConVariogramModelManager(QObject *parent = nullptr);
    ~NonConVariogramModelManager() override;

    /// Stores a copy under a new id. @return that id.
    int AddNonConVariogramModel(const VariogramModel &model);
    /// The operations on one id return false when it is unknown.
    bool GetNonConVariogramModel(int id, VariogramModel &model) const;
    /// Deletes the model.
    bool RemoveNonConVariogramModel(int id);
    /// Replaces the model that has the id of `model`.
    bool ReplaceNonConVariogramModel(const VariogramModel &model);
    /// Adds a copy. "copy" is appended to its name and, if that name is taken, a number from 2 on.
    bool DuplicateNonConVariogramModel(int id);
    QList<int> GetNonConVariogramModelIds() const;
    /// In the order of the ids.
    QList<QString> GetNonConVariogramModelNames() const;
    QMap<int, VariogramModelProps> GetNonConVariogramModelProps() const;
    /// Removes all models without a signal.
    void RemoveAllNonConVariogramModels();
    /// Connects the listener's slots NonConVariogramModelAddedSlot, ...RemovedSlot and
    /// ...ChangedSlot, each (qint32); slots that the listener lacks are ignored. @return false for
    /// a null listener.
    bool AddNonConVariogramModelListener(QObject *listener);

    void SaveNonconditionalVariogramModelsToStream(QDataStream &out) const;
    /// Replaces the content. After a corrupt stream the manager is empty and the status of the
    /// stream is bad.
    void RestoreNonconditionalVariogramModelsFromStream(QDataStream &in);

Q_SIGNALS:
    void NonConVariogramModelAddedSignal(qint32 id);
    void NonConVariogramModelRemovedSignal(qint32 id);
    void NonConVariogramModelChangedSignal(qint32 id);

private:
    QMap<int, VariogramModel> mModels;
    qint32 mNextId = 0;
};
