// SPDX-License-Identifier: MIT
#include "core/analysis/tables.h"
#include <QFile>
#include <QFileInfo>
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"
#include "datainterface/MVectorData.h"
#include "datainterface/MVectorDataSource.h"

namespace meridor {
namespace {

/// A file that an export writes beside its main file, such as the code page of a DBF table. It is
/// moved with the main file, and removed if that is not completed.
class SideFile {
public:
    explicit SideFile(const QString &suffix) : mSuffix(suffix) {}
    ~SideFile()
    {
        if (!mName.isEmpty())
            QFile::remove(mName);
    }
    SideFile(const SideFile &) = delete;
    SideFile &operator=(const SideFile &) = delete;
    void follow(const QString &mainFile) { mName = nameBeside(mainFile); }
    void moveTo(const QString &mainFile)
    {
        if (!QFile::exists(mName))
            return;
        QFile::remove(nameBeside(mainFile));
        QFile::rename(mName, nameBeside(mainFile));
    }

private:
    QString nameBeside(const QString &mainFile) const
    {
        const QFileInfo info(mainFile);
        return info.absolutePath() + QLatin1Char('/') + info.completeBaseName() + mSuffix;
    }

    QString mSuffix;
    QString mName;
};

} // namespace

void exportTable(const QString &path, TableFormat format, const QVector<int> &datasets,
                 qint64 start, qint64 end, const QString &missing)
{
    const int geography = VORN_GetGeographyId(datasets.first());
    auto *vector = dynamic_cast<MVectorData *>(geographyOf(geography));
    if (!vector)
        fail(QStringLiteral("%1 is no vector geography").arg(geographyName(geography)));
    MVectorDataSource &source = *vector->GetVectorDataSource();
    QList<DataId> ids;
    for (const int id : datasets)
        ids.append(id);
    const TimeFormat times = vector->GetTheTimeFormat();
    SideFile codePage(QStringLiteral(".cpg"));
    const bool written = replaceFile(path, [&](const QString &beside) {
        codePage.follow(beside);
        bool done = false;
        switch (format) {
        case TableFormat::Csv:
            done = source.ExportDatasetsAsCSV(beside, ids, times, start, end, missing, 0);
            break;
        case TableFormat::GeoEas:
            done = source.ExportDatasetsAsGeoeas(beside, vector->GetName(), ids, times, start, end,
                                                 missing, 0);
            break;
        case TableFormat::Dbf:
            done = source.ExportDatasetsAsDBF(beside, ids, times, start, end, missing, 0);
            break;
        }
        return done && !isCancelled();
    });
    if (!written) {
        stopIfCancelled();
        fail(QStringLiteral("%1: could not be written").arg(path));
    }
    codePage.moveTo(path);
}

QPair<qint64, qint64> timesOf(const QVector<int> &datasets)
{
    bool any = false;
    QPair<qint64, qint64> hull(0, 0);
    for (const int id : datasets) {
        TimeStamp bounds;
        if (datasetOf(id)->IsStatic() || !datasetOf(id)->GetTimeBounds(bounds))
            continue;
        const qint64 last = lastInstantOf(bounds);
        hull = {any ? qMin(hull.first, bounds.startTime) : bounds.startTime,
                any ? qMax(hull.second, last) : last};
        any = true;
    }
    return hull;
}

} // namespace meridor
