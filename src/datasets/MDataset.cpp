// SPDX-License-Identifier: MIT
#include "datainterface/MDataset.h"
#include "Common/detail/failure.h"
#include "datainterface/DatasetProps.h"
#include "datainterface/MDataSource.h"
#include "datainterface/dataContainer.h"
#include "datasets/jenks.h"

using datainterface::require;

namespace {

const QString kName = QStringLiteral("Name");
const QString kShortDescription = QStringLiteral("Short description");
const QString kLongDescription = QStringLiteral("Long description");

} // namespace

MDataset::MDataset(MDataSource *source, const QString &)
{
    forwardSignalsTo(source);
}

MDataset::MDataset(MDataSource *source, int id, DataType type, const QString &name,
                   const QString &path, int realizationCount)
    : mId(id),
      mDataType(type),
      mRealizationCount(qMax(realizationCount, 0)),
      mStatistics(mRealizationCount)
{
    forwardSignalsTo(source);
    mMetaData.setTag(kName, name);
    SetHierarchyPath(path);
}

MDataset::~MDataset() = default;

// Views connect to the data source only.
void MDataset::forwardSignalsTo(MDataSource *source)
{
    if (!source)
        return;
    connect(this, &MDataset::VariogramModelAddedSignal, source,
            &MDataSource::VariogramModelAddedSignal);
    connect(this, &MDataset::VariogramModelRemovedSignal, source,
            &MDataSource::VariogramModelRemovedSignal);
    connect(this, &MDataset::VariogramModelChangedSignal, source,
            &MDataSource::VariogramModelChangedSignal);
}

DatasetProps MDataset::GetProperties(const MGeoData *geography)
{
    DatasetProps props;
    props.id = mId;
    props.name = GetDisplayName();
    props.dataType = mDataType;
    props.realizationKind =
        mRealizationCount < 2 ? DatasetProps::OneRealization : DatasetProps::SeveralRealizations;
    props.realizationCount = mRealizationCount;
    props.path = GetHierarchyPathAsString();
    props.metaData = mMetaData.values();
    if (!GetTimeBounds(props.timeBounds))
        props.timeBounds = TimeStamp::Invalid;
    props.isStatic = mIsStatic;
    props.isInvalid = !IsValid();
    for (auto model = mVariogramModels.cbegin(); model != mVariogramModels.cend(); ++model)
        props.variogramProps.insert(model.key(), model->GetProperties(geography));
    return props;
}

bool MDataset::CheckOutAllRealizations(int arg) const
{
    for (int realization = 0; realization < mRealizationCount; ++realization) {
        if (!CheckOutRealization(realization, arg))
            return false;
    }
    return true;
}

bool MDataset::CheckInAllRealizations(int arg) const
{
    for (int realization = 0; realization < mRealizationCount; ++realization) {
        if (!CheckInRealization(realization, arg))
            return false;
    }
    return true;
}

bool MDataset::HasDataAtTime(int realization, qint64 time) const
{
    return GetDataCount(realization, time) > 0;
}

bool MDataset::IsValid() const
{
    return false;
}

void MDataset::SetStatic(bool isStatic)
{
    mIsStatic = isStatic;
}

QString MDataset::GetDisplayName()
{
    return mMetaData[kName].toString();
}

void MDataset::SetDisplayName(const QString &name)
{
    mMetaData.setTag(kName, name);
}

QString MDataset::GetShortDescription()
{
    return mMetaData[kShortDescription].toString();
}

void MDataset::SetShortDescription(const QString &text)
{
    mMetaData.setTag(kShortDescription, text);
}

QString MDataset::GetLongDescription()
{
    return mMetaData[kLongDescription].toString();
}

void MDataset::SetLongDescription(const QString &text)
{
    mMetaData.setTag(kLongDescription, text);
}

void MDataset::AddToLongDescription(const QString &text)
{
    mMetaData.addTextToTag(kLongDescription, text);
}

bool MDataset::GetTimeBounds(TimeStamp &bounds) const
{
    bounds = mTimeBounds;
    return mTimeBounds.isValid();
}

void MDataset::invalidateStatistics(int realization)
{
    if (hasStatistics(realization))
        mStatistics[realization].whole.meanValid = false;
}

// The order of the map is "wholly before", so a key that holds the instant is equivalent to it.
bool MDataset::GetDataSetStats(int realization, qint64 time, DataSetStats &stats) const
{
    const TimeStamp instant(timeOf(time));
    if (!hasStatistics(realization))
        return false;
    if (!mStatistics.at(realization).perTime.contains(instant)
        && !CalcMinMaxMean(realization, timeOf(time)))
        return false;
    const auto &perTime = mStatistics.at(realization).perTime;
    const auto found = perTime.constFind(instant);
    require(found != perTime.constEnd(), "Can't find dataset statistics");
    stats = *found;
    return true;
}

bool MDataset::GetGlobalDataSetStats(int realization, DataSetStats &stats) const
{
    if (!hasStatistics(realization))
        return false;
    if (!mStatistics.at(realization).whole.meanValid && !CalcMinMaxMean(realization))
        return false;
    stats = mStatistics.at(realization).whole;
    return true;
}

bool MDataset::GetData(int realization, qint64 time, VORN_ConstDataContainer &values) const
{
    if (realization < 0 || realization >= mRealizationCount)
        return false;
    values = VORN_ConstDataContainer(const_cast<MDataset *>(this), time, realization);
    return true;
}

bool MDataset::GetStaticData(int realization, VORN_ConstDataContainer &values) const
{
    return mIsStatic && GetData(realization, 0, values);
}

QList<double> MDataset::GetJenksBreaks(int breakCount, const QVector<double> &sorted)
{
    return datainterface::jenksBreaks(breakCount, sorted);
}
