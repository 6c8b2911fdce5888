// SPDX-License-Identifier: MIT
#include "core/analysis/subsetGeography.h"
#include <QDir>
#include <QTemporaryFile>
#include <numeric>
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/geographyTimes.h"
#include "core/project/projectHost.h"
#include "core/project/shapeAccess.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/VORN_Progress.h"
#include "fennimark/Fennims.h"

namespace meridor {
namespace {

/// The scratch directory of the session, else the system's.
QString scratchDirectory()
{
    const auto *host = dynamic_cast<const ProjectHost *>(&controller());
    return host ? host->scratch() : QDir::tempPath();
}

/// A temporary geography file of `objects`, removed at the end of its scope.
class SubsetFile {
public:
    SubsetFile(const MVectorData &parent, const QVector<int> &objects)
        : mFile(scratchDirectory() + QStringLiteral("/subset-XXXXXX"))
    {
        if (!mFile.open())
            fail(QStringLiteral("%1: %2").arg(mFile.fileName(), mFile.errorString()));
        QVector<int> chains;
        for (const int object : objects)
            chains.append(parent.GetFennimId(object));
        mWritten = parent.GetFennims()->CreateSubsetFromIds(
            mFile.fileName().toLocal8Bit().constData(), chains,
            VORN_Progress::UsingProgressBar() ? &VORN_Progress::UpdateProgress : nullptr);
    }
    SubsetFile(const SubsetFile &) = delete;
    SubsetFile &operator=(const SubsetFile &) = delete;
    bool isWritten() const { return mWritten; }
    QString path() const { return mFile.fileName(); }

private:
    QTemporaryFile mFile;
    bool mWritten = false;
};

int openSubset(MVectorData &parent, const QVector<int> &objects, const QString &name)
{
    const SubsetFile file(parent, objects);
    stopIfCancelled();
    const QString history = QStringLiteral("Cut from %1, %2 of %3")
                                .arg(parent.GetName(), QString::number(objects.size()),
                                     counted(parent.GetObjectCount(), "object"));
    const int id = file.isWritten() ? controller().AddNewVectorGeography(file.path(), name, history,
                                                                         parent.GetTheTimeFormat(),
                                                                         parent.GetId(), &objects)
                                    : -1;
    if (id < 0)
        fail(QStringLiteral("geography %1 could not be made").arg(name));
    return id;
}

/// The copies of the datasets have the order of the originals.
void takeKey(int parent, int id)
{
    const int key = datasetIds(parent).indexOf(keyDataset(parent));
    if (key >= 0 && key < datasetIds(id).size())
        setKeyDataset(id, datasetIds(id)[key]);
}

void takeDatasets(MVectorData &parent, int id, const QVector<int> &objects)
{
    auto &subset = dynamic_cast<MVectorData &>(*geographyOf(id));
    subset.GetVectorDataSource()->ImportFromDataSource(parent.GetVectorDataSource(), objects);
    stopIfCancelled();
    if (parent.IsStatic())
        subset.SetStatic(true);
    takeKey(parent.GetId(), id);
}

int copyGrid(int grid, const QString &name)
{
    const GeoProps props = VORN_GetGeographyProperties(grid);
    const int id = VORN_CreateNewRasterGeography(
        name, static_cast<unsigned>(props.rows), static_cast<unsigned>(props.columns), props.bounds,
        Interval(timeBoundsOf(grid)), props.timeFormat,
        QStringLiteral("Copy of %1").arg(geographyName(grid)), projectionText(grid));
    if (id < 0)
        fail(QStringLiteral("geography %1 could not be made").arg(name));
    if (props.isStatic)
        geographyOf(id)->SetStatic(true);
    return id;
}

} // namespace

int subsetGeography(int parent, const QVector<int> &objects, const QString &name)
{
    auto *geography = dynamic_cast<MVectorData *>(geographyOf(parent));
    if (!geography)
        fail(QStringLiteral("%1 is a grid; a subset is one of objects").arg(geographyName(parent)));
    const int id = openSubset(*geography, objects, name);
    try {
        takeDatasets(*geography, id, objects);
    } catch (...) {
        controller().RemoveGeography(id);
        throw;
    }
    return id;
}

int copyGeography(int geography, const QString &name)
{
    requireNewGeographyName(name);
    if (VORN_GetGeographyProperties(geography).type != GeoProps::Raster) {
        QVector<int> all(VORN_GetGeographyProperties(geography).objectCount);
        std::iota(all.begin(), all.end(), 0);
        return subsetGeography(geography, all, name);
    }
    const int id = copyGrid(geography, name);
    try {
        for (const int dataset : datasetIds(geography)) {
            stopIfCancelled();
            const int copy = VORN_MigrateDataset(dataset, id, false);
            if (copy < 0)
                fail(QStringLiteral("%1 could not be copied").arg(datasetName(dataset)));
        }
        stopIfCancelled();
        takeKey(geography, id);
        VORN_NewDatasetsCreated(datasetIds(id));
    } catch (...) {
        controller().RemoveGeography(id);
        throw;
    }
    return id;
}

} // namespace meridor
