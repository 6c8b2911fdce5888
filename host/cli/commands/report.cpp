// SPDX-License-Identifier: MIT
#include <QFileInfo>
#include <QJsonObject>
#include <limits>
#include <memory>
#include "cli/commands/commands.h"
#include "cli/commands/reportCommands.h"
#include "core/project/outputFile.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"
#include "core/report/gather.h"
#include "core/report/page.h"

namespace meridor {
namespace {

struct Options {
    ReportPlan plan;
    QString output;
    QString datasets;
    QString times;
    QString sideMaps;
    QString beside;
    QStringList sameClasses;
};

void run(Options options, const Context &context)
{
    options.output = outputName(options.output);
    requireWritable(options.output, context.overwrite);
    refuseInput(options.output, {options.plan.project});
    options.plan.datasets = listItems(options.datasets);
    options.plan.times = listItems(options.times);
    options.plan.sideMaps = listItems(options.sideMaps);
    options.plan.beside = listItems(options.beside);
    for (const QString &group : qAsConst(options.sameClasses))
        options.plan.sameClasses.append(listItems(group));
    Session session(context.session, context.user);
    session.loadPacked(options.plan.project);
    ReportProject report = gatherReport(options.plan);
    addCommandLines(report, options.plan.project);
    const QByteArray page = reportPage(report);
    writeOutput(options.output, [&](QIODevice &file) { writeWhole(file, page, options.output); });
    const QString summary =
        QStringLiteral("%1: %2, %3 KB")
            .arg(options.output, counted(report.geographies.size(), "geography"),
                 QString::number((page.size() + 500) / 1000));
    if (isStream(options.output))
        context.console.note(summary);
    else if (context.console.json)
        context.console.print(QJsonObject{
            {QStringLiteral("file"), options.output},
            {QStringLiteral("bytes"), page.size()},
            {QStringLiteral("geographies"), static_cast<int>(report.geographies.size())}});
    else
        context.console.print(summary);
}

} // namespace

void addReport(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("report", "Write a project as one page: maps with a time slider, charts, tables");
    projectArgument(command, options->plan.project);
    command.text("PAGE", options->output, "The HTML file to write; - for standard output")
        .required();
    command.text("--title", options->plan.title, "Title (default: the project's name)");
    command.text("--datasets", options->datasets,
                 "Only these datasets, separated by commas; the first one is shown first "
                 "(default: all)");
    realizationOption(command, options->plan.realization);
    command.text("--times", options->times,
                 "Only these times and spans, separated by commas (default: all)");
    command.text("--maps", options->sideMaps,
                 "Times of the small maps side by side of grids and of polygons that change, "
                 "separated by commas (default: four of all times for polygons)");
    command.text("--beside", options->beside,
                 "Datasets whose maps stand side by side, separated by commas");
    command.texts("--same-classes", options->sameClasses,
                  "Datasets with the classes of the first one, separated by commas; repeatable");
    command
        .number("--simplify", options->plan.simplify,
                "Tolerance of simplified borders, in map units; 0 keeps every vertex "
                "(default: a 1500th of the extent)")
        .notNegative();
    command
        .number("--permutations", options->plan.permutations, "Number of permutations of Moran's I")
        .shown()
        .range(0, 1000000);
    command.number("--seed", options->plan.seed, "Seed of the permutations")
        .shown()
        .range(0, std::numeric_limits<int>::max());
    overwriteOption(command, context);
    command.footer("Example:\n  meridor report income.vorn income.html --datasets income");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
