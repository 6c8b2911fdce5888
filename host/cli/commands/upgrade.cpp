// SPDX-License-Identifier: MIT
#include <QJsonArray>
#include <QJsonObject>
#include <memory>
#include "cli/commands/commands.h"
#include "core/project/catalog.h"
#include "core/project/safeFile.h"
#include "core/project/text.h"
#include "datainterface/VersionAPI.h"

namespace meridor {
namespace {

struct Options {
    QString old;
    QString project;
};

struct Report {
    QString version; ///< of the library that wrote the old file
    QStringList notes;
    int geographies = 0;
    int datasets = 0;
};

Report upgrade(const Options &options, const Context &context)
{
    Session session(context.session, context.user);
    session.reserve(options.project);
    session.load(options.old);
    Report report{dataInterfaceVersionStringLoading, session.controller().log(), 0, 0};
    for (const int geography : geographyIds()) {
        ++report.geographies;
        report.datasets += datasetIds(geography).size();
    }
    session.save(options.project);
    return report;
}

void run(const Options &options, const Context &context)
{
    refuseStandardOutput(options.project, "a project");
    requireWritable(options.project, context.overwrite);
    refuseInput(options.project, {options.old});
    const Report report = upgrade(options, context);
    if (context.console.json)
        context.console.print(
            QJsonObject{{QStringLiteral("project"), options.project},
                        {QStringLiteral("version"), report.version},
                        {QStringLiteral("geographies"), report.geographies},
                        {QStringLiteral("datasets"), report.datasets},
                        {QStringLiteral("notes"), QJsonArray::fromStringList(report.notes)}});
    else
        context.console.print(QStringLiteral("%1: %2, %3 from version %4, %5")
                                  .arg(options.project, counted(report.geographies, "geography"),
                                       counted(report.datasets, "dataset"), report.version,
                                       report.notes.isEmpty()
                                           ? QStringLiteral("nothing to note")
                                           : counted(report.notes.size(), "note")));
}

} // namespace

void addUpgrade(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command =
        app.verb("upgrade", "Convert a project of any version to the present form");
    command.text("OLD", options->old, "The project to read").required();
    command.text("NEW", options->project, "The project to write").required();
    overwriteOption(command, context);
    command.footer("Example:\n  meridor upgrade survey1998.vorn survey.vorn");
    command.chosen(
        [options, &context] { context.run = [options](const Context &c) { run(*options, c); }; });
}

} // namespace meridor
