// SPDX-License-Identifier: MIT
/// The verbs. Each adds its subcommand and, when it was the one chosen, leaves its work in the
/// context.
#pragma once
#include <CLI/CLI.hpp>
#include <QString>
#include <QStringList>
#include <functional>
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

void addImport(CLI::App &app, Context &context);
void addInfo(CLI::App &app, Context &context);
void addStats(CLI::App &app, Context &context);
void addSeries(CLI::App &app, Context &context);
void addClasses(CLI::App &app, Context &context);
void addMap(CLI::App &app, Context &context);
void addExport(CLI::App &app, Context &context);
void addRename(CLI::App &app, Context &context);
void addRemove(CLI::App &app, Context &context);
void addConvert(CLI::App &app, Context &context);
void addSubset(CLI::App &app, Context &context);
void addSelect(CLI::App &app, Context &context);
void addUpgrade(CLI::App &app, Context &context);
void addWeights(CLI::App &app, Context &context);
void addNeighbors(CLI::App &app, Context &context);
void addNearest(CLI::App &app, Context &context);
void addMoran(CLI::App &app, Context &context);
void addQuery(CLI::App &app, Context &context);
void addZonal(CLI::App &app, Context &context);
void addDemo(CLI::App &app, Context &context);

// Options whose values are texts.
CLI::Option *textOption(CLI::App &app, const char *name, QString &target, const char *help);
/// May be given several times, one text each.
CLI::Option *textsOption(CLI::App &app, const char *name, QStringList &target, const char *help);
/// The arguments PROJECT and DATASET.
void projectArgument(CLI::App &command, QString &project);
void datasetArgument(CLI::App &command, QString &dataset);
/// --values, --min, --max and --at.
void valueOptions(CLI::App &command, ObjectChoice &choice);
/// --overwrite, for verbs that write a file.
void overwriteOption(CLI::App &app, Context &context);

} // namespace meridor
