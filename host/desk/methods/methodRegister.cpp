// SPDX-License-Identifier: MIT
#include <algorithm>
#include <exception>
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/WeightsAPI.h"
#include "desk/methods/method.h"
#include "desk/project/workspace.h"

namespace meridor {

MethodArguments::MethodArguments(const QVector<MethodParameter> &parameters)
{
    for (const MethodParameter &parameter : parameters)
        mValues.insert(parameter.name, parameter.value);
}

MethodRegister::MethodRegister()
    : mMethods{valueSelectionMethod(), neighborSelectionMethod(), weightsMethod(), moranMethod(),
               zonalMethod(),          variogramMethod(),         krigeMethod(),   simulateMethod(),
               convertMethod()}
{
}

const Method *MethodRegister::find(int number) const
{
    return number >= 1 && number <= mMethods.size() ? &mMethods[number - 1] : nullptr;
}

const Method *MethodRegister::find(const QString &name) const
{
    return find(numberOf(name));
}

int MethodRegister::numberOf(const QString &name) const
{
    const auto found = std::find_if(mMethods.begin(), mMethods.end(),
                                    [&](const Method &method) { return method.name == name; });
    return found == mMethods.end() ? 0 : static_cast<int>(found - mMethods.begin()) + 1;
}

namespace {

/// Names of things in the project become their ids.
QVariant resolved(const MethodField &field, const QVariant &value)
{
    if (value.type() != QVariant::String)
        return value;
    if (field.optional && value.toString().isEmpty())
        return -1;
    switch (field.kind) {
    case MethodField::Geography:
    case MethodField::Polygons:
        return findGeography(value.toString());
    case MethodField::Dataset:
    case MethodField::Numbers:
    case MethodField::Grids:
        return findDataset(value.toString());
    case MethodField::WeightSet:
        return findWeightSet(value.toString());
    default:
        return value;
    }
}

} // namespace

QVector<MethodParameter> MethodRegister::completed(const Method &method,
                                                   const QVector<MethodParameter> &parameters) const
{
    QVector<MethodParameter> all;
    for (const MethodField &field : method.fields) {
        QVariant value = field.value;
        for (const MethodParameter &given : parameters)
            if (given.name == field.name)
                value = given.value;
        all.append({field.name, resolved(field, value)});
    }
    return all;
}

bool MethodRegister::execute(Workspace &workspace, const Method &method,
                             const QVector<MethodParameter> &parameters, MethodReport &report) const
{
    report = MethodReport();
    QStringList line;
    bool changes = false;
    const bool done = workspace.run(method.title, [&](const Progress &progress) {
        const MethodArguments arguments(completed(method, parameters));
        line = method.commandLine(workspace, arguments); // ids may be gone afterwards
        changes = method.changesProject(arguments);
        method.execute(workspace, arguments, report, progress);
    });
    if (!done)
        return false;
    workspace.log().did(line);
    if (changes)
        workspace.markDirty();
    if (!report.text.isEmpty())
        workspace.tell(report.text);
    return true;
}

QString MethodRegister::invocation(Workspace &workspace, const Method &method,
                                   const QVector<MethodParameter> &parameters) const
{
    try {
        const MethodArguments arguments(completed(method, parameters));
        return commandText(method.commandLine(workspace, arguments));
    } catch (const std::exception &) { // a parameter names nothing, or is not chosen yet
        return QString();
    }
}

} // namespace meridor
