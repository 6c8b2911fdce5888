// SPDX-License-Identifier: MIT
#include "core/render/classes.h"
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "cli/commands/pictureOptions.h"
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/classification.h"
#include "datainterface/DataAPI.h"

namespace meridor {
namespace {

struct Options {
    QString project;
    QString dataset;
    QString at;
    int realization = 1;
    ClassOptions classes;
};

/// The number of values of one time in each class.
QVector<qint64> countsIn(const Classification &classes, const ValuesAt &values)
{
    QVector<qint64> counts(classes.entries().size());
    const int size = values.numeric ? values.numbers.size() : values.texts.size();
    for (int i = 0; i < size; ++i)
        if (const int index = classes.of(values, i); index >= 0)
            ++counts[index];
    return counts;
}

/// The number of values of all times in each class.
QVector<qint64> countsOfAll(const Classification &classes, int dataset, int realization)
{
    QVector<qint64> counts(classes.entries().size());
    const bool numeric = datasetOf(dataset)->IsNumeric();
    const auto frequencies = frequenciesOf(dataset, realization);
    for (auto it = frequencies.begin(); it != frequencies.end(); ++it) {
        const int index = numeric ? classes.of(it.key().toDouble()) : classes.of(it.key().text());
        if (index >= 0)
            counts[index] += it.value();
    }
    return counts;
}

void print(const Classification &classes, const QVector<qint64> &counts, const Context &context)
{
    const bool limited = !classes.limits().isEmpty();
    QVector<QPair<QString, TextTable::Align>> columns{{QStringLiteral("class"), TextTable::Right}};
    for (const char *limit : {"from", "to"})
        if (limited)
            columns.append({QLatin1String(limit), TextTable::Right});
    if (!limited)
        columns.append({QStringLiteral("value"), TextTable::Left});
    columns.append({QStringLiteral("values"), TextTable::Right});
    TextTable table(columns);
    for (int i = 0; i < counts.size(); ++i) {
        QStringList row{QString::number(i + 1)};
        if (limited)
            row << exactNumber(classes.limits()[i]) << exactNumber(classes.limits()[i + 1]);
        else
            row << classes.entries()[i].text;
        table.add(row << QString::number(counts[i]));
    }
    table.print(context.console);
}

QJsonObject toJson(const QString &dataset, const QString &method, const Classification &classes,
                   const QVector<qint64> &counts)
{
    QJsonArray limits;
    for (const double limit : classes.limits())
        limits.append(limit);
    QJsonArray values;
    QJsonArray colors;
    QJsonArray numbers;
    for (int i = 0; i < counts.size(); ++i) {
        if (classes.limits().isEmpty())
            values.append(classes.entries()[i].text);
        colors.append(classes.entries()[i].color.name());
        numbers.append(counts[i]);
    }
    QJsonObject json{{QStringLiteral("dataset"), dataset},
                     {QStringLiteral("method"), method},
                     {QStringLiteral("counts"), numbers},
                     {QStringLiteral("colors"), colors}};
    if (classes.limits().isEmpty())
        json.insert(QStringLiteral("values"), values);
    else
        json.insert(QStringLiteral("breaks"), limits);
    return json;
}

void run(const Options &options, const Context &context)
{
    const ClassRule rule = options.classes.rule();
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const int dataset = findDataset(options.dataset);
    const int realization = realizationIndex(dataset, options.realization);
    QVector<qint64> times;
    if (!options.at.isEmpty())
        times.append(chooseTime(dataset, options.at, realization));
    const Classification classes(dataset, times, rule, realization);
    if (!times.isEmpty() && classes.entries().isEmpty())
        fail(QStringLiteral("%1 holds no values at %2").arg(datasetName(dataset), options.at));
    const QVector<qint64> counts =
        times.isEmpty() ? countsOfAll(classes, dataset, realization)
                        : countsIn(classes, existingValuesAt(dataset, times[0], realization));
    const QString method = !rule.limits.isEmpty()       ? QStringLiteral("breaks")
                           : classes.limits().isEmpty() ? QStringLiteral("unique")
                           : rule.method.isEmpty()      ? QStringLiteral("jenks")
                                                        : rule.method;
    if (context.console.json)
        context.console.print(toJson(datasetName(dataset), method, classes, counts));
    else
        print(classes, counts, context);
}

} // namespace

void addClasses(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("classes", "Classify the values of a dataset");
    projectArgument(command, options->project);
    datasetArgument(command, options->dataset);
    options->classes.addTo(command, 256);
    command.text("--at", options->at, "Only the values of this time (default: of all times)");
    realizationOption(command, options->realization);
    command.footer(
        "Example:\n  meridor classes income.vorn income --method jenks --count 5 --at 2009");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
