// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <exception>
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/WeightsAPI.h"
#include "desk/methods/fields.h"
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

/// A number within the limits of its field. A form gives what is not one as text.
QVariant requireNumber(const MethodField &field, const QVariant &value)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    const bool isWhole = field.kind == MethodField::Whole;
    if (!isNumber || value.type() == QVariant::Bool || (isWhole && number != std::floor(number)))
        fail((isWhole ? methodText("\"%1\" is a whole number, not %2")
                      : methodText("\"%1\" is a number, not %2"))
                 .arg(field.name, value.toString()));
    if (!(number >= field.least && number <= field.most))
        fail(methodText("\"%1\" is between %2 and %3, not %4")
                 .arg(field.name, QString::number(field.least, 'g', 12),
                      QString::number(field.most, 'g', 12), value.toString()));
    return value;
}

QVariant requireChoice(const MethodField &field, const QVariant &value)
{
    if (!field.choices.contains(value.toString()))
        fail(methodText("\"%1\" is one of %2, not %3")
                 .arg(field.name, field.choices.join(QStringLiteral(", ")), value.toString()));
    return value;
}

/// Names of things in the project become their ids. Raises a Failure for a value that the field
/// cannot have.
QVariant valueFor(const MethodField &field, const QVariant &value)
{
    if (field.kind == MethodField::Number || field.kind == MethodField::Whole)
        return requireNumber(field, value);
    if (field.kind == MethodField::Choice)
        return requireChoice(field, value);
    if (field.kind == MethodField::Flag && value.type() != QVariant::Bool)
        fail(methodText("\"%1\" is true or false").arg(field.name));
    if (value.type() != QVariant::String)
        return value;
    if (field.kind == MethodField::Model || field.kind == MethodField::Time)
        return value; // a name or a text already
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
        all.append({field.name, valueFor(field, value)});
    }
    return all;
}

QVector<MethodParameter> MethodRegister::resolved(const Method &method,
                                                  const QVector<MethodParameter> &parameters) const
{
    QVector<MethodParameter> all;
    QStringList names;
    for (const MethodField &field : method.fields)
        names.append(field.name);
    for (const MethodParameter &given : parameters) {
        const int field = names.indexOf(given.name);
        if (field < 0)
            fail(methodText("there is no parameter \"%1\"; there are: %2")
                     .arg(given.name, names.join(QStringLiteral(", "))));
        all.append({given.name, valueFor(method.fields[field], given.value)});
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
        const MethodArguments arguments(completed(method, resolved(method, parameters)));
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
