// SPDX-License-Identifier: MIT
/// The verbs. Each adds its subcommand and, when it was the one chosen, leaves its work in the
/// context.
#pragma once
#include <QString>
#include <QStringList>
#include <functional>
#include "cli/commands/command.h"
#include "cli/console.h"
#include "core/analysis/selection.h"
#include "core/project/session.h"

namespace meridor {

/// What all verbs share. `run` is the chosen verb's work.
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
void addExport(const Command &app, Context &context);
void addRename(const Command &app, Context &context);
void addRemove(const Command &app, Context &context);
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
void addReport(const Command &app, Context &context);
void addDemo(const Command &app, Context &context);

/// The arguments PROJECT and DATASET.
void projectArgument(const Command &command, QString &project);
void datasetArgument(const Command &command, QString &dataset);
/// --values, --min, --max and --at.
void valueOptions(const Command &command, ObjectChoice &choice);
/// --overwrite, for verbs that write a file.
void overwriteOption(const Command &app, Context &context);

} // namespace meridor
