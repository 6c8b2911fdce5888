// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "core/analysis/statistics.h"
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/progress.h"
#include "datainterface/DataAPI.h"

namespace meridor {

namespace {

struct Options {
    QString project;
    QString dataset;
    QStringList at;
    int realization = 1;
};

struct Row {
    QString time;
    Statistics statistics;
};

QJsonObject toJson(const Row &row)
{
    const Statistics &s = row.statistics;
    const bool any = s.count > 0;
    const auto number = [any](double value) {
        return any ? jsonNumber(value) : QJsonValue(QJsonValue::Null);
    };
    return {
        {QStringLiteral("time"), row.time},         {QStringLiteral("count"), s.count},
        {QStringLiteral("mean"), number(s.mean)},   {QStringLiteral("stddev"), number(s.deviation)},
        {QStringLiteral("min"), number(s.minimum)}, {QStringLiteral("max"), number(s.maximum)}};
}

QStringList toCells(const Row &row)
{
    const Statistics &s = row.statistics;
    QStringList cells{row.time, QString::number(s.count)};
    for (const double value : {s.mean, s.deviation, s.minimum, s.maximum})
        cells.append(s.count > 0 ? shortNumber(value) : QStringLiteral("-"));
    return cells;
}

void printNumbers(int dataset, const QVector<Row> &rows, const Row &all, const Console &console)
{
    if (console.json) {
        QJsonArray times;
        for (const Row &row : rows)
            times.append(toJson(row));
        QJsonObject overall = toJson(all);
        overall.remove(QStringLiteral("time"));
        console.print(QJsonObject{{QStringLiteral("dataset"), datasetName(dataset)},
                                  {QStringLiteral("times"), times},
                                  {QStringLiteral("overall"), overall}});
        return;
    }
    TextTable table({{QStringLiteral("time"), TextTable::Left},
                     {QStringLiteral("count"), TextTable::Right},
                     {QStringLiteral("mean"), TextTable::Right},
                     {QStringLiteral("stddev"), TextTable::Right},
                     {QStringLiteral("min"), TextTable::Right},
                     {QStringLiteral("max"), TextTable::Right}});
    for (const Row &row : rows)
        table.add(toCells(row));
    table.add(toCells(all));
    table.print(console);
}

/// Prints the frequency of each value of a dataset of texts or colours.
void printTexts(int dataset, int realization, const Console &console)
{
    QJsonArray values;
    TextTable table(
        {{QStringLiteral("value"), TextTable::Left}, {QStringLiteral("count"), TextTable::Right}});
    const auto frequencies = frequenciesOf(dataset, realization);
    for (auto it = frequencies.begin(); it != frequencies.end(); ++it) {
        const QString text = it.key().type() == MDatum::String
                                 ? it.key().text()
                                 : QString::number(it.key().integerValue());
        values.append(
            QJsonObject{{QStringLiteral("value"), text}, {QStringLiteral("count"), it.value()}});
        table.add({text, QString::number(it.value())});
    }
    if (console.json)
        console.print(QJsonObject{{QStringLiteral("dataset"), datasetName(dataset)},
                                  {QStringLiteral("values"), values}});
    else
        table.print(console);
}

void run(const Options &options, const Context &context)
{
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const int dataset = findDataset(options.dataset);
    const int realization = realizationIndex(dataset, options.realization);
    if (!datasetOf(dataset)->IsNumeric()) {
        printTexts(dataset, realization, context.console);
        return;
    }
    const TimeAxis axis = axisOf(VORN_GetGeographyId(dataset));
    QVector<Row> rows;
    for (const QString &at : options.at)
        rows.append({at, statisticsAt(dataset, chooseTime(dataset, at, realization), realization)});
    if (options.at.isEmpty() && !datasetOf(dataset)->IsStatic()) {
        const Progress progress("Statistics", "Calculating statistics...");
        const QVector<Interval> times = dataTimes(dataset, realization);
        for (int i = 0; i < times.size(); ++i) {
            progress.report(static_cast<int>(100LL * i / times.size()));
            rows.append(
                {axis.show(times[i]), statisticsAt(dataset, instantOf(times[i]), realization)});
        }
    }
    const Row all{QStringLiteral("overall"), statisticsOfAll(dataset, realization)};
    printNumbers(dataset, rows, all, context.console);
}

} // namespace

void addStats(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("stats", "Statistics of a dataset: at each time and over all");
    projectArgument(command, options->project);
    datasetArgument(command, options->dataset);
    command.texts("--at", options->at, "A time, instead of all; repeatable");
    realizationOption(command, options->realization);
    command.footer("Example:\n  meridor stats income.vorn income --at 1929 --at 2009");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
