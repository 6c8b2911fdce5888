// SPDX-License-Identifier: MIT
#include "datainterface/MGeoData.h"
#include <utility>
#include "Common/detail/failure.h"
#include "Common/detail/streams.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/MAttributes.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MLinker.h"
#include "frame/listeners.h"
#include "frame/loadContext.h"
#include "time/boxes.h"
#include "time/calendar.h"

using namespace datainterface;

namespace {

const Connection kNameConnections[] = {
    {SIGNAL(GeographyNameChangedSignal(MGeoData *, const char *)),
     SLOT(GeographyNameChangedSlot(MGeoData *, const char *))},
};

const Connection kVariogramConnections[] = {
    {SIGNAL(VariogramModelAddedSignal(const DataId &, qint32)),
     SLOT(VariogramModelAddedSlot(const DataId &, qint32))},
    {SIGNAL(VariogramModelRemovedSignal(const DataId &, qint32)),
     SLOT(VariogramModelRemovedSlot(const DataId &, qint32))},
    {SIGNAL(VariogramModelChangedSignal(const DataId &, qint32)),
     SLOT(VariogramModelChangedSlot(const DataId &, qint32))},
};

// Files from 103000 to 106999 hold two flags: whether times have a date, and whether they have a
// time of day.
TimeFormat readOldTimeFormat(QDataStream &in)
{
    qint8 hasDate = 0;
    qint8 hasTime = 0;
    in >> hasDate >> hasTime;
    if (hasDate == 0)
        return TF_Time;
    return hasTime != 0 ? TF_DateTime : TF_Date;
}

TimeFormat readTimeFormat(QDataStream &in, const LoadContext &context)
{
    if (!context.since(fileVersions::kTimeFormatIsNumber))
        return readOldTimeFormat(in);
    qint32 format = 0;
    in >> format;
    if (format < TF_Date || format > TF_Integer)
        in.setStatus(QDataStream::ReadCorruptData);
    return static_cast<TimeFormat>(format);
}

} // namespace

int MGeoData::mNextId = 0;

MGeoData::MGeoData(const QString &name, TimeFormat format, const QString &filePath)
    : mName(name), mTimeFormat(format), mId(mNextId), mFilePath(filePath)
{
    if (mNextId < kIdLimit)
        ++mNextId;
}

// A host may call this object from a slot of destroyed(), so each list is emptied before its
// members are deleted.
MGeoData::~MGeoData()
{
    qDeleteAll(std::exchange(mSpatialWeightSets, {}));
    delete std::exchange(mDataSource, nullptr);
    qDeleteAll(std::exchange(mAttributes, {}));
    for (MLinker *view : std::as_const(mObjectManagers))
        disconnect(view, nullptr, this, nullptr);
}

bool MGeoData::SaveToStream(QDataStream &out)
{
    out << mName << qint32(mId) << qint32(mNextId) << qint8(mIsStatic) << mMetaData
        << qint32(mTimeFormat) << qint32(mParentId) << mParentObjectIds;
    saveWeightSets(out);
    return out.status() == QDataStream::Ok;
}

bool MGeoData::RestoreFromStream(QDataStream &in)
{
    LoadContext context = loadContext();
    return MGeoData::Restore(in, context);
}

bool MGeoData::Restore(QDataStream &in, LoadContext &context)
{
    if (context.since(fileVersions::kGeographyHasName))
        in >> mName;
    if (!restoreIds(in, context))
        return false;
    mIsStatic = false;
    if (context.since(fileVersions::kGeographyHasStatic)) {
        qint8 isStatic = 0;
        in >> isStatic;
        mIsStatic = isStatic != 0;
    }
    if (context.since(fileVersions::kGeographyHasTags))
        in >> mMetaData;
    if (!context.since(fileVersions::kGeographyHasDetails)) {
        purgeWeightSets(context);
        return in.status() == QDataStream::Ok;
    }
    mTimeFormat = readTimeFormat(in, context);
    in >> mParentId;
    readList(in, mParentObjectIds, sizeof(qint32));
    if (!readWeightSets(in, context))
        return false;
    purgeWeightSets(context);
    return in.status() == QDataStream::Ok;
}

bool MGeoData::restoreIds(QDataStream &in, const LoadContext &context)
{
    qint32 id = 0;
    qint32 nextId = 0;
    in >> id >> nextId;
    if (in.status() != QDataStream::Ok || id < 0 || id >= kIdLimit || nextId < 0
        || nextId > kIdLimit)
        return false;
    if (context.makeWay)
        context.makeWay(id);
    mId = id;
    mNextId = nextId;
    return true;
}

void MGeoData::AppendBlockIds(QVector<int> &ids) const
{
    const QList<DataId> datasets = mDataSource ? mDataSource->GetDatasetIds() : QList<DataId>();
    for (const DataId &id : datasets)
        mDataSource->GetDataset(id)->AppendBlockIds(ids);
    for (const AdjacencySet *set : mSpatialWeightSets)
        set->AppendBlockIds(ids);
}

void MGeoData::DropValues()
{
    const QList<DataId> datasets = mDataSource ? mDataSource->GetDatasetIds() : QList<DataId>();
    for (const DataId &id : datasets)
        mDataSource->GetDataset(id)->DropValues();
    ClearSpatialWeightSets();
}

QString MGeoData::GetName()
{
    return mName;
}

void MGeoData::SetName(const QString &name)
{
    mName = name;
    Q_EMIT GeographyNameChangedSignal(this, name.toLocal8Bit().constData());
}

void MGeoData::SetStatic(bool isStatic)
{
    mIsStatic = isStatic;
    const QList<DataId> ids = mDataSource->GetDatasetIds();
    for (const DataId &id : ids)
        if (MDataset *dataset = mDataSource->GetDataset(id))
            dataset->SetStatic(isStatic);
}

bool MGeoData::IsDatasetIdValid(int id) const
{
    return mDataSource->IsDatasetIdValid(id);
}

bool MGeoData::IsNumeric(int id) const
{
    return mDataSource->IsNumeric(id);
}

bool MGeoData::AddListener(QObject *listener)
{
    if (!mDataSource->AddListener(listener))
        return false;
    require(connectAll(this, listener, kNameConnections), "Can't connect signals");
    return true;
}

void MGeoData::RemoveListener(QObject *listener)
{
    mDataSource->RemoveListener(listener);
    disconnectAll(this, listener, kNameConnections);
}

bool MGeoData::AddVariogramModelListener(QObject *listener)
{
    require(connectAll(mDataSource, listener, kVariogramConnections), "Can't connect signals");
    return true;
}

void MGeoData::RemoveVariogramModelListener(QObject *listener)
{
    disconnectAll(mDataSource, listener, kVariogramConnections);
}

bool MGeoData::GetDistanceUnit(QString &unit) const
{
    const QString key = QStringLiteral("Distance unit");
    if (!mMetaData.tagExists(key))
        return false;
    unit = mMetaData[key].toString();
    return true;
}

GeoProps MGeoData::BaseProperties()
{
    GeoProps props;
    props.id = mId;
    props.name = mName;
    props.metaData = mMetaData.values();
    props.isStatic = mIsStatic;
    props.timeFormat = mTimeFormat;
    props.timeBounds = GetTimeBounds();
    props.bounds = rectOf(GetBoundingRect());
    props.objectCount = static_cast<int>(mDataSource->GetObjectCount());
    for (const DataId &id : mDataSource->GetDatasetIds())
        props.datasetIds.insert(id);
    for (auto set = mSpatialWeightSets.cbegin(); set != mSpatialWeightSets.cend(); ++set)
        props.weightSets.insert(set.key(), set.value()->GetProperties());
    return props;
}

QString MGeoData::TimeToString(qint64 t, const char *dateFormat, const char *timeFormat)
{
    return datainterface::TimeToString(t, mTimeFormat, dateFormat, timeFormat);
}

QString MGeoData::TimeStepToString(const TimeStep &step)
{
    return datainterface::TimeStepToString(step, mTimeFormat);
}

qint64 MGeoData::ConvertFromDate(const QDate &date)
{
    return datainterface::ConvertFromDate(date);
}

qint64 MGeoData::ConvertFromTime(const QTime &time)
{
    return datainterface::ConvertFromTime(time);
}

qint64 MGeoData::ConvertFromDateTime(const QDate &date, const QTime &time)
{
    return datainterface::ConvertFromDateTime(date, time);
}

QDate MGeoData::ConvertToDate(qint64 t)
{
    return datainterface::ConvertToDate(t);
}

QTime MGeoData::ConvertToTime(qint64 t)
{
    return datainterface::ConvertToTime(t);
}

QDateTime MGeoData::ConvertToDateTime(qint64 t)
{
    return datainterface::ConvertToDateTime(t);
}

qint64 MGeoData::IncrementTime(TimeFormat format, TimeStep step, qint64 t)
{
    return datainterface::IncrementTime(format, step, t);
}

QString MGeoData::TimeToString(qint64 t, TimeFormat format, const char *dateFormat,
                               const char *timeFormat)
{
    return datainterface::TimeToString(t, format, dateFormat, timeFormat);
}

QString MGeoData::TimeStepToString(const TimeStep &step, TimeFormat format)
{
    return datainterface::TimeStepToString(step, format);
}
