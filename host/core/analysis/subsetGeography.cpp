// SPDX-License-Identifier: MIT
#include "core/analysis/subsetGeography.h"
#include <QDir>
#include <QTemporaryFile>
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/progress.h"
#include "core/project/projectHost.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
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

void takeDatasets(MVectorData &parent, int id, const QVector<int> &objects)
{
    auto &subset = dynamic_cast<MVectorData &>(*geographyOf(id));
    subset.GetVectorDataSource()->ImportFromDataSource(parent.GetVectorDataSource(), objects);
    stopIfCancelled();
    if (parent.IsStatic())
        subset.SetStatic(true);
    // The copies of the datasets have the order of the originals.
    const int key = datasetIds(parent.GetId()).indexOf(keyDataset(parent.GetId()));
    if (key >= 0 && key < datasetIds(id).size())
        setKeyDataset(id, datasetIds(id)[key]);
}

} // namespace

int subsetGeography(int parent, const QVector<int> &objects, const QString &name)
{
    auto *geography = dynamic_cast<MVectorData *>(geographyOf(parent));
    if (!geography)
        fail(QStringLiteral("%1 is a grid; a subset is one of objects").arg(geographyName(parent)));
    const Progress progress("Subset", "Cutting the geography...");
    const int id = openSubset(*geography, objects, name);
    try {
        takeDatasets(*geography, id, objects);
    } catch (...) {
        controller().RemoveGeography(id);
        throw;
    }
    return id;
}

} // namespace meridor
