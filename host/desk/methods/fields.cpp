// SPDX-License-Identifier: MIT
#include "desk/methods/fields.h"
#include <QCoreApplication>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/WeightsAPI.h"

namespace meridor {

QString methodText(const char *text)
{
    return QCoreApplication::translate("Method", text);
}

int chosen(const MethodArguments &arguments, const char *name)
{
    const int id = arguments.id(QLatin1String(name));
    if (id < 0)
        fail(methodText("the field \"%1\" is empty").arg(QLatin1String(name)));
    return id;
}

QString datasetWord(int dataset)
{
    return geographyName(VORN_GetGeographyId(dataset)) + QLatin1Char('/') + datasetName(dataset);
}

QString weightSetWord(int set)
{
    return geographyName(set >> 16) + QLatin1Char('/')
           + VORN_GetSpatialWeightSetProperties(set).name;
}

void addOptions(QStringList &line, const MethodArguments &arguments,
                std::initializer_list<const char *> names)
{
    for (const char *const name : names) {
        const QString value = arguments.text(QLatin1String(name));
        if (!value.isEmpty())
            line += optionWords(QLatin1String("--") + QLatin1String(name), value);
    }
}

MethodField thing(const char *name, const QString &label, MethodField::Kind kind, const char *of)
{
    MethodField field;
    field.name = QLatin1String(name);
    field.label = label;
    field.kind = kind;
    field.value = -1;
    field.of = QLatin1String(of);
    if (kind == MethodField::Model || kind == MethodField::Time)
        field.value = QString();
    return field;
}

MethodField maybe(const MethodField &field)
{
    MethodField optional = field;
    optional.optional = true;
    return optional;
}

MethodField onlyWith(const char *other, const QStringList &values, const MethodField &field)
{
    MethodField dependent = field;
    dependent.decidedBy = QLatin1String(other);
    dependent.deciding = values;
    return dependent;
}

MethodField text(const char *name, const QString &label, const QString &help)
{
    MethodField field;
    field.name = QLatin1String(name);
    field.label = label;
    field.value = QString();
    field.help = help;
    return field;
}

MethodField number(const char *name, const QString &label, double value, double least, double most)
{
    MethodField field;
    field.name = QLatin1String(name);
    field.label = label;
    field.kind = MethodField::Number;
    field.value = value;
    field.least = least;
    field.most = most;
    return field;
}

MethodField whole(const char *name, const QString &label, int value, int least, int most)
{
    MethodField field = number(name, label, value, least, most);
    field.kind = MethodField::Whole;
    field.value = value;
    return field;
}

MethodField flag(const char *name, const QString &label)
{
    MethodField field;
    field.name = QLatin1String(name);
    field.label = label;
    field.kind = MethodField::Flag;
    field.value = false;
    return field;
}

MethodField choice(const char *name, const QString &label,
                   std::initializer_list<const char *> choices)
{
    MethodField field;
    field.name = QLatin1String(name);
    field.label = label;
    field.kind = MethodField::Choice;
    for (const char *const text : choices)
        field.choices.append(QLatin1String(text));
    field.value = field.choices.first();
    return field;
}

} // namespace meridor
