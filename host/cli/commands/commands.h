// SPDX-License-Identifier: MIT
/// The verbs. Each function adds a subcommand, which sets Context::run to its work if it was given.
#pragma once
#include <QMap>
#include <QString>
#include <QStringList>
#include <functional>
#include "cli/commands/command.h"
#include "cli/console.h"
#include "core/analysis/selection.h"
#include "core/project/session.h"

namespace meridor {

/// State that all verbs share. `run` is the work of the verb that was given.
struct Context {
    Console console;
    SessionOptions session;
    SessionUser user;
    bool overwrite = false;
    std::function<void(const Context &)> run;
};

void addImport(const Command &app, Context &context);
void addInfo(const Command &app, Context &context);
void addStats(const Command &app, Context &context);
void addSeries(const Command &app, Context &context);
void addClasses(const Command &app, Context &context);
void addMap(const Command &app, Context &context);
void addPlot(const Command &app, Context &context);
void addExport(const Command &app, Context &context);
void addRename(const Command &app, Context &context);
void addDuplicate(const Command &app, Context &context);
void addRemove(const Command &app, Context &context);
void addDescribe(const Command &app, Context &context);
void addConvert(const Command &app, Context &context);
void addSubset(const Command &app, Context &context);
void addSelect(const Command &app, Context &context);
void addUpgrade(const Command &app, Context &context);
void addWeights(const Command &app, Context &context);
void addNeighbors(const Command &app, Context &context);
void addNearest(const Command &app, Context &context);
void addMoran(const Command &app, Context &context);
void addQuery(const Command &app, Context &context);
void addZonal(const Command &app, Context &context);
void addVariogram(const Command &app, Context &context);
void addKrige(const Command &app, Context &context);
void addSimulate(const Command &app, Context &context);
void addRealizations(const Command &app, Context &context);
void addReport(const Command &app, Context &context);
void addDemo(const Command &app, Context &context);
/// Verbs for the build and for completion. @param pages       the manual pages by file name
///                                         @param completion  the script of bash
void addHidden(const Command &app, Context &context,
               const std::function<QMap<QString, QString>()> &pages,
               const std::function<QString()> &completion);

/// Adds the arguments PROJECT and DATASET.
void projectArgument(const Command &command, QString &project);
void datasetArgument(const Command &command, QString &dataset);
/// Adds --values, --min, --max and --at.
void valueOptions(const Command &command, ObjectChoice &choice);
/// Adds --realization, counted from 1; the first is the default. See realizationIndex().
void realizationOption(const Command &command, int &number);
/// Adds --overwrite, for verbs that write a file.
void overwriteOption(const Command &app, Context &context);
/// The name of standard output if the output that was given is "-", else the output itself.
QString outputName(const QString &given);
/// Wrong usage if the output is "-", for things that a stream cannot hold.
/// @param what  such as "a project".
void refuseStandardOutput(const QString &given, const char *what);

} // namespace meridor
