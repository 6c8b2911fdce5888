// SPDX-License-Identifier: MIT
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "core/analysis/describe.h"
#include "core/geostatistics/variogramModels.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/project/timeMessages.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    QString at;
};

/// The name of the coordinate system of a WKT text; any other text unchanged.
QString projectionName(const QString &text)
{
    const int open = text.indexOf(QLatin1String("[\""));
    return open > 0 && !text.left(open).contains(QLatin1Char(' '))
               ? text.section(QLatin1Char('"'), 1, 1)
               : text;
}

QString timeText(const QJsonObject &object)
{
    if (object.value(QStringLiteral("static")).toBool())
        return QStringLiteral("always");
    const QJsonObject time = object.value(QStringLiteral("time")).toObject();
    return time.isEmpty()
               ? QStringLiteral("-")
               : QString(time.value(QStringLiteral("start")).toString() + QStringLiteral(" to ")
                         + time.value(QStringLiteral("end")).toString());
}

/// "-" for what was not counted.
QString uniqueText(const QJsonValue &count)
{
    return count.isNull() ? QStringLiteral("-") : QString::number(count.toInt());
}

QString missingText(const QJsonValue &missing)
{
    if (missing.isNull())
        return QStringLiteral("-");
    return missing.toBool() ? QStringLiteral("some") : QStringLiteral("none");
}

QStringList texts(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toVariant().toStringList();
}

void print(const QJsonObject &geography, const Console &console)
{
    const auto text = [&geography](const char *key) {
        return geography.value(QLatin1String(key)).toVariant().toString();
    };
    const auto number = [&geography](const char *key) {
        return geography.value(QLatin1String(key)).toVariant().toLongLong();
    };
    const QString shapes =
        geography.contains(QStringLiteral("rows"))
            ? counted(number("rows"), "row") + QStringLiteral(", ")
                  + counted(number("columns"), "column")
            : counted(number("objects"), "object") + QStringLiteral(", ") + text("shapes");
    QString projection = projectionName(text("projection"));
    if (projection.isEmpty() || projection == QLatin1String("Unknown"))
        projection = QStringLiteral("no coordinate system");
    else if (!text("distanceUnit").isEmpty())
        projection += QStringLiteral(" (%1)").arg(text("distanceUnit"));
    console.print(QStringLiteral("%1: %2; %3; %4")
                      .arg(text("name"), shapes, projection, timeText(geography)));
    if (geography.contains(QStringLiteral("parent")))
        console.print(QStringLiteral("cut from %1").arg(text("parent")));
    if (geography.contains(QStringLiteral("existing"))) {
        const QStringList keys = texts(geography, "existing");
        console.print(keys.isEmpty() ? QStringLiteral("no object exists")
                                     : QStringLiteral("%1 %2: %3")
                                           .arg(QString::number(keys.size()),
                                                keys.size() == 1 ? QStringLiteral("exists")
                                                                 : QStringLiteral("exist"),
                                                keys.join(QStringLiteral(", "))));
    }
    if (geography.contains(QStringLiteral("weightSets")))
        console.print(
            QStringLiteral("weight sets: %1").arg(someOf(texts(geography, "weightSets"))));
    if (geography.contains(QStringLiteral("variogramModels")))
        console.print(QStringLiteral("variogram models: %1")
                          .arg(someOf(texts(geography, "variogramModels"))));
    TextTable table({{QStringLiteral("dataset"), TextTable::Left},
                     {QStringLiteral("type"), TextTable::Left},
                     {QStringLiteral("times"), TextTable::Right},
                     {QStringLiteral("time"), TextTable::Left},
                     {QStringLiteral("unique"), TextTable::Right},
                     {QStringLiteral("missing"), TextTable::Left}});
    for (const QJsonValue &value : geography.value(QStringLiteral("datasets")).toArray()) {
        const QJsonObject dataset = value.toObject();
        const bool key = dataset.value(QStringLiteral("key")).toBool();
        table.add(
            {dataset.value(QStringLiteral("name")).toString()
                 + QString(key ? QStringLiteral(" (key)") : QString()),
             dataset.value(QStringLiteral("type")).toString()
                 + QString(dataset.contains(QStringLiteral("bits")) ? QStringLiteral(" %1").arg(
                               dataset.value(QStringLiteral("bits")).toInt())
                                                                    : QString())
                 + QString(dataset.value(QStringLiteral("realizations")).toInt() > 1
                               ? QStringLiteral(", %1 realizations")
                                     .arg(dataset.value(QStringLiteral("realizations")).toInt())
                               : QString()),
             QString::number(dataset.value(QStringLiteral("times")).toInt()), timeText(dataset),
             uniqueText(dataset.value(QStringLiteral("uniqueValues"))),
             missingText(dataset.value(QStringLiteral("missing")))});
    }
    table.print(console);
}

/// Geographies can have different forms of times: one of them must know the text.
void requireTime(const QString &at)
{
    QString why;
    for (const int geography : geographyIds()) {
        const TimeAxis axis = axisOf(geography);
        if (at.isEmpty() || axis.span(at))
            return;
        why = whyNoTime(axis, at);
    }
    if (!why.isEmpty())
        failUsage(why, "at");
}

void run(const Options &options, const Context &context)
{
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    requireTime(options.at);
    const QJsonArray geographies = describeProject(options.at);
    if (context.console.json) {
        context.console.print(
            QJsonObject{{QStringLiteral("project"), options.project},
                        {QStringLiteral("bytes"), QFileInfo(options.project).size()},
                        {QStringLiteral("geographies"), geographies},
                        {QStringLiteral("variogramModels"), describeModels()}});
        return;
    }
    for (const QJsonValue &geography : geographies)
        print(geography.toObject(), context.console);
    if (geographies.isEmpty())
        context.console.print(QStringLiteral("no geography"));
    if (const QStringList models = modelNames(-1); !models.isEmpty())
        context.console.print(
            QStringLiteral("variogram models of the project: %1").arg(someOf(models)));
}

} // namespace

void addInfo(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("info", "Show what a project holds");
    projectArgument(command, options->project);
    command.text("--at", options->at, "Also list the objects that exist at this time");
    command.footer("Example:\n  meridor info income.vorn --at 1929");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
