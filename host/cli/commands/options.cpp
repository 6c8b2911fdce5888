// SPDX-License-Identifier: MIT
#include "cli/commands/commands.h"

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

void valueOptions(const Command &command, ObjectChoice &choice)
{
    command.texts("--values", choice.values, "Objects with one of these values").partedBy(',');
    command.text("--min", choice.low, "Objects with at least this value");
    command.text("--max", choice.high, "Objects with at most this value");
    command.text("--at", choice.at, "The time (default: the dataset's last)");
}

} // namespace meridor
