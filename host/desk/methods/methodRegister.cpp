// SPDX-License-Identifier: MIT
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

Method::~Method() = default;

QString datasetWord(int dataset)
{
    return geographyName(VORN_GetGeographyId(dataset)) + QLatin1Char('/') + datasetName(dataset);
}

QString weightSetWord(int set)
{
    return geographyName(set >> 16) + QLatin1Char('/')
           + VORN_GetSpatialWeightSetProperties(set).name;
}

MethodRegister::MethodRegister()
{
    mMethods.push_back(makeMoranMethod());
}

const Method *MethodRegister::find(int number) const
{
    return number >= 1 && number <= count() ? mMethods[static_cast<size_t>(number - 1)].get()
                                            : nullptr;
}

const Method *MethodRegister::find(const QString &name) const
{
    return find(numberOf(name));
}

int MethodRegister::numberOf(const QString &name) const
{
    for (int number = 1; number <= count(); ++number)
        if (find(number)->name() == name)
            return number;
    return 0;
}

namespace {

/// Names of things in the project become their ids.
QVariant resolved(const MethodField &field, const QVariant &value)
{
    if (value.type() != QVariant::String)
        return value;
    switch (field.kind) {
    case MethodField::Geography:
        return findGeography(value.toString());
    case MethodField::Dataset:
    case MethodField::Numbers:
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
    for (const MethodField &field : method.fields()) {
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
    const bool done = workspace.run(method.title(), [&](const Progress &progress) {
        const MethodArguments arguments(completed(method, parameters));
        line = method.commandLine(workspace, arguments); // ids may be gone afterwards
        method.execute(workspace, arguments, report, progress);
    });
    if (!done)
        return false;
    workspace.log().did(line);
    if (method.changesProject())
        workspace.markDirty();
    if (!report.text.isEmpty())
        workspace.tell(report.text);
    return true;
}

QString MethodRegister::invocation(Workspace &workspace, const Method &method,
                                   const QVector<MethodParameter> &parameters) const
{
    QString line;
    workspace.look([&] {
        const MethodArguments arguments(completed(method, parameters));
        line = commandText(method.commandLine(workspace, arguments));
    });
    return line;
}

} // namespace meridor
