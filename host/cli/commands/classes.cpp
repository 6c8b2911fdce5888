// SPDX-License-Identifier: MIT
#include "core/render/classes.h"
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    QString dataset;
    QString method = QStringLiteral("jenks");
    int count = 5;
    QString at;
};

/// The number of values of one time in each class.
QVector<int> countsIn(const QVector<double> &breaks, const ValuesAt &values)
{
    QVector<int> counts(qMax(0, breaks.size() - 1));
    for (int i = 0; i < values.numbers.size(); ++i)
        if (const int index = values.missing.contains(i) ? -1 : classOf(values.numbers[i], breaks);
            index >= 0)
            ++counts[index];
    return counts;
}

/// The number of values of all times in each class, from the frequency table.
QVector<int> countsOfAll(const QVector<double> &breaks, int dataset)
{
    QVector<int> counts(qMax(0, breaks.size() - 1));
    const auto frequencies = datasetOf(dataset)->GetDataFrequencies();
    for (auto it = frequencies.begin(); it != frequencies.end(); ++it)
        if (const int index = classOf(it.key().toDouble(), breaks); index >= 0)
            counts[index] += it.value();
    return counts;
}

void run(const Options &options, const Context &context)
{
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const int dataset = findDataset(options.dataset);
    if (!datasetOf(dataset)->IsNumeric())
        fail(QStringLiteral("%1 holds texts; classes are of numbers").arg(datasetName(dataset)));
    const auto method = classificationOf(options.method);
    QVector<double> breaks;
    QVector<int> counts;
    if (options.at.isEmpty()) {
        breaks = breaksOfAll(dataset, method, options.count);
        counts = countsOfAll(breaks, dataset);
    } else {
        const qint64 time = chooseTime(dataset, options.at);
        breaks = breaksAt(dataset, time, method, options.count);
        counts = countsIn(breaks, valuesAt(dataset, time));
    }

    QJsonArray limits;
    QJsonArray numbers;
    TextTable table({{QStringLiteral("class"), TextTable::Right},
                     {QStringLiteral("from"), TextTable::Right},
                     {QStringLiteral("to"), TextTable::Right},
                     {QStringLiteral("values"), TextTable::Right}});
    for (const double limit : breaks)
        limits.append(limit);
    for (int i = 0; i < counts.size(); ++i) {
        numbers.append(counts[i]);
        table.add({QString::number(i + 1), exactNumber(breaks[i]), exactNumber(breaks[i + 1]),
                   QString::number(counts[i])});
    }
    if (context.console.json)
        context.console.print(QJsonObject{{QStringLiteral("dataset"), datasetName(dataset)},
                                          {QStringLiteral("method"), options.method},
                                          {QStringLiteral("breaks"), limits},
                                          {QStringLiteral("counts"), numbers}});
    else
        table.print(context.console);
}

} // namespace

void addClasses(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("classes", "Classify the values of a dataset");
    projectArgument(command, options->project);
    datasetArgument(command, options->dataset);
    command.text("--method", options->method, "Method of classification")
        .shown("jenks")
        .oneOf({"equal", "quantile", "jenks"});
    command.number("--count", options->count, "Number of classes").shown().range(1, 256);
    command.text("--at", options->at, "Only the values of this time (default: of all times)");
    command.footer(
        "Example:\n  meridor classes income.vorn income --method jenks --count 5 --at 2009");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
