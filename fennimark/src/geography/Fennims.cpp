// SPDX-License-Identifier: MIT
#include "fennimark/Fennims.h"
#include <QDataStream>
#include <algorithm>
#include <limits>
#include "fennimark/FMObject.h"
#include "geography/fennimsState.h"
#include "store/nearest.h"

using namespace fennimark;

namespace {

constexpr std::size_t kKeptLists = 8; // the lists of so many static pieces of time are kept

} // namespace

const QVector<int> *ObservationLists::find(double time, quint32 version) const
{
    const auto list = std::find_if(mLists.begin(), mLists.end(), [&](const List &one) {
        return one.version == version && contains(one.piece, time);
    });
    return list == mLists.end() ? nullptr : &list->records;
}

void ObservationLists::insert(const timeRange &piece, quint32 version, const QVector<int> &records)
{
    mLists.push_front({piece, version, records});
    if (mLists.size() > kKeptLists)
        mLists.pop_back();
}

Fennims::Fennims() : mTree(new HilbertTree), d(std::make_unique<Private>(*mTree->mStore))
{
}

Fennims::~Fennims()
{
    delete mTree;
}

void Fennims::SetScratchDirectory(const QString &directory)
{
    ScratchSpace::setDirectory(directory);
}

QString Fennims::GetName() const
{
    return d->name;
}
void Fennims::SetName(const char *name)
{
    d->name = QString::fromLocal8Bit(name);
}
int Fennims::GetChainCount() const
{
    return mChains.size();
}
FMObjectChain *Fennims::GetChainById(int id)
{
    return mChains.value(id);
}
const FMObjectChain *Fennims::GetChainById(int id) const
{
    return mChains.value(id);
}
FMProjectionInfo Fennims::GetProjectionSettings() const
{
    return d->projection;
}
double Fennims::GetAdjacencyTolerance() const
{
    return d->store.tolerance();
}
RectInT Fennims::GetBoundingRect() const
{
    return d->store.hull();
}
timeRange Fennims::GetTimeBounds() const
{
    return d->store.hull();
}

Fennims::GeoTypes Fennims::GetGeographyType() const
{
    return static_cast<GeoTypes>(d->hasType ? typeCode(d->store.kind()) : 0);
}

void Fennims::RemoveChain(FMObjectChain *chain)
{
    if (!chain || mChains.value(chain->id) != chain)
        return;
    for (const auto &observation : chain->GetObservations())
        d->store.remove(quint32(observation.second) - 1);
    mChains.remove(chain->id);
    ObservationSource::place(*chain, &d->store, 0, 0);
    d->observationLists.clear();
    d->contiguity.clear();
}

FMObjectChain *Fennims::AddChain(const QVector<QPair<timeRange, int>> &observations, int id,
                                 GeoTypes type)
{
    const int last = mChains.isEmpty() ? -1 : mChains.lastKey();
    if (id == -1 && last < std::numeric_limits<int>::max())
        id = last + 1;
    if (id < 0 || mChains.contains(id) || type != GetGeographyType())
        return nullptr;
    std::vector<quint32> records;
    const timeRange *before = nullptr;
    for (const auto &observation : observations) {
        const auto record = quint32(observation.second) - 1; // above the count for ids below 1
        if (record >= d->store.recordCount() || d->store.lives(record)
            || std::find(records.begin(), records.end(), record) != records.end())
            return nullptr;
        const timeRange &range = d->store.range(record);
        if (!sameRange(range, normalized(observation.first))
            || (before && (overlaps(*before, range) || !startsBefore(*before, range))))
            return nullptr;
        before = &range;
        records.push_back(record);
    }
    FMObjectChain &chain = d->chains.emplace_back();
    chain.id = id;
    ObservationSource::place(chain, &d->store, d->store.revive(records, id),
                             quint32(records.size()));
    mChains.insert(id, &chain);
    return &chain;
}

QVector<int> Fennims::GetObservationsAtTime(qint64 time)
{
    const auto instant = double(time);
    if (const QVector<int> *known = d->observationLists.find(instant, d->store.version()))
        return *known;
    QVector<int> records;
    timeRange piece;
    if (!d->store.pieces().pieceAround(instant, piece))
        return records;
    for (const FMObjectChain *chain : qAsConst(mChains)) {
        const int record = chain->GetObservation(time).second;
        if (record > 0)
            records.append(record);
    }
    records.squeeze();
    d->observationLists.insert(piece, d->store.version(), records);
    return records;
}

bool Fennims::GetCommonStaticTimeStamp(qint64 time, timeRange &range)
{
    const TimePieces &pieces = d->store.pieces();
    return pieces.isCovered(double(time)) && pieces.pieceAround(double(time), range);
}

QList<qint64> Fennims::GetAllObjectTimes()
{
    const std::vector<qint64> times = d->store.pieces().times();
    QList<qint64> result;
    result.reserve(int(times.size()));
    for (const qint64 time : times)
        result.append(time);
    return result;
}

namespace {

/// Collects the ids of the records in `window` for which byBox(box) or byObject(live object) is
/// true. byBox is the fast test: when it is true, no object is made.
template <class ByBox, class ByObject>
void query(const RecordStore &store, const Rect2D &window, qint64 time, QVector<int> &records,
           ByBox byBox, ByObject byObject)
{
    records.clear();
    std::vector<quint64> buffer;
    std::unique_ptr<FMObject> object;
    store.visit(window, AtTime{double(time)}, [&](quint32 record) {
        bool hits = byBox(store.box(record));
        if (!hits)
            hits = store.present(record, object, buffer) && byObject(*object);
        if (hits)
            records.append(int(record) + 1);
    });
}

} // namespace

void Fennims::OverlapsMBRs(const Rect2D &rect, qint64 time, QVector<int> &records) const
{
    records.clear();
    if (isRect(rect))
        d->store.collect(rect, AtTime{double(time)}, records);
}

void Fennims::RectQuery(const Rect2D &rect, qint64 time, QVector<int> &records) const
{
    records.clear();
    if (!isRect(rect))
        return;
    query(
        d->store, rect, time, records, [&rect](const Rect2D &box) { return covers(rect, box); },
        [&rect](const FMObject &object) { return object.OverlapsRect(rect); });
}

void Fennims::CircleQuery(double x, double y, double radius, qint64 time,
                          QVector<int> &records) const
{
    records.clear();
    if (!(radius >= 0) || !std::isfinite(x) || !std::isfinite(y))
        return;
    // Sums and squares are rounded, so the window is enlarged a little and the test of the box is a
    // little stricter than the radius.
    const double margin =
        4 * std::numeric_limits<double>::epsilon() * (std::fabs(x) + std::fabs(y) + radius);
    const double sqrInner = radius * radius * kBoundSlack;
    const bool points = d->store.kind() == ObjectKind::Point;
    query(
        d->store, grown(Rect2D{x, x, y, y}, radius + margin), time, records,
        [&](const Rect2D &box) { return !points && sqrFarthest(box, x, y) < sqrInner; },
        [&](const FMObject &object) { return object.OverlapsCircle(x, y, radius); });
}

void Fennims::ObjectQuery(const FMObject &object, qint64 time, QVector<int> &records) const
{
    query(
        d->store, object.GetBounds(), time, records, [](const Rect2D &) { return false; },
        [&object](const FMObject &other) { return object.Overlaps(other); });
}
