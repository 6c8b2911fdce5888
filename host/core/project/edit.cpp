// SPDX-License-Identifier: MIT
#include "core/project/edit.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"

namespace meridor {
namespace {

const QString kHistory = QStringLiteral("History");

void requireName(const QString &name)
{
    if (name.isEmpty())
        failUsage(QStringLiteral("a name is not empty"));
}

} // namespace

void renameDataset(int dataset, const QString &name)
{
    requireName(name);
    const int geography = VORN_GetGeographyId(dataset);
    const int other = VORN_GetDatasetByName(geography, name);
    if (other >= 0 && other != dataset)
        fail(QStringLiteral("%1 has a dataset %2 already").arg(geographyName(geography), name));
    geographyOf(geography)->GetDataSource()->SetDisplayName(dataset,
                                                            name.toLocal8Bit().constData());
}

void renameGeography(int geography, const QString &name)
{
    requireName(name);
    if (name != geographyName(geography))
        requireNewGeographyName(name);
    geographyOf(geography)->SetName(name);
}

void removeDatasets(const QVector<int> &datasets, const Notes &notes)
{
    for (const int id : datasets)
        if (keyDataset(VORN_GetGeographyId(id)) == id)
            notes.note(QStringLiteral("%1 held the objects' keys; from now on they are numbers")
                           .arg(datasetName(id)));
    VORN_RemoveDatasets(datasets);
}

void removeGeographies(const QVector<int> &geographies)
{
    for (const int id : geographies)
        controller().RemoveGeography(id);
}

Description descriptionOf(int dataset)
{
    MDataset *const described = datasetOf(dataset);
    return {described->GetShortDescription(), described->GetLongDescription()};
}

void setDescription(int dataset, const Description &description)
{
    if (!VORN_SetShortDescription(dataset, description.summary)
        || !VORN_SetLongDescription(dataset, description.history))
        fail(QStringLiteral("the description of %1 cannot be changed").arg(datasetName(dataset)));
}

QString historyOf(int geography)
{
    return geographyOf(geography)->GetMetaData()[kHistory].toString();
}

void setHistory(int geography, const QString &history)
{
    if (!geographyOf(geography)->GetMetaData().setTag(kHistory, history))
        fail(QStringLiteral("the history of %1 cannot be changed").arg(geographyName(geography)));
}

QString copyName(const QString &base, const QStringList &taken)
{
    const QString first = base + QStringLiteral(" copy");
    QString name = first;
    for (int i = 2; taken.contains(name); ++i)
        name = QStringLiteral("%1 %2").arg(first).arg(i);
    return name;
}

} // namespace meridor
