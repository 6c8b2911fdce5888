// SPDX-License-Identifier: MIT
#include "Common/detail/streams.h"
#include "Common/uniqueName.h"
#include "datainterface/NonConVariogramModelManager.h"
#include "frame/listeners.h"

namespace {

// The key, the length of the name, and the counts and ids that follow, at least.
constexpr int kMinModelBytes = 4 + 6 * 4;

const datainterface::Connection kConnections[] = {
    {SIGNAL(NonConVariogramModelAddedSignal(qint32)), SLOT(NonConVariogramModelAddedSlot(qint32))},
    {SIGNAL(NonConVariogramModelRemovedSignal(qint32)),
     SLOT(NonConVariogramModelRemovedSlot(qint32))},
    {SIGNAL(NonConVariogramModelChangedSignal(qint32)),
     SLOT(NonConVariogramModelChangedSlot(qint32))},
};

// SLOT() puts one code character before the signature.
bool hasSlot(const QObject &listener, const char *slot)
{
    return listener.metaObject()->indexOfSlot(slot + 1) >= 0;
}

} // namespace

NonConVariogramModelManager::NonConVariogramModelManager(QObject *parent) : QObject(parent)
{
}
NonConVariogramModelManager::~NonConVariogramModelManager() = default;

int NonConVariogramModelManager::AddNonConVariogramModel(const VariogramModel &model)
{
    const qint32 id = mNextId++;
    VariogramModel &stored = mModels[id];
    stored = model;
    stored.id = id;
    Q_EMIT NonConVariogramModelAddedSignal(id);
    return id;
}

bool NonConVariogramModelManager::GetNonConVariogramModel(int id, VariogramModel &model) const
{
    const auto found = mModels.constFind(id);
    if (found == mModels.constEnd())
        return false;
    model = found.value();
    return true;
}

bool NonConVariogramModelManager::RemoveNonConVariogramModel(int id)
{
    if (mModels.remove(id) == 0)
        return false;
    Q_EMIT NonConVariogramModelRemovedSignal(id);
    return true;
}

bool NonConVariogramModelManager::ReplaceNonConVariogramModel(const VariogramModel &model)
{
    const auto found = mModels.find(model.id);
    if (found == mModels.end())
        return false;
    found.value() = model;
    Q_EMIT NonConVariogramModelChangedSignal(found.key());
    return true;
}

bool NonConVariogramModelManager::DuplicateNonConVariogramModel(int id)
{
    VariogramModel copy;
    if (!GetNonConVariogramModel(id, copy))
        return false;
    const QList<QString> names = GetNonConVariogramModelNames();
    copy.name = datainterface::uniqueName(copy.name + QStringLiteral(" copy"),
                                          QSet<QString>(names.begin(), names.end()));
    AddNonConVariogramModel(copy);
    return true;
}

QList<int> NonConVariogramModelManager::GetNonConVariogramModelIds() const
{
    return mModels.keys();
}

QList<QString> NonConVariogramModelManager::GetNonConVariogramModelNames() const
{
    QList<QString> names;
    for (const VariogramModel &model : mModels)
        names.append(model.name);
    return names;
}

QMap<int, VariogramModelProps> NonConVariogramModelManager::GetNonConVariogramModelProps() const
{
    QMap<int, VariogramModelProps> props;
    for (auto it = mModels.constBegin(); it != mModels.constEnd(); ++it)
        props.insert(it.key(), it->GetProperties(nullptr));
    return props;
}

void NonConVariogramModelManager::RemoveAllNonConVariogramModels()
{
    mModels.clear();
}

bool NonConVariogramModelManager::AddNonConVariogramModelListener(QObject *listener)
{
    if (!listener)
        return false;
    for (const datainterface::Connection &connection : kConnections) {
        if (hasSlot(*listener, connection.slot))
            connect(this, connection.signal, listener, connection.slot);
    }
    return true;
}

void NonConVariogramModelManager::SaveNonconditionalVariogramModelsToStream(QDataStream &out) const
{
    out << qint32(mModels.size());
    for (auto it = mModels.constEnd(); it != mModels.constBegin();) {
        --it;
        out << qint32(it.key()) << it.value();
    }
    out << mNextId;
}

void NonConVariogramModelManager::RestoreNonconditionalVariogramModelsFromStream(QDataStream &in)
{
    datainterface::readMap(in, mModels, kMinModelBytes);
    in >> mNextId;
    // A counter that is not above every id would assign one of them a second time.
    if (in.status() == QDataStream::Ok && !mModels.isEmpty() && mNextId <= mModels.lastKey())
        in.setStatus(QDataStream::ReadCorruptData);
    if (in.status() != QDataStream::Ok) {
        mModels.clear();
        mNextId = 0;
    }
}
