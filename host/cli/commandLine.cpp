// SPDX-License-Identifier: MIT
#include "cli/commandLine.h"
#include <CLI/CLI.hpp>
#include <exception>
#include "cli/commands/commands.h"
#include "cli/definitions.h"
#include "cli/interrupt.h"
#include "cli/terminalProgress.h"
#include "cli/usage.h"
#include "core/geostatistics/variogramModels.h"
#include "core/project/failure.h"
#include "datainterface/ProjectAPI.h"
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

/// Says so if a value could not be read from the project, since results then may lack it.
bool saysUnreadable(const Console &console)
{
    const QString file = VORN_GetUnreadableProjectFile();
    if (!file.isEmpty())
        console.error(QStringLiteral("%1: values could not be read: the file is damaged, or it was "
                                     "changed meanwhile")
                          .arg(file));
    return !file.isEmpty();
}

/// Runs `work`. All failures are converted to messages and exit codes here.
/// @param scratchTrouble  why the scratch directory failed, if it did: then the cause of whatever
///                        the failure says.
template <class Work>
int runGuarded(const Console &console, const QString &scratchTrouble, Work work)
{
    QString text;
    QString stack;
    bool isInternal = true; // the library does not know that the scratch directory is the cause
    const char *setting = "";
    FailureKind kind = FailureKind::Refused;
    try {
        work();
        return saysUnreadable(console) ? Failed : Done;
    } catch (const Failure &failure) {
        isInternal = false;
        text = failure.text();
        setting = failure.setting();
        kind = failure.kind();
    } catch (const vorn_error &error) {
        if (saysUnreadable(console))
            return Failed;
        text = QStringLiteral("internal error: ") + QString::fromUtf8(error.what());
        stack = QString::fromStdString(error.stack);
    } catch (const std::bad_alloc &) {
        text = QStringLiteral("out of memory");
    } catch (const std::exception &error) {
        text = QStringLiteral("internal error: ") + QString::fromUtf8(error.what());
    }
    if (kind == FailureKind::Refused && !scratchTrouble.isEmpty()
        && qstrcmp(setting, "scratch") != 0) {
        text = isInternal ? scratchTrouble : text + QStringLiteral("; ") + scratchTrouble;
        setting = "scratch";
        stack.clear();
    }
    if (*setting != '\0')
        text += QStringLiteral("; see --") + QLatin1String(setting);
    console.error(text);
    if (!stack.isEmpty())
        console.note(QStringLiteral("call stack:\n") + stack);
    return codeOf(kind);
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
    app.formatter(helpFormatter());
    app.set_version_flag("--version", version().toStdString());
    app.footer("Example:\n  meridor demo results\n\nExit codes: 0 done, 1 failed, 2 wrong usage, "
               "130 cancelled.\n"
               "meridor VERB --help shows the options of a verb.");
    const Command program(app);
    addCommonOptions(program, context);
    for (const auto add :
         {addImport,   addInfo,         addStats,   addSeries, addClasses,   addMap,
          addPlot,     addExport,       addQuery,   addZonal,  addRename,    addDuplicate,
          addRemove,   addDescribe,     addConvert, addSubset, addSelect,    addUpgrade,
          addWeights,  addNeighbors,    addNearest, addMoran,  addVariogram, addKrige,
          addSimulate, addRealizations, addReport,  addDemo})
        add(program, context);
    addHidden(
        program, context, [&app] { return manualPages(app, version()); },
        [&app] { return bashCompletion(app); });
    Console &console = context.console;
    QString shown; // help or version, in place of the work of a verb
    const QString wrongVerb = unknownVerb(app, argc, argv);
    if (!wrongVerb.isEmpty()) {
        console.error(wrongVerb);
        return WrongUsage;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp &) {
        shown = QString::fromStdString(app.help()).trimmed();
    } catch (const CLI::CallForVersion &) {
        shown = version();
    } catch (const CLI::ParseError &error) {
        console.error(usageError(app, error));
        return WrongUsage;
    }
    watchInterrupts();
    if (!shown.isEmpty())
        return runGuarded(console, QString(), [&] { console.print(shown); });
    TerminalProgress progress(!console.quiet);
    QString scratchTrouble;
    console.clearLine = [&progress] { progress.wipe(); };
    context.user.notes = &console;
    context.user.cancel = [] { return interrupted(); };
    context.user.progress = [&progress](int percent, const QString &text) {
        progress.show(percent, text);
    };
    context.user.scratchFailed = [&scratchTrouble](const QString &reason) {
        scratchTrouble = reason;
    };
    context.user.variogramFitter = &fitRequestedModel;
    return runGuarded(console, scratchTrouble, [&] { context.run(context); });
}

} // namespace meridor
