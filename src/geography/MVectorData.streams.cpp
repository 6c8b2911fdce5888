// SPDX-License-Identifier: MIT
// The stream form of a vector geography: the base part, the geometry in the form of the geometry
// library, both maps of object numbers, the data source.
#include "datainterface/MVectorData.h"
#include <algorithm>
#include "Common/detail/streams.h"
#include "datainterface/MVectorDataSource.h"
#include "fennimark/FMProjectionInfo.h"
#include "fennimark/Fennims.h"
#include "frame/loadContext.h"
#include "frame/progressSection.h"
#include "geography/projectionTags.h"

using namespace datainterface;

namespace {

// The geometry takes the first half of the geography's section of the progress bar, and the
// datasets the second half.
constexpr int kGeometryShare = 50;

using NumberPairs = QVector<QPair<qint32, qint32>>;

bool readPairs(QDataStream &in, NumberPairs &pairs)
{
    const int count = readCount(in, 2 * sizeof(qint32));
    pairs.reserve(count);
    for (int i = 0; i < count && in.status() == QDataStream::Ok; ++i) {
        qint32 key = 0;
        qint32 value = 0;
        in >> key >> value;
        pairs.append({key, value});
    }
    return in.status() == QDataStream::Ok;
}

} // namespace

bool MVectorData::SaveToStream(QDataStream &out)
{
    if (!MGeoData::SaveToStream(out))
        return false;
    const QString saving = QStringLiteral("Saving ") + mName;
    setProgressText(saving + QStringLiteral("..."));
    ProgressSection section(kGeometryShare);
    if (!mFennims->Save(out, progressCallback()))
        return false;
    QVector<int> ids = mFennimIdMap;
    std::sort(ids.begin(), ids.end());
    out << qint32(ids.size());
    for (const int id : std::as_const(ids))
        out << qint32(id) << qint32(GetObjectId(id));
    out << mFennimIdMap;
    section.next(100);
    setProgressText(saving + QStringLiteral(" datasets..."));
    return mDataSource->SaveToStream(out);
}

bool MVectorData::RestoreFromStream(QDataStream &in)
{
    LoadContext context = loadContext();
    return MVectorData::Restore(in, context);
}

bool MVectorData::Restore(QDataStream &in, LoadContext &context)
{
    const bool startsWithBase = context.since(fileVersions::kVectorStartsWithBase);
    if (startsWithBase && !MGeoData::Restore(in, context))
        return false;
    ProgressSection section(kGeometryShare);
    mFennims = std::make_unique<Fennims>();
    if (!mFennims->Open(in, progressCallback()))
        return false;
    if (!context.since(fileVersions::kGeographyHasName))
        mName = mFennims->GetName();
    if (!startsWithBase && !restoreIds(in, context))
        return false;
    if (!restoreObjectNumbers(in, context))
        return false;
    setProjectionTags(mMetaData, mFennims->GetProjectionSettings(), AngularUnit::Code);
    section.next(100);
    return restoreDataSource(in, context);
}

// Datasets are indexed by these numbers, so both maps must agree and name each chain of the
// geometry exactly once.
bool MVectorData::restoreObjectNumbers(QDataStream &in, const LoadContext &context)
{
    NumberPairs pairs;
    const bool setsAreHere = !context.since(fileVersions::kVectorStartsWithBase);
    if (!readPairs(in, pairs) || (setsAreHere && !readWeightSets(in, context))
        || !readList(in, mFennimIdMap, sizeof(qint32)))
        return false;
    purgeWeightSets(context);
    indexFennimIds();
    const QMap<int, FMObjectChain *> &chains = mFennims->mChains;
    if (mFennimIdMap.size() != chains.size() || pairs.size() != chains.size())
        return false;
    const bool areNamed = std::all_of(chains.keyBegin(), chains.keyEnd(),
                                      [this](int id) { return GetObjectId(id) >= 0; });
    return areNamed
           && std::all_of(pairs.cbegin(), pairs.cend(), [this](const QPair<qint32, qint32> &pair) {
                  return GetObjectId(pair.first) == pair.second && pair.second >= 0;
              });
}

bool MVectorData::restoreDataSource(QDataStream &in, LoadContext &context)
{
    delete mDataSource;
    mDataSource = mVectorDataSource = new MVectorDataSource(mFilePath);
    context.objectCount = mFennimIdMap.size();
    return mDataSource->Restore(in, context)
           && mVectorDataSource->GetObjectCount() == static_cast<unsigned int>(mFennimIdMap.size())
           && weightSetsFit();
}
