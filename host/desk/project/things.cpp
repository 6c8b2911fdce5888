// SPDX-License-Identifier: MIT
#include "desk/project/things.h"
#include "core/analysis/convertDataset.h"
#include "core/analysis/subsetGeography.h"
#include "core/analysis/weightSets.h"
#include "core/geostatistics/variogramModels.h"
#include "core/project/catalog.h"
#include "core/project/edit.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/AdjacencySet.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"
#include "datainterface/VariogramAPI.h"
#include "desk/project/importLine.h"
#include "desk/project/workspace.h"

namespace meridor {
namespace {

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

ModelPlace placeOf(const Thing &thing)
{
    return {thing.owner, thing.id};
}

QString wordOfDataset(int dataset)
{
    return geographyName(VORN_GetGeographyId(dataset)) + QLatin1Char('/') + datasetName(dataset);
}

/// A thing in command lines: its name, and the options that tell its kind.
struct Words {
    QString name;
    QStringList options;
};

Words wordsOf(const Thing &thing)
{
    const QString name = nameOf(thing);
    switch (thing.kind) {
    case Thing::Geography:
        return {name, {QStringLiteral("--geography")}};
    case Thing::WeightSet:
        return {geographyName(setGeography(thing.id)) + QLatin1Char('/') + name,
                {QStringLiteral("--weights")}};
    case Thing::Model:
        if (thing.owner < 0)
            return {name, {QStringLiteral("--model")}};
        return {
            name,
            {QStringLiteral("--model"), QStringLiteral("--dataset=") + wordOfDataset(thing.owner)}};
    default:
        return {wordOfDataset(thing.id), {}};
    }
}

/// Notes the command line of a change. Names that begin with a hyphen are told from options.
void note(Workspace &workspace, const char *verb, const QStringList &options,
          const QStringList &names)
{
    workspace.log().did(
        commandWords({QLatin1String(verb)}, QStringList{workspace.commandPath()} + names, options));
    workspace.markDirty();
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
        removeWeightSets({thing.id});
        break;
    case Thing::Model:
        removeModels({placeOf(thing)});
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
        return typeText(props) + QStringLiteral(", ")
               + counted(times, Workspace::tr("%1 time"), Workspace::tr("%1 times"));
    }
    case Thing::WeightSet:
        return describe(weightSetOf(thing.id));
    case Thing::Model:
        return counted(modelOf(thing).models.size(), Workspace::tr("%1 time"),
                       Workspace::tr("%1 times"));
    case Thing::None:
        break;
    }
    return QString();
}

bool renameThing(Workspace &workspace, const Thing &thing, const QString &name)
{
    if (nameOf(thing) == name)
        return true;
    const Words before = wordsOf(thing);
    const bool done = workspace.look([&] {
        if (thing.kind == Thing::Geography)
            renameGeography(thing.id, name);
        else if (thing.kind == Thing::Dataset)
            renameDataset(thing.id, name);
        else if (thing.kind == Thing::WeightSet)
            renameWeightSet(thing.id, name);
        else
            renameModel(placeOf(thing), name);
    });
    if (done)
        note(workspace, "rename", before.options, {before.name, name});
    return done;
}

bool removeThings(Workspace &workspace, const QVector<Thing> &things)
{
    bool isDone = true;
    for (const Thing &thing : things) {
        if (!exists(thing)) // gone with one before
            continue;
        const Words words = wordsOf(thing);
        const bool done =
            workspace.run(text("Remove"), [&](const Progress &) { removeThing(workspace, thing); });
        isDone = isDone && done;
        if (done)
            note(workspace, "remove", words.options, {words.name});
    }
    return isDone;
}

Thing duplicateThing(Workspace &workspace, const Thing &thing)
{
    Thing copy;
    workspace.run(text("Duplicate"), [&](const Progress &) {
        if (thing.kind == Thing::Dataset) {
            const QString name =
                controller().GetUniqueDatasetName(geographyOfThing(thing), nameOf(thing));
            copy = {Thing::Dataset, copyDataset(thing.id, name), -1};
        } else if (thing.kind == Thing::WeightSet) {
            copy = {Thing::WeightSet, duplicateWeightSet(thing.id, QString()), -1};
        } else if (thing.kind == Thing::Model) {
            const ModelPlace made = duplicateModel(placeOf(thing), QString());
            copy = {Thing::Model, made.id, made.dataset};
        } else {
            const QString name = VORN_GetUniqueGeographyName(nameOf(thing));
            copy = {Thing::Geography, copyGeography(thing.id, name), -1};
        }
    });
    if (copy.kind == Thing::None)
        return copy;
    const Words words = wordsOf(thing);
    note(workspace, "duplicate", words.options, {words.name, nameOf(copy)});
    return copy;
}

Description descriptionOf(const Thing &thing)
{
    if (thing.kind == Thing::Dataset)
        return descriptionOf(thing.id);
    if (thing.kind == Thing::Geography)
        return {QString(), historyOf(thing.id)};
    if (thing.kind == Thing::WeightSet)
        return {describe(weightSetOf(thing.id)), weightSetOf(thing.id).GetInformation()};
    return {};
}

bool describeThing(Workspace &workspace, const Thing &thing, const Description &description)
{
    const Description before = descriptionOf(thing);
    if (before.summary == description.summary && before.history == description.history)
        return true;
    const bool done = workspace.look([&] {
        if (thing.kind == Thing::Dataset)
            setDescription(thing.id, description);
        else if (thing.kind == Thing::Geography)
            setHistory(thing.id, description.history);
        else
            fail(text("a %1 has no description that can be changed").arg(kindText(thing.kind)));
    });
    if (!done)
        return false;
    Words words = wordsOf(thing);
    if (before.summary != description.summary)
        words.options += optionWords(QStringLiteral("--summary"), description.summary);
    if (before.history != description.history)
        words.options += optionWords(QStringLiteral("--history"), description.history);
    note(workspace, "describe", words.options, {words.name});
    return true;
}

} // namespace meridor
