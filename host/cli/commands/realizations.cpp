// SPDX-License-Identifier: MIT
#include "core/geostatistics/realizations.h"
#include <QJsonArray>
#include <QJsonObject>
#include <cmath>
#include <limits>
#include <memory>
#include "cli/commands/projectEdit.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

struct Options {
    EditTarget target;
    QString dataset;
    QStringList at;
    RealizationQuestions questions;
    QString reference;
    QString into;
};

/// Number of cells or objects with an answer, and the mean and range of the answers.
QJsonObject summaryOf(const RealizationAnswer &answer, const QString &when)
{
    double sum = 0;
    double least = std::numeric_limits<double>::infinity();
    double most = -least;
    int count = 0;
    for (const double value : answer.values) {
        if (std::isnan(value))
            continue;
        ++count;
        sum += value;
        least = std::min(least, value);
        most = std::max(most, value);
    }
    return {{QStringLiteral("time"), when},
            {QStringLiteral("question"), answer.name},
            {QStringLiteral("places"), count},
            {QStringLiteral("mean"), jsonNumber(sum / count)},
            {QStringLiteral("min"), jsonNumber(least)},
            {QStringLiteral("max"), jsonNumber(most)}};
}

void print(const QJsonArray &rows, const Options &options, int realizations, const Console &console)
{
    if (console.json) {
        console.print(QJsonObject{{QStringLiteral("dataset"), options.dataset},
                                  {QStringLiteral("realizations"), realizations},
                                  {QStringLiteral("answers"), rows}});
        return;
    }
    TextTable table({{QStringLiteral("time"), TextTable::Left},
                     {QStringLiteral("question"), TextTable::Left},
                     {QStringLiteral("places"), TextTable::Right},
                     {QStringLiteral("mean"), TextTable::Right},
                     {QStringLiteral("min"), TextTable::Right},
                     {QStringLiteral("max"), TextTable::Right}});
    for (const QJsonValue &value : rows) {
        const QJsonObject row = value.toObject();
        QStringList cells{row.value(QStringLiteral("time")).toString(),
                          row.value(QStringLiteral("question")).toString(),
                          QString::number(row.value(QStringLiteral("places")).toInt())};
        for (const char *name : {"mean", "min", "max"})
            cells.append(shortNumber(row.value(QLatin1String(name)).toDouble(kNone), 6));
        table.add(cells);
    }
    table.print(console);
}

void run(const Options &options, const Context &context)
{
    editOrLook(!options.into.isEmpty(), "--into", options.target, context, [&]() -> Tell {
        const int dataset = findDataset(options.dataset);
        RealizationQuestions questions = options.questions;
        if (!options.reference.isEmpty())
            questions.reference = findDataset(options.reference);
        const QVector<Interval> times = dataTimesAt(dataset, options.at);
        const TimeAxis axis = axisOf(VORN_GetGeographyId(dataset));
        const bool always = datasetOf(dataset)->IsStatic();
        QVector<QVector<RealizationAnswer>> answers;
        QJsonArray rows;
        {
            const Progress progress("Realizations", "Reading...");
            for (const Interval &when : times) {
                const int done = answers.size();
                answers.append(askRealizations(
                    dataset, when, questions,
                    progress.part(100 * done / times.size(), 100 * (done + 1) / times.size())));
                for (const RealizationAnswer &answer : answers.last())
                    rows.append(
                        summaryOf(answer, always ? QStringLiteral("always") : axis.show(when)));
            }
        }
        if (!options.into.isEmpty())
            storeAnswers(dataset, times, answers, options.into);
        const int count = VORN_GetDatasetProperties(dataset).realizationCount;
        return [=, &options, &context] { print(rows, options, count, context.console); };
    });
}

} // namespace

void addRealizations(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb(
        "realizations", "Mean, deviation, quantiles and probabilities over all realizations");
    projectArgument(command, options->target.project);
    datasetArgument(command, options->dataset);
    command.flag("--mean", options->questions.mean, "The mean at each cell or object");
    command.flag("--deviation", options->questions.deviation, "The standard deviation");
    command.numbers("--quantile", options->questions.quantiles, "Quantiles, as shares from 0 to 1")
        .partedBy(',');
    command
        .numbers("--above", options->questions.above, "Limits: the probability of a larger value")
        .partedBy(',');
    command.text("--reference", options->reference,
                 "The values whose normal scores the realizations are");
    command.texts("--at", options->at, "A time, instead of all; repeatable");
    command.text("--into", options->into, "Store the answers as datasets of this name");
    targetOptions(command, options->target, context);
    command.footer("Example:\n"
                   "  meridor realizations wells.vorn simulated --mean --deviation --above 41 "
                   "--into level");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
