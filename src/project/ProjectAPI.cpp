// SPDX-License-Identifier: MIT
// The project file is one stream without table of contents or checksum, read in the order in which
// it was written (docs/file-format.md):
//
//     version text            decides on the form of everything that follows
//     reserved fields
//     geographies             with weight sets, data sources and datasets
//     blocks                  of the block store
//     variogram models        that belong to no dataset
//
// Containers are restored as block ids. The blocks follow the geographies in the file, so no
// container may be paged in while geographies are read.
#include "datainterface/ProjectAPI.h"
#include <QColor>
#include <QFile>
#include <QStringList>
#include <algorithm>
#include <memory>
#include "Common/DataManager.h"
#include "Common/detail/streams.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "frame/frameState.h"
#include "frame/loadContext.h"
#include "frame/versionText.h"
#include "project/projectBlocks.h"
#include "project/scratchDirectory.h"

using namespace datainterface;

namespace datainterface {

/// Restores a geography as a part of a project.
class ProjectReader {
public:
    static bool restore(MGeoData &geography, QDataStream &in, LoadContext &context)
    {
        return geography.Restore(in, context);
    }
};

} // namespace datainterface

namespace {

constexpr int kLongestVersionText = 8; // "4.00.021"

// Fields that every file has and no reader uses.
void writeReserved(QDataStream &out)
{
    out << QColor(255, 146, 0, 255) << qint8(1) << qint8(1) << qint8(0) << qint8(0) << qint32(0)
        << qint32(0) << qint32(0);
}

void skipReserved(QDataStream &in, const LoadContext &context)
{
    QColor color;
    qint8 flag = 0;
    qint32 number = 0;
    in >> color >> flag >> flag >> flag >> flag >> number >> number >> number;
    if (!context.since(fileVersions::kNamesGeographyKinds))
        in >> number;
}

bool writeGeographies(QDataStream &out, const QMap<int, MGeoData *> &geographies)
{
    out << qint32(geographies.size());
    for (MGeoData *geography : geographies)
        out << geography->GetName();
    for (MGeoData *geography : geographies) {
        out << qint8(dynamic_cast<MVectorData *>(geography) ? MDataSource::VectorSource
                                                            : MDataSource::RasterSource);
        if (!geography->SaveToStream(out))
            return false;
    }
    return true;
}

// Whether each data source has the objects of its geography. A source that was resized alone has
// others, and a file with it could not be loaded.
bool isConsistent(const QMap<int, MGeoData *> &geographies)
{
    return std::all_of(geographies.cbegin(), geographies.cend(), [](const MGeoData *geography) {
        const auto *vector = dynamic_cast<const MVectorData *>(geography);
        return !vector
               || vector->GetFennimIdMap().size()
                      == static_cast<int>(vector->GetDataSource()->GetObjectCount());
    });
}

bool writeProject(QDataStream &out)
{
    out << QString::fromLatin1(kVersionText) << applicationName;
    writeReserved(out);
    const QMap<int, MGeoData *> geographies = controller()->GetGeoData();
    if (!writeGeographies(out, geographies) || !SaveProjectData(out, true))
        return false;
    controller()->SaveNonconditionalVariogramModelsToStream(out);
    return out.status() == QDataStream::Ok;
}

// The Qt stream version of a file.
int streamVersionOf(const LoadContext &file)
{
    using namespace fileVersions;
    struct Row {
        int since;
        int streamVersion;
    };
    static constexpr Row kLatestFirst[] = {
        {kStreamsAsQt54, kStreamVersion},      {kStreamsAsQt51, QDataStream::Qt_5_1},
        {kStreamsAsQt46, QDataStream::Qt_4_6}, {kStreamsAsQt45, QDataStream::Qt_4_5},
        {kStreamsAsQt44, QDataStream::Qt_4_4}, {kStreamsAsQt42, QDataStream::Qt_4_2},
        {kStreamsAsQt40, QDataStream::Qt_4_0}};
    if (file.between(kStreamsAsQt46Early, kStreamsAsQt46EarlyEnd))
        return QDataStream::Qt_4_6;
    for (const Row &row : kLatestFirst)
        if (file.since(row.since))
            return row.streamVersion;
    return QDataStream::Qt_3_3;
}

// False for a text that is not a version and for a file newer than this library.
bool readVersion(QDataStream &in)
{
    QString text;
    in >> text;
    dataInterfaceVersionStringLoading = text;
    if (text.size() > kLongestVersionText || text.size() < 2 || text.at(1) != QLatin1Char('.'))
        return false;
    SetDataInterfaceVersionLoading(text);
    return dataInterfaceVersionLoading <= serializationVersionNumber;
}

// The kind of a geography in the file is that of its data source.
std::unique_ptr<MGeoData> newGeography(qint8 kind)
{
    if (kind == MDataSource::VectorSource)
        return std::make_unique<MVectorData>(QString(), TF_DateTime, scratchDirectory());
    if (kind == MDataSource::RasterSource)
        return std::make_unique<MRasterData>(QString(), TimeStamp(0, 0, true, true), TF_DateTime,
                                             scratchDirectory());
    return nullptr;
}

// Removes the geography that a load replaces, before the first block of its successor is stored. It
// is removed by the controller, so that the host is informed.
void makeWay(int geographyId)
{
    if (controller()->GetGeoData().contains(geographyId))
        controller()->RemoveGeography(geographyId);
}

// A geography that cannot be read ends the load, because the position of what follows it is
// unknown.
bool readGeography(QDataStream &in, const LoadContext &project)
{
    qint8 kind = MDataSource::VectorSource;
    if (project.since(fileVersions::kNamesGeographyKinds))
        in >> kind;
    std::unique_ptr<MGeoData> geography = newGeography(kind);
    LoadContext context = project;
    if (!geography || !ProjectReader::restore(*geography, in, context))
        return false;
    const int id = geography->GetId();
    controller()->GetGeoData().insert(id, geography.release());
    return true;
}

bool readGeographies(QDataStream &in, const LoadContext &context)
{
    constexpr qint64 kLeastNameBytes = 4;
    QStringList names;
    if (!readList(in, names, kLeastNameBytes))
        return false;
    for (int i = 0; i < names.size(); ++i)
        if (!readGeography(in, context))
            return false;
    return true;
}

void cleanOldDatasets()
{
    for (MGeoData *geography : std::as_const(controller()->GetGeoData()))
        if (auto *source = dynamic_cast<MVectorDataSource *>(geography->GetDataSource()))
            source->CleanPre201044Data();
}

// Files of 201042 to 400001 contain the blocks of weight lists, which are dropped as soon as they
// are read. These blocks have no owner that would free them, so they are deleted here. In later
// files a block without an owner in the project belongs to the host and is kept.
bool readBlocks(QDataStream &in, const LoadContext &context)
{
    if (!context.since(fileVersions::kHasBlocks))
        return true;
    if (!restoreBlocksOfFile(in, context.since(fileVersions::kPacksBlocks)))
        return false;
    if (context.since(fileVersions::kListsAreComparable))
        return true;
    QVector<int> owned;
    for (const MGeoData *geography : std::as_const(controller()->GetGeoData()))
        geography->AppendBlockIds(owned);
    blockStore().DeleteBlocksBut(owned);
    return true;
}

bool readProject(QDataStream &in)
{
    if (!readVersion(in))
        return false;
    // The store was reset, so the geographies of a project that was not unloaded have lost their
    // blocks. Their containers are dropped now; later they would delete blocks of this project that
    // have the same ids.
    for (MGeoData *geography : std::as_const(controller()->GetGeoData()))
        geography->DropValues();
    LoadContext context = loadContext();
    context.makeWay = &makeWay;
    in.setVersion(streamVersionOf(context));
    QString application;
    if (context.since(fileVersions::kNamesApplication))
        in >> application;
    skipReserved(in, context);
    if (!readGeographies(in, context) || !readBlocks(in, context))
        return false;
    if (!context.since(fileVersions::kHasNoStraySeries))
        cleanOldDatasets();
    if (context.since(fileVersions::kHasVariogramModels))
        controller()->RestoreNonconditionalVariogramModelsFromStream(in);
    return in.status() == QDataStream::Ok;
}

} // namespace

bool VORN_SaveProject(const QString &fileName)
{
    if (!isConsistent(controller()->GetGeoData()))
        return false;
    try {
        // Blocks that are still packed in this file would be lost when it is truncated.
        if (!blockStore().ReleaseFile(fileName))
            return false;
        QFile file(fileName);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return false;
        DeviceStream out(&file);
        return writeProject(out) && file.flush();
    } catch (...) {
        return false;
    }
}

bool VORN_LoadProject(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    ResetDataManager();
    try {
        DeviceStream in(&file);
        return readProject(in);
    } catch (...) {
        return false;
    }
}

void VORN_UnloadProject()
{
    ResetDataManager();
    const QList<int> ids = controller()->GetGeoData().keys();
    for (int id : ids)
        controller()->RemoveGeography(id);
    controller()->RemoveAllNonConVariogramModels();
}
