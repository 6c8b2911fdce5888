// SPDX-License-Identifier: MIT
#include "desk/project/things.h"
#include "core/analysis/convertDataset.h"
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/edit.h"
#include "core/project/failure.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"
#include "datainterface/VariogramAPI.h"
#include "desk/project/workspace.h"

namespace meridor {
namespace {

const QString kHistory = QStringLiteral("History");

QString text(const char *source)
{
    return Workspace::tr(source);
}

int setGeography(int set)
{
    return set >> 16;
}

VariogramModelProps modelOf(const Thing &thing)
{
    return thing.owner < 0 ? VORN_GetNonConVariogramModelProperties(thing.id)
                           : VORN_GetVariogramModelProperties(thing.owner, thing.id);
}

/// The names of things in command lines.
QString wordOf(const Thing &thing)
{
    const QString name = nameOf(thing);
    return thing.kind == Thing::Geography
               ? name
               : geographyName(geographyOfThing(thing)) + QLatin1Char('/') + name;
}

/// Notes a change that meridor has no verb for.
void remark(Workspace &workspace, const QString &what)
{
    workspace.log().remark(text("No command line does the same: %1").arg(what));
    workspace.markDirty();
}

void note(Workspace &workspace, const QStringList &line)
{
    workspace.log().did(line);
    workspace.markDirty();
}

void renameSet(int set, const QString &name)
{
    MGeoData *const geography = geographyOf(setGeography(set));
    if (weightSetOf(set).GetName() != name)
        requireNewWeightSetName(geography->GetId(), name);
    geography->RenameSpatialWeightSet(set, name.toUtf8().constData());
}

void renameModel(const Thing &thing, const QString &name)
{
    if (name.isEmpty())
        fail(text("a name is not empty"));
    VariogramModel model;
    if (thing.owner < 0) {
        if (controller().GetNonConVariogramModelNames().contains(name))
            fail(text("the project has a model %1 already").arg(name));
        controller().GetNonConVariogramModel(thing.id, model);
        model.name = name;
        controller().ReplaceNonConVariogramModel(model);
        return;
    }
    MDataSource *const source = geographyOf(geographyOfThing(thing))->GetDataSource();
    QList<QString> names;
    source->GetVariogramModelNames(thing.owner, names);
    if (names.contains(name))
        fail(text("%1 has a model %2 already").arg(datasetName(thing.owner), name));
    source->GetVariogramModel(thing.owner, thing.id, model);
    model.name = name;
    source->ReplaceVariogramModel(thing.owner, model);
}

void removeThing(Workspace &workspace, const Thing &thing)
{
    switch (thing.kind) {
    case Thing::Geography:
        removeGeographies({thing.id});
        break;
    case Thing::Dataset:
        removeDatasets({thing.id}, workspace.host().notes());
        break;
    case Thing::WeightSet:
        geographyOf(setGeography(thing.id))->RemoveSpatialWeightSet(thing.id);
        break;
    case Thing::Model:
        if (thing.owner < 0)
            controller().RemoveNonConVariogramModel(thing.id);
        else
            geographyOf(geographyOfThing(thing))
                ->GetDataSource()
                ->RemoveVariogramModel(thing.owner, thing.id);
        break;
    case Thing::None:
        break;
    }
}

bool exists(const Thing &thing)
{
    switch (thing.kind) {
    case Thing::Geography:
        return geographyOf(thing.id);
    case Thing::Dataset:
        return datasetOf(thing.id);
    case Thing::WeightSet:
        return VORN_GetSpatialWeightSetProperties(thing.id).id >= 0;
    case Thing::Model:
        return modelOf(thing).id >= 0;
    case Thing::None:
        break;
    }
    return false;
}

QString shapesText(const GeoProps &props)
{
    if (props.type == GeoProps::Raster)
        return gridText(props);
    return text("%1 %2").arg(props.objectCount).arg(QLatin1String(shapeName(props.type)));
}

void noteCopy(Workspace &workspace, const Thing &thing, const Thing &copy)
{
    if (thing.kind == Thing::Dataset)
        note(workspace,
             {QStringLiteral("convert"), workspace.commandPath(), wordOf(thing), nameOf(copy)});
    else
        remark(workspace,
               text("copy the %1 %2 as %3").arg(kindText(thing.kind), wordOf(thing), nameOf(copy)));
}

template <class Ids> int newest(const Ids &before, const Ids &after)
{
    for (const int id : after)
        if (!before.contains(id))
            return id;
    return -1;
}

} // namespace

int geographyOfThing(const Thing &thing)
{
    switch (thing.kind) {
    case Thing::Geography:
        return thing.id;
    case Thing::Dataset:
        return VORN_GetGeographyId(thing.id);
    case Thing::WeightSet:
        return setGeography(thing.id);
    case Thing::Model:
        return thing.owner < 0 ? -1 : VORN_GetGeographyId(thing.owner);
    case Thing::None:
        break;
    }
    return -1;
}

QString nameOf(const Thing &thing)
{
    switch (thing.kind) {
    case Thing::Geography:
        return geographyName(thing.id);
    case Thing::Dataset:
        return datasetName(thing.id);
    case Thing::WeightSet:
        return VORN_GetSpatialWeightSetProperties(thing.id).name;
    case Thing::Model:
        return modelOf(thing).name;
    case Thing::None:
        break;
    }
    return QString();
}

QString kindText(Thing::Kind kind)
{
    switch (kind) {
    case Thing::Geography:
        return text("geography");
    case Thing::Dataset:
        return text("dataset");
    case Thing::WeightSet:
        return text("weight set");
    case Thing::Model:
        return text("variogram model");
    case Thing::None:
        break;
    }
    return QString();
}

QString summaryOf(const Thing &thing)
{
    switch (thing.kind) {
    case Thing::Geography:
        return shapesText(VORN_GetGeographyProperties(thing.id));
    case Thing::Dataset: {
        const DatasetProps props = VORN_GetDatasetProperties(thing.id);
        if (props.isStatic)
            return typeText(props);
        const int times = dataTimes(thing.id).size();
        return Workspace::tr("%1, %n times", nullptr, times).arg(typeText(props));
    }
    case Thing::WeightSet:
        return describe(weightSetOf(thing.id));
    case Thing::Model:
        return Workspace::tr("%n times", nullptr, modelOf(thing).models.size());
    case Thing::None:
        break;
    }
    return QString();
}

bool renameThing(Workspace &workspace, const Thing &thing, const QString &name)
{
    if (nameOf(thing) == name)
        return true;
    const QString before = wordOf(thing);
    const bool done = workspace.look([&] {
        if (thing.kind == Thing::Geography)
            renameGeography(thing.id, name);
        else if (thing.kind == Thing::Dataset)
            renameDataset(thing.id, name);
        else if (thing.kind == Thing::WeightSet)
            renameSet(thing.id, name);
        else
            renameModel(thing, name);
    });
    if (!done)
        return false;
    if (thing.kind == Thing::WeightSet || thing.kind == Thing::Model) {
        remark(workspace, text("rename %1 to %2").arg(before, name));
        return true;
    }
    QStringList line{QStringLiteral("rename"), workspace.commandPath(), before, name};
    if (thing.kind == Thing::Geography)
        line.append(QStringLiteral("--geography"));
    note(workspace, line);
    return true;
}

bool removeThings(Workspace &workspace, const QVector<Thing> &things)
{
    bool isDone = true;
    for (const Thing &thing : things) {
        if (!exists(thing)) // gone with one before
            continue;
        const QString word = wordOf(thing);
        const bool done =
            workspace.run(text("Remove"), [&](const Progress &) { removeThing(workspace, thing); });
        isDone = isDone && done;
        if (!done)
            continue;
        if (thing.kind == Thing::Model)
            remark(workspace, text("remove the model %1").arg(word));
        else if (thing.kind == Thing::WeightSet)
            note(workspace, {QStringLiteral("weights"), QStringLiteral("remove"),
                             workspace.commandPath(), word});
        else if (thing.kind == Thing::Dataset)
            note(workspace, {QStringLiteral("remove"), workspace.commandPath(), word});
        else
            note(workspace, {QStringLiteral("remove"), workspace.commandPath(), word,
                             QStringLiteral("--geography")});
    }
    return isDone;
}

Thing duplicateThing(Workspace &workspace, const Thing &thing)
{
    Thing copy;
    workspace.run(text("Duplicate"), [&](const Progress &) {
        MGeoData *const geography = geographyOf(geographyOfThing(thing));
        if (thing.kind == Thing::Dataset) {
            const QString name =
                controller().GetUniqueDatasetName(geography->GetId(), nameOf(thing));
            copy = {Thing::Dataset, copyDataset(thing.id, name), -1};
        } else if (thing.kind == Thing::WeightSet) {
            const QList<int> before = geography->GetSpatialWeightsIds();
            geography->DuplicateSpatialWeightSet(thing.id);
            copy = {Thing::WeightSet, newest(before, geography->GetSpatialWeightsIds()), -1};
        } else if (thing.kind == Thing::Model && thing.owner < 0) {
            const QList<int> before = controller().GetNonConVariogramModelIds();
            controller().DuplicateNonConVariogramModel(thing.id);
            copy = {Thing::Model, newest(before, controller().GetNonConVariogramModelIds()), -1};
        } else if (thing.kind == Thing::Model) {
            const QList<int> before = VORN_GetVariogramModelIds(thing.owner);
            geography->GetDataSource()->DuplicateVariogramModel(thing.owner, thing.id);
            copy = {Thing::Model, newest(before, VORN_GetVariogramModelIds(thing.owner)),
                    thing.owner};
        } else {
            fail(text("a geography is not copied; \"meridor subset\" makes one of another"));
        }
    });
    if (copy.kind != Thing::None)
        noteCopy(workspace, thing, copy);
    return copy;
}

Description descriptionOf(const Thing &thing)
{
    Description found;
    if (thing.kind == Thing::Dataset) {
        MDataset *const dataset = datasetOf(thing.id);
        found = {dataset->GetShortDescription(), dataset->GetLongDescription()};
    } else if (thing.kind == Thing::Geography) {
        found.history = geographyOf(thing.id)->GetMetaData()[kHistory].toString();
    } else if (thing.kind == Thing::WeightSet) {
        found = {describe(weightSetOf(thing.id)), weightSetOf(thing.id).GetInformation()};
    }
    return found;
}

bool describeThing(Workspace &workspace, const Thing &thing, const Description &description)
{
    const Description before = descriptionOf(thing);
    if (before.summary == description.summary && before.history == description.history)
        return true;
    const bool done = workspace.look([&] {
        bool isKept = false;
        if (thing.kind == Thing::Dataset)
            isKept = VORN_SetShortDescription(thing.id, description.summary)
                     && VORN_SetLongDescription(thing.id, description.history);
        else if (thing.kind == Thing::Geography)
            isKept = geographyOf(thing.id)->GetMetaData().setTag(kHistory, description.history);
        if (!isKept)
            fail(text("the description of %1 cannot be changed").arg(nameOf(thing)));
    });
    if (done)
        remark(workspace, text("describe %1").arg(wordOf(thing)));
    return done;
}

} // namespace meridor
