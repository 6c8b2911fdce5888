// SPDX-License-Identifier: MIT
// The project file is one flat stream: a header, the geographies with everything on them, the
// blocks of the block store, the nonconditional variogram models. No table of contents, no
// checksum: reading is the mirror of writing, under the version that the file names first.
// Containers are restored as block ids alone; the blocks stand behind the geographies, so nothing
// may page in while geographies are read.
#include "datainterface/ProjectAPI.h"
#include <QColor>
#include <QFile>
#include <QStringList>
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

// Codes of a geography's kind in the file.
enum GeographyKind : qint8 { RasterKind = 0, VectorKind = 1 };

constexpr int kLongestVersionText = 8; // "4.00.021"

// Fields that every file has and no reader looks at.
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
        out << qint8(dynamic_cast<MVectorData *>(geography) ? VectorKind : RasterKind);
        if (!geography->SaveToStream(out))
            return false;
    }
    return true;
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

// The form of Qt's own types in files of each age. The row that breaks the rising order is tested
// first: files of its range were written that way.
int streamVersionOf(int version)
{
    struct Row {
        int below;
        int streamVersion;
    };
    static constexpr Row kRows[] = {{112001, 6},  {130000, 7},  {180022, 8}, {180063, 10},
                                    {180088, 11}, {201038, 12}, {400019, 14}};
    if (version >= 170100 && version <= 179999)
        return 12;
    for (const Row &row : kRows)
        if (version < row.below)
            return row.streamVersion;
    return kStreamVersion;
}

// False for a text that is no version and for a newer file.
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

std::unique_ptr<MGeoData> newGeography(qint8 kind)
{
    if (kind == VectorKind)
        return std::make_unique<MVectorData>(QString(), TF_DateTime, scratchDirectory());
    if (kind == RasterKind)
        return std::make_unique<MRasterData>(QString(), TimeStamp(0, 0, true, true), TF_DateTime,
                                             scratchDirectory());
    return nullptr;
}

// What a load replaces goes before its successor's first value comes, and the host hears of it.
void makeWay(int geographyId)
{
    if (controller()->GetGeoData().contains(geographyId))
        controller()->RemoveGeography(geographyId);
}

// A geography that cannot be read ends the load: what follows it in the stream would be read at the
// wrong place.
bool readGeography(QDataStream &in, const LoadContext &project)
{
    qint8 kind = VectorKind;
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

// Files of 201042 to 400001 bring blocks without an owner: their weight lists are dropped as soon as
// they are read, and nobody could free their blocks later. In files from then on a block without an
// owner in the project is the host's own.
bool readBlocks(QDataStream &in, const LoadContext &context)
{
    if (!context.since(fileVersions::kHasBlocks))
        return true;
    if (!RestoreProjectData(in, context.since(fileVersions::kPacksBlocks)))
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
    // What stays of a project that was not unloaded has lost its blocks. Containers that still
    // named them would give back those of this project.
    for (MGeoData *geography : std::as_const(controller()->GetGeoData()))
        geography->DropValues();
    LoadContext context = loadContext();
    context.makeWay = &makeWay;
    in.setVersion(streamVersionOf(context.version));
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
    QFile file(fileName);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    try {
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
