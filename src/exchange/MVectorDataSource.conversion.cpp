// SPDX-License-Identifier: MIT
#include "datainterface/MVectorDataSource.h"
#include "Common/detail/failure.h"
#include "datainterface/VORN_Progress.h"
#include "sources/newDatasetGuard.h"
#include "time/calendar.h"

using namespace datainterface;

namespace {

// The note on a conversion from each type in the long description of its result.
struct ConversionLine {
    DataType from;
    const char *text;
};
constexpr ConversionLine kConversionLines[] = {
    {DecimalType, "Converted from decimal dataset (\"%1\") on %2\n"},
    {IntegerType, "Converted from integer dataset (\"%1\") on %2\n"},
    {StringType, "Converted from string dataset (\"%1\") on %2\n"},
};

const ConversionLine *lineFor(DataType type)
{
    for (const ConversionLine &line : kConversionLines)
        if (line.from == type)
            return &line;
    return nullptr;
}

bool isConvertible(DataType from, DataType to)
{
    return from != to && lineFor(from) && lineFor(to);
}

} // namespace

int MVectorDataSource::ConvertDataset(int id, const QString &name, DataType type, int precision)
{
    MVectorDataset *source = GetVectorDataset(id);
    require(source != nullptr, "Invalid dataset id");
    const QString now = presentMoment();
    const VORN_Progress progress("Dataset conversion", "Creating new dataset...", "Cancel");
    require(isConvertible(source->GetDataType(), type), "Invalid dataset type");
    const int newId = NewVectorDataset(name, type, source->GetStorageType(),
                                       source->GetRealizationCount(), source->GetHierarchyPath());
    NewDatasetGuard guard(*this, newId);
    MVectorDataset *converted = GetVectorDataset(newId);
    if (!converted->ConvertDataset(source, precision))
        return -1;
    converted->AddToLongDescription(QString::fromLatin1(lineFor(source->GetDataType())->text)
                                        .arg(source->GetDisplayName(), now));
    guard.keep();
    AnnounceNewDataset(newId, true);
    return newId;
}

int MVectorDataSource::ImportDatasetFromDataSource(MDataSource *source, int id,
                                                   const QVector<int> &objectMap, bool announce)
{
    MDataset *found = source->GetDataset(id);
    require(found != nullptr, "Invalid dataset id");
    auto *dataset = dynamic_cast<MVectorDataset *>(found);
    require(dataset != nullptr, "bad dataset type");
    const int newId = NewVectorDataset(dataset->GetDisplayName(), dataset->GetDataType(),
                                       dataset->GetStorageType(), dataset->GetRealizationCount(),
                                       dataset->GetHierarchyPath());
    NewDatasetGuard guard(*this, newId);
    if (!GetVectorDataset(newId)->ImportDataset(dataset, objectMap))
        return -1;
    guard.keep();
    if (announce)
        AnnounceNewDataset(newId, true);
    return newId;
}

void MVectorDataSource::ImportFromDataSource(MDataSource *source, const QVector<int> &objectMap)
{
    if (VORN_Progress::UsingProgressBar())
        VORN_Progress::SetProgressText("Creating datasets...");
    QList<DataId> imported;
    for (const DataId &id : source->GetDatasetIds()) {
        const int newId = ImportDatasetFromDataSource(source, id, objectMap, false);
        if (newId != -1)
            imported.append(newId);
    }
    AnnounceNewDatasets(imported, true);
}
