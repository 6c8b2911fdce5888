// SPDX-License-Identifier: MIT
#include "cli/commandLine.h"
#include <CLI/CLI.hpp>
#include <exception>
#include "cli/commands/commands.h"
#include "cli/interrupt.h"
#include "cli/terminalProgress.h"
#include "core/project/failure.h"
#include "datainterface/VersionAPI.h"
#include "datainterface/vorn_error.h"

namespace meridor {
namespace {

enum ExitCode : int { Done = 0, Failed = 1, WrongUsage = 2, Cancelled = 130 };

void addCommonOptions(const Command &app, Context &context)
{
    app.flag("--json", context.console.json, "Results as JSON");
    app.flag("-q,--quiet", context.console.quiet, "No notes and no progress bar");
    app.text("--scratch", context.session.scratch,
             "Parent directory of scratch files (default: the user's cache)");
    app.number("--cache", context.session.cacheMegabytes, "Megabytes of values kept in memory")
        .shown()
        .range(1, 2000);
    app.flag("--smallest", context.session.smallest,
             "Compress projects as far as possible, which is much slower");
}

ExitCode codeOf(FailureKind kind)
{
    switch (kind) {
    case FailureKind::Misused:
        return WrongUsage;
    case FailureKind::Cancelled:
        return Cancelled;
    default:
        return Failed;
    }
}

/// Runs the verb. All failures are converted to messages and exit codes here.
int runGuarded(const Context &context)
{
    try {
        context.run(context);
        return Done;
    } catch (const Failure &failure) {
        const QString hint = *failure.setting() == '\0'
                                 ? QString()
                                 : QStringLiteral("; see --") + QLatin1String(failure.setting());
        context.console.error(failure.text() + hint);
        return codeOf(failure.kind());
    } catch (const vorn_error &error) {
        context.console.error(QStringLiteral("internal error: ") + QString::fromUtf8(error.what()));
        context.console.note(QStringLiteral("call stack:\n") + QString::fromStdString(error.stack));
    } catch (const std::bad_alloc &) {
        context.console.error(QStringLiteral("out of memory"));
    } catch (const std::exception &error) {
        context.console.error(QStringLiteral("internal error: ") + QString::fromUtf8(error.what()));
    }
    return Failed;
}

QString version()
{
    return QStringLiteral("%1 %2.%3.%4")
        .arg(applicationName)
        .arg(productVersionNumber / 100000)
        .arg(productVersionNumber / 1000 % 100, 2, 10, QLatin1Char('0'))
        .arg(productVersionNumber % 1000, 3, 10, QLatin1Char('0'));
}

} // namespace

int runCommandLine(int argc, char **argv)
{
    Context context;
    CLI::App app("Maps with values over time: import, analyse, draw, export", "meridor");
    app.require_subcommand(1);
    app.fallthrough();
    app.set_version_flag("--version", version().toStdString());
    app.footer("Example:\n  meridor demo results\n\nExit codes: 0 done, 1 failed, 2 wrong usage, "
               "130 cancelled.\n"
               "meridor VERB --help shows the options of a verb.");
    const Command program(app);
    addCommonOptions(program, context);
    for (const auto add :
         {addImport,  addInfo,    addStats,     addSeries,  addClasses, addMap,    addExport,
          addQuery,   addZonal,   addRename,    addRemove,  addConvert, addSubset, addSelect,
          addUpgrade, addWeights, addNeighbors, addNearest, addMoran,   addReport, addDemo})
        add(program, context);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return app.exit(error) == 0 ? Done : WrongUsage;
    }
    watchInterrupts();
    TerminalProgress progress(!context.console.quiet);
    context.console.clearLine = [&progress] { progress.wipe(); };
    context.user.notes = &context.console;
    context.user.cancel = [] { return interrupted(); };
    context.user.progress = [&progress](int percent, const QString &text) {
        progress.show(percent, text);
    };
    return runGuarded(context);
}

} // namespace meridor
