// SPDX-License-Identifier: MIT
// The stream form of a raster geography: the base part, the data source, the time of the geography
// itself (24 bytes).
#include "datainterface/MRasterData.h"
#include "Common/detail/streams.h"
#include "datainterface/MRasterDataSource.h"
#include "frame/loadContext.h"
#include "frame/progressSection.h"
#include "time/boxes.h"

using namespace datainterface;

namespace {

// The id of the first dataset: the geography's id in the upper 16 bits.
int datasetIdSeed(int geographyId)
{
    return static_cast<int>(static_cast<quint32>(geographyId) << 16);
}

QString readText(QDataStream &in)
{
    QString text;
    in >> text;
    return text;
}

} // namespace

MRasterData::MRasterData(const QString &name, const TimeStamp &stamp, TimeFormat format,
                         const QString &filePath)
    : MGeoData(name, format, filePath), mTimeStamp(stamp)
{
}

bool MRasterData::Initialize(int rows, int columns, const QRectF &bounds)
{
    if (mDataSource || !MRasterDataSource::IsGrid(columns, rows, bounds))
        return false;
    mDataSource = mRasterDataSource =
        new MRasterDataSource(mFilePath, static_cast<unsigned int>(columns),
                              static_cast<unsigned int>(rows), bounds, datasetIdSeed(mId));
    return true;
}

bool MRasterData::SaveToStream(QDataStream &out)
{
    if (!MGeoData::SaveToStream(out))
        return false;
    setProgressText(QStringLiteral("Saving ") + mName + QStringLiteral(" datasets..."));
    if (!mDataSource->SaveToStream(out))
        return false;
    out << mTimeStamp;
    return out.status() == QDataStream::Ok;
}

bool MRasterData::RestoreFromStream(QDataStream &in)
{
    LoadContext context = loadContext();
    return MRasterData::Restore(in, context);
}

bool MRasterData::Restore(QDataStream &in, LoadContext &context)
{
    if (!MGeoData::Restore(in, context))
        return false;
    delete mDataSource;
    mDataSource = mRasterDataSource = new MRasterDataSource(mFilePath);
    if (!mDataSource->Restore(in, context) || !weightSetsFit())
        return false;
    const bool hasTexts = !context.since(fileVersions::kRasterTextsAreTags);
    if (!context.since(fileVersions::kRasterHasOwnTime))
        mTimeStamp = mRasterDataSource->GetTimeBounds();
    else
        in >> mTimeStamp;
    if (hasTexts)
        mMetaData.setTag(QStringLiteral("History"), readText(in));
    if (!context.since(fileVersions::kRasterHasOneStamp)) {
        TimeStamp unused;
        in >> unused;
    }
    if (hasTexts && context.since(fileVersions::kRasterHasProjection))
        mMetaData.setTag(QStringLiteral("Projection"), readText(in));
    if (hasTexts && context.since(fileVersions::kRasterHasOwnTime))
        mMetaData.setTag(QStringLiteral("Distance unit"), readText(in));
    return in.status() == QDataStream::Ok;
}

bool MRasterData::IsValid() const
{
    return mDataSource && mDataSource->GetSourceKind() == MDataSource::RasterSource;
}

GeoProps MRasterData::GetProperties()
{
    GeoProps props = BaseProperties();
    unsigned int columns = 0;
    unsigned int rows = 0;
    mRasterDataSource->GetRasterDims(columns, rows);
    props.type = GeoProps::Raster;
    props.rows = static_cast<int>(rows);
    props.columns = static_cast<int>(columns);
    props.pixelWidth = mRasterDataSource->GetPixelWidth();
    props.pixelHeight = mRasterDataSource->GetPixelHeight();
    return props;
}

unsigned int MRasterData::GetObjectCount() const
{
    return mDataSource->GetObjectCount();
}

TimeStamp MRasterData::GetTimeBounds()
{
    return mTimeStamp + mDataSource->GetTimeBounds();
}

RectInT MRasterData::GetBoundingRect()
{
    return boxOf(mRasterDataSource->GetBounds(), mTimeStamp + mDataSource->GetTimeBounds());
}

bool MRasterData::HasObjectsWithMissingData(int dataset) const
{
    return mRasterDataSource->HasMissingValues(dataset);
}

void MRasterData::SelectObjectsByValue(int dataset, int realization, qint64 time,
                                       const QSet<MDatum> &values, int attribute)
{
    selectByValue(dataset, realization, time, values, attribute);
}

void MRasterData::SelectObjectsByRange(int dataset, int realization, qint64 time, double low,
                                       double high, int attribute)
{
    selectByRange(dataset, realization, time, low, high, attribute);
}

bool MRasterData::GetPixelBounds(unsigned int column, unsigned int row, QRectF &rect) const
{
    return mRasterDataSource->GetPixelBounds(column, row, rect);
}

QString MRasterData::GetProjectionName() const
{
    return mMetaData[QStringLiteral("Projection")].toString();
}
