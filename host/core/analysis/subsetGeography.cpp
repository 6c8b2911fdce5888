// SPDX-License-Identifier: MIT
#include "core/analysis/subsetGeography.h"
#include <QFile>
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"
#include "core/project/failure.h"
#include "fennimark/Fennims.h"
#include "core/project/projectHost.h"
#include "cli/interrupt.h"
#include "core/project/catalog.h"
#include "cli/terminalProgress.h"

namespace meridor {
namespace {

/// A geography file of the chains that `objects` stand for, gone again with its scope.
class SubsetFile {
public:
    SubsetFile(const MVectorData &parent, const QVector<int> &objects)
        : mPath(ControllerBase::GetVORNTempFile("TMP"))
    {
        QVector<int> chains;
        for (const int object : objects)
            chains.append(parent.GetFennimId(object));
        mWritten = parent.GetFennims()->CreateSubsetFromIds(mPath.toLocal8Bit().constData(), chains,
                                                            &VORN_Progress::UpdateProgress);
    }
    ~SubsetFile() { QFile::remove(mPath); }
    SubsetFile(const SubsetFile &) = delete;
    SubsetFile &operator=(const SubsetFile &) = delete;
    bool isWritten() const { return mWritten; }
    const QString &path() const { return mPath; }

private:
    QString mPath;
    bool mWritten = false;
};

int openSubset(MVectorData &parent, const QVector<int> &objects, const QString &name)
{
    const SubsetFile file(parent, objects);
    stopIfInterrupted();
    const QString history = QStringLiteral("Cut from %1, %2 of %3 objects")
                                .arg(parent.GetName())
                                .arg(objects.size())
                                .arg(parent.GetObjectCount());
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
    stopIfInterrupted();
    if (parent.IsStatic())
        subset.SetStatic(true);
    // Copies stand in the order of their originals.
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
