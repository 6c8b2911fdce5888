// SPDX-License-Identifier: MIT
#include <algorithm>
#include "core/analysis/selection.h"
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MGeoData.h"
#include "desk/methods/fields.h"
#include "desk/methods/method.h"

namespace meridor {
namespace {

SelectionMode modeOf(const MethodArguments &arguments)
{
    const QString mode = arguments.text(QStringLiteral("mode"));
    return mode == QLatin1String("add")      ? SelectionMode::Add
           : mode == QLatin1String("toggle") ? SelectionMode::Toggle
                                             : SelectionMode::Replace;
}

void tell(Workspace &workspace, int geography, MethodReport &report)
{
    report.text = methodText("%1 of %2 selected")
                      .arg(workspace.selection().count(geography))
                      .arg(counted(geographyOf(geography)->GetObjectCount(),
                                   methodText("%1 object"), methodText("%1 objects")));
    report.results.append({QStringLiteral("count"), workspace.selection().count(geography)});
}

/// The time at which views show the values.
QString timeText(Workspace &workspace, int geography)
{
    return axisOf(geography).show(workspace.timeOf(geography));
}

/// The values in the field, which separates them by semicolons.
QStringList valuesOf(const MethodArguments &arguments)
{
    QStringList values;
    for (const QString &value :
         listItems(arguments.text(QStringLiteral("values")), QLatin1Char(';')))
        values.append(value.trimmed());
    return values;
}

void selectByValue(Workspace &workspace, const MethodArguments &arguments, MethodReport &report,
                   const Progress &)
{
    const int dataset = chosen(arguments, "dataset");
    const int geography = VORN_GetGeographyId(dataset);
    ObjectChoice choice;
    choice.dataset = datasetWord(dataset);
    choice.low = arguments.text(QStringLiteral("min"));
    choice.high = arguments.text(QStringLiteral("max"));
    choice.values = valuesOf(arguments);
    if (choice.values.isEmpty() && choice.low.isEmpty() && choice.high.isEmpty())
        fail(methodText("neither values nor limits are given"));
    if (!datasetOf(dataset)->IsStatic())
        choice.at = timeText(workspace, geography);
    choice.realization = realizationIndex(dataset, arguments.whole(QStringLiteral("realization")));
    QVector<unsigned int> objects;
    for (const int object : chosenObjects(geography, choice))
        objects.append(static_cast<unsigned int>(object));
    workspace.selection().select(geography, objects, modeOf(arguments));
    tell(workspace, geography, report);
}

QStringList valueLine(Workspace &workspace, const MethodArguments &arguments)
{
    const int dataset = arguments.id(QStringLiteral("dataset"));
    QStringList line{QStringLiteral("select"), workspace.commandPath(), datasetWord(dataset)};
    addOptions(line, arguments, {"min", "max"});
    const QStringList values = valuesOf(arguments);
    if (!values.isEmpty())
        line += optionWords(QStringLiteral("--values"), listText(values));
    if (!datasetOf(dataset)->IsStatic())
        line << QStringLiteral("--at") << timeText(workspace, VORN_GetGeographyId(dataset));
    if (arguments.whole(QStringLiteral("realization")) > 1)
        addOptions(line, arguments, {"realization"});
    return line;
}

void selectNeighbors(Workspace &workspace, const MethodArguments &arguments, MethodReport &report,
                     const Progress &)
{
    const int set = chosen(arguments, "weights");
    const int geography = set >> 16;
    const QVector<unsigned int> selected = workspace.selection().selected(geography);
    if (selected.isEmpty())
        fail(methodText("no object of %1 is selected").arg(geographyName(geography)));
    workspace.selection().select(geography, neighborsAt(set, selected, workspace.timeOf(geography)),
                                 modeOf(arguments));
    tell(workspace, geography, report);
}

QStringList neighborsLine(Workspace &workspace, const MethodArguments &arguments)
{
    const int set = arguments.id(QStringLiteral("weights"));
    const int geography = set >> 16;
    const QVector<unsigned int> selected = workspace.selection().selected(geography);
    QStringList line{QStringLiteral("neighbors"), workspace.commandPath(), weightSetWord(set)};
    if (!selected.isEmpty())
        line += objectKeys(geography, {static_cast<int>(selected.first())});
    line << QStringLiteral("--at") << timeText(workspace, geography);
    return line;
}

bool changesNothing(const MethodArguments &)
{
    return false;
}

} // namespace

Method valueSelectionMethod()
{
    return {QStringLiteral("select"),
            methodText("Select by value"),
            QStringLiteral("meridor.md#select"),
            {thing("dataset", methodText("Dataset"), MethodField::Dataset),
             text("min", methodText("From"), methodText("Empty: no lower limit")),
             text("max", methodText("To"), methodText("Empty: no upper limit")),
             text("values", methodText("Or one of these values"),
                  methodText("Separated by semicolons")),
             whole("realization", methodText("Realization"), 1, 1, 1000000),
             choice("mode", methodText("Selection"), {"replace", "add", "toggle"})},
            selectByValue,
            valueLine,
            changesNothing};
}

Method neighborSelectionMethod()
{
    return {QStringLiteral("select-neighbors"),
            methodText("Select neighbours"),
            QStringLiteral("meridor.md#neighbors"),
            {thing("weights", methodText("Weight set"), MethodField::WeightSet),
             choice("mode", methodText("Selection"), {"add", "replace", "toggle"})},
            selectNeighbors,
            neighborsLine,
            changesNothing};
}

} // namespace meridor
