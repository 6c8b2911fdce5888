// SPDX-License-Identifier: MIT
// The spatial weight sets of a geography.
#include "datainterface/MGeoData.h"
#include <algorithm>
#include <memory>
#include "Common/detail/failure.h"
#include "Common/detail/streams.h"
#include "Common/uniqueName.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MissingData.h"
#include "fennimark/Fennims.h"
#include "frame/listeners.h"
#include "frame/loadContext.h"
#include "frame/notes.h"
#include "frame/progressSection.h"

using namespace datainterface;

namespace {

constexpr qint64 kLeastSetBytes = 40;

const Connection kWeightSetConnections[] = {
    {SIGNAL(WeightSetAddedSignal(MGeoData *, qint32)),
     SLOT(WeightSetAddedSlot(MGeoData *, qint32))},
    {SIGNAL(WeightSetRemovedSignal(MGeoData *, qint32)),
     SLOT(WeightSetRemovedSlot(MGeoData *, qint32))},
    {SIGNAL(WeightSetChangedSignal(MGeoData *, qint32)),
     SLOT(WeightSetChangedSlot(MGeoData *, qint32))},
    {SIGNAL(WeightSetRenamedSignal(MGeoData *, qint32, const char *)),
     SLOT(WeightSetRenamedSlot(MGeoData *, qint32, const char *))},
};

QString freeName(const MGeoData &geography, const QString &name)
{
    const QList<QString> names = geography.GetSpatialWeightsNames();
    return uniqueName(name, QSet<QString>(names.begin(), names.end()));
}

AdjacencySet *defaultVectorSet(MVectorData &geography, bool includeEgo)
{
    constexpr int kNearest = 5;
    constexpr int kFirstOrder = 1;
    constexpr bool queen = true;
    switch (geography.GetFennims()->GetGeographyType()) {
    case Fennims::PointGeography:
        return new AdjacencySet(freeName(geography, QStringLiteral("Nearest 5 neighbors")),
                                &geography, kNearest, RowStandardizedWeight, includeEgo, 1.0, 1.0);
    case Fennims::PolygonGeography:
        return new AdjacencySet(freeName(geography, QStringLiteral("Queen neighbors")), &geography,
                                kFirstOrder, queen, RowStandardizedWeight, includeEgo);
    case Fennims::LineGeography:
        return nullptr;
    }
    fail("Invalid geography");
}

// Truncates a time; a time outside 64 bits becomes the nearest bound.
qint64 toTime(double time)
{
    timeRange instant;
    instant.start = instant.end = time;
    return TimeStamp(instant).startTime;
}

QString purgeNote(const AdjacencySet &set)
{
    if (set.IsCustom())
        return QStringLiteral("Note: the custom spatial-weight set, ") + set.GetName()
               + QStringLiteral(", was deleted because of incompatibility with Meridor 4.  You'll "
                                "need to re-import it.");
    return QStringLiteral("Note: the cluster set, ") + set.GetName()
           + QStringLiteral(", was deleted because of incompatibility with Meridor 4.  You'll need "
                            "to recreate it.");
}

} // namespace

AdjacencySet *MGeoData::CreateDefaultAdjacencySet(MGeoData *geography, bool includeEgo)
{
    if (auto *vector = dynamic_cast<MVectorData *>(geography))
        return defaultVectorSet(*vector, includeEgo);
    auto *raster = dynamic_cast<MRasterData *>(geography);
    require(raster != nullptr, "rd");
    return new AdjacencySet(freeName(*raster, QStringLiteral("Rook neighbors (E-W-N-S)")), raster,
                            RookNeighbors, RowStandardizedWeight, includeEgo, 1.0, 1.0);
}

bool MGeoData::AddSpatialWeightSet(AdjacencySet *set)
{
    mSpatialWeightSets.insert(set->GetId(), set);
    Q_EMIT WeightSetAddedSignal(this, set->GetId());
    return true;
}

bool MGeoData::RemoveSpatialWeightSet(int id)
{
    if (!mSpatialWeightSets.contains(id))
        return false;
    delete mSpatialWeightSets.take(id);
    Q_EMIT WeightSetRemovedSignal(this, id);
    return true;
}

bool MGeoData::RenameSpatialWeightSet(int id, const char *name)
{
    AdjacencySet *set = GetSpatialWeightSet(id);
    if (!set)
        return false;
    set->SetName(QString::fromUtf8(name), true);
    Q_EMIT WeightSetRenamedSignal(this, id, name);
    return true;
}

void MGeoData::SpatialWeightSetChanged(AdjacencySet *set)
{
    Q_EMIT WeightSetChangedSignal(this, set->GetId());
}

void MGeoData::RemoveAllSpatialWeightSets()
{
    for (int id : mSpatialWeightSets.keys())
        RemoveSpatialWeightSet(id);
}

void MGeoData::ClearSpatialWeightSets()
{
    for (AdjacencySet *set : std::as_const(mSpatialWeightSets))
        set->ClearSpatialWeights();
}

bool MGeoData::DuplicateSpatialWeightSet(int id)
{
    const AdjacencySet *set = GetSpatialWeightSet(id);
    if (!set)
        return false;
    auto copy = std::make_unique<AdjacencySet>(*set);
    copy->CreateId();
    copy->SetName(set->GetName() + QStringLiteral(" copy"), true);
    return AddSpatialWeightSet(copy.release());
}

AdjacencySet *MGeoData::GetSpatialWeightSet(int id)
{
    return mSpatialWeightSets.value(id);
}

const AdjacencySet *MGeoData::GetSpatialWeightSet(int id) const
{
    return mSpatialWeightSets.value(id);
}

QList<int> MGeoData::GetSpatialWeightsIds() const
{
    return mSpatialWeightSets.keys();
}

QList<QString> MGeoData::GetSpatialWeightsNames() const
{
    QList<QString> names;
    for (const AdjacencySet *set : mSpatialWeightSets)
        names.append(set->GetName());
    return names;
}

bool MGeoData::HasSpatialWeightSetAtTime(int id, double time) const
{
    const AdjacencySet *set = GetSpatialWeightSet(id);
    return set && set->HasPrecalculatedSpatialWeights(toTime(time));
}

QVector<neighborDatum> MGeoData::GetSpatialWeightsForObject(int id, double time,
                                                            unsigned int objectId)
{
    QVector<neighborDatum> list;
    if (AdjacencySet *set = GetSpatialWeightSet(id))
        set->GetSpatialWeights(objectId, toTime(time), list, VORN_MissingData(), false);
    return list;
}

bool MGeoData::AddSpatialWeightSetListener(QObject *listener)
{
    require(connectAll(this, listener, kWeightSetConnections), "Can't connect signals");
    return true;
}

void MGeoData::RemoveSpatialWeightSetListener(QObject *listener)
{
    disconnectAll(this, listener, kWeightSetConnections);
}

void MGeoData::saveWeightSets(QDataStream &out) const
{
    if (!mSpatialWeightSets.isEmpty())
        setProgressText(QStringLiteral("Saving ") + mName
                        + QStringLiteral(" spatial weight sets..."));
    const QList<int> ids = mSpatialWeightSets.keys();
    out << qint32(ids.size());
    for (auto id = ids.crbegin(); id != ids.crend(); ++id)
        out << qint32(*id) << mSpatialWeightSets.value(*id);
}

bool MGeoData::readWeightSets(QDataStream &in, const LoadContext &context)
{
    const bool haveIds = context.since(fileVersions::kSetsHaveIds);
    const int count = readCount(in, kLeastSetBytes);
    qDeleteAll(mSpatialWeightSets);
    mSpatialWeightSets.clear();
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i)
        if (!(haveIds ? readWeightSet(in, context) : readNamedWeightSet(in, context)))
            return false;
    return in.status() == QDataStream::Ok;
}

// A set that is present already, or whose own id differs from its key, could not be found by its
// id.
bool MGeoData::readWeightSet(QDataStream &in, const LoadContext &context)
{
    qint32 id = 0;
    in >> id;
    auto set = std::make_unique<AdjacencySet>();
    if (!set->Restore(in, context) || set->GetId() != id || mSpatialWeightSets.contains(id))
        return false;
    set->SetGeoData(this);
    mSpatialWeightSets.insert(id, set.release());
    return true;
}

bool MGeoData::readNamedWeightSet(QDataStream &in, const LoadContext &context)
{
    QString name;
    in >> name;
    auto set = std::make_unique<AdjacencySet>();
    if (!set->Restore(in, context))
        return false;
    set->SetName(name, true);
    set->SetGeoData(this);
    set->CreateId();
    const int id = set->GetId();
    mSpatialWeightSets.insert(id, set.release());
    return true;
}

void MGeoData::purgeWeightSets(const LoadContext &context)
{
    if (context.since(fileVersions::kListsAreComparable))
        return;
    ClearSpatialWeightSets();
    for (int id : mSpatialWeightSets.keys()) {
        const AdjacencySet &set = *mSpatialWeightSets.value(id);
        if (!set.IsCustom() && !set.IsClusterSet())
            continue;
        noteToLog(purgeNote(set));
        RemoveSpatialWeightSet(id);
    }
}

bool MGeoData::weightSetsFit() const
{
    return std::all_of(
        mSpatialWeightSets.cbegin(), mSpatialWeightSets.cend(),
        [this](const AdjacencySet *set) { return set->HoldsListsOf(GetObjectCount()); });
}
