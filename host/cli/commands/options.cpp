// SPDX-License-Identifier: MIT
#include "cli/commands/commands.h"
#include "core/project/failure.h"

namespace meridor {

void projectArgument(const Command &command, QString &project)
{
    command.text("PROJECT", project, "The project").required();
}

void datasetArgument(const Command &command, QString &dataset)
{
    command.text("DATASET", dataset, "The dataset, as DATASET or GEOGRAPHY/DATASET").required();
}

void realizationOption(const Command &command, int &number)
{
    number = 1;
    command.number("--realization", number, "The realization of the dataset, from 1").shown();
}

void overwriteOption(const Command &app, Context &context)
{
    app.flag("--overwrite", context.overwrite, "Replace the output file if it exists");
}

QString outputName(const QString &given)
{
    return given == QLatin1String("-") ? QStringLiteral("/dev/stdout") : given;
}

void refuseStandardOutput(const QString &given, const char *what)
{
    if (given == QLatin1String("-"))
        failUsage(QStringLiteral("%1 is not written to standard output; a file of this name is ./-")
                      .arg(QLatin1String(what)));
}

void valueOptions(const Command &command, ObjectChoice &choice)
{
    command.list("--values", choice.values,
                 "Objects with one of these values, separated by commas; one with a comma in "
                 "quotation marks");
    command.text("--min", choice.low, "Objects with at least this value");
    command.text("--max", choice.high, "Objects with at most this value");
    command.text("--at", choice.at, "The time (default: the dataset's last)");
}

} // namespace meridor
