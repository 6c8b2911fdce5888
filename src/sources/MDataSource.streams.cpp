// SPDX-License-Identifier: MIT
// The stream form of a data source: its kind, the next dataset id, the number of datasets (int32
// each), then each dataset after its kind. Files before 130000 hold only vector datasets, and keep
// their names and metadata in tables of the source.
#include "datainterface/MDataSource.h"
#include <memory>
#include "Common/detail/failure.h"
#include "Common/detail/streams.h"
#include "frame/loadContext.h"
#include "frame/progressSection.h"

using namespace datainterface;

namespace {

constexpr qint64 kLeastDatasetBytes = 4;

using TextTable = QMap<int, QString>;
using TagTable = QMap<QString, MDatum>;

struct LegacyTables {
    QMap<int, TagTable> metaData;
    TextTable names;
    TextTable shortDescriptions;
    TextTable longDescriptions;
};

bool readTextTable(QDataStream &in, TextTable &table)
{
    return readMap(in, table, 2 * sizeof(qint32));
}

bool readTables(QDataStream &in, LegacyTables &tables, const LoadContext &context)
{
    readMap(in, tables.metaData, 2 * sizeof(qint32), [&in](int &id, TagTable &tags) {
        in >> id;
        readMap(in, tags, 2 * sizeof(qint32));
    });
    readTextTable(in, tables.names);
    readTextTable(in, tables.shortDescriptions);
    readTextTable(in, tables.longDescriptions);
    if (context.between(fileVersions::kSourceHasSpareTable, fileVersions::kSourceHasNoSpareTable)) {
        TextTable unused;
        readTextTable(in, unused);
    }
    return in.status() == QDataStream::Ok;
}

QVariant variantOf(const MDatum &value)
{
    switch (value.type()) {
    case MDatum::Integer:
        return static_cast<int>(value.integerValue());
    case MDatum::Decimal:
        return value.decimalValue();
    case MDatum::String:
        return value.text();
    default:
        return QVariant();
    }
}

void describe(MDataset &dataset, int id, const LegacyTables &tables)
{
    const auto name = tables.names.constFind(id);
    require(name != tables.names.constEnd(), "Can't find dataset name");
    dataset.SetDisplayName(name.value());
    const TagTable tags = tables.metaData.value(id);
    for (auto tag = tags.cbegin(); tag != tags.cend(); ++tag) {
        const QVariant value = variantOf(tag.value());
        if (value.isValid())
            dataset.SetMetaData(tag.key(), value);
    }
    if (tables.shortDescriptions.contains(id))
        dataset.SetShortDescription(tables.shortDescriptions.value(id));
    if (tables.longDescriptions.contains(id))
        dataset.SetLongDescription(tables.longDescriptions.value(id));
}

bool reportDataset(int i, int count)
{
    return reportProgress(static_cast<int>(100LL * (i + 1) / count));
}

} // namespace

bool MDataSource::SaveToStream(QDataStream &out)
{
    out << mKind << qint32(mNextDatasetId) << qint32(mDatasets.size());
    int i = 0;
    for (MDataset *dataset : std::as_const(mDatasets))
        if (!dataset->SaveToStream(out) || !reportDataset(i++, mDatasets.size()))
            return false;
    return out.status() == QDataStream::Ok;
}

bool MDataSource::RestoreFromStream(QDataStream &in)
{
    LoadContext context = loadContext();
    return MDataSource::Restore(in, context);
}

bool MDataSource::Restore(QDataStream &in, LoadContext &context)
{
    qint32 kind = BaseSource;
    in >> kind >> mNextDatasetId;
    if (in.status() != QDataStream::Ok || kind != mKind)
        return false;
    return context.since(fileVersions::kSourceTagsDatasets) ? restoreDatasets(in, context)
                                                            : restoreLegacyDatasets(in, context);
}

MDataset *MDataSource::NewEmptyDataset(int)
{
    return nullptr;
}

bool MDataSource::restoreDatasets(QDataStream &in, LoadContext &context)
{
    const int count = readCount(in, kLeastDatasetBytes);
    for (int i = 0; i < count; ++i) {
        qint32 tag = 0;
        in >> tag;
        MDataset *dataset = NewEmptyDataset(tag);
        if (!dataset || !adoptRestored(dataset, in, context) || !reportDataset(i, count))
            return false;
    }
    return in.status() == QDataStream::Ok;
}

bool MDataSource::restoreLegacyDatasets(QDataStream &in, LoadContext &context)
{
    LegacyTables tables;
    if (!readTables(in, tables, context))
        return false;
    context.tableObjectCount = read<qint32>(in);
    const int count = readCount(in, kLeastDatasetBytes);
    for (int i = 0; i < count; ++i) {
        qint32 id = 0;
        in >> id;
        MDataset *dataset = NewEmptyDataset(MDataset::VectorKind);
        if (!dataset)
            return false;
        dataset->SetId(id);
        if (!adoptRestored(dataset, in, context))
            return false;
        describe(*dataset, id, tables);
        if (!reportDataset(i, count))
            return false;
    }
    return in.status() == QDataStream::Ok;
}

// Restores a dataset and registers it under the id in the stream. A dataset that cannot be read, or
// whose id is present already, is deleted.
bool MDataSource::adoptRestored(MDataset *dataset, QDataStream &in, LoadContext &context)
{
    const auto destroy = [](MDataset *unwanted) { delete unwanted; };
    std::unique_ptr<MDataset, decltype(destroy)> owner(dataset, destroy);
    if (!dataset->Restore(in, context) || mDatasets.contains(dataset->GetId()))
        return false;
    mDatasets.insert(dataset->GetId(), owner.release());
    return true;
}
