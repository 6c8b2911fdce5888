// SPDX-License-Identifier: MIT
#include "cli/commands/commands.h"

namespace meridor {

CLI::Option *textOption(CLI::App &app, const char *name, QString &target, const char *help)
{
    return app
        .add_option_function<std::string>(
            name, [&target](const std::string &text) { target = QString::fromStdString(text); },
            help)
        ->type_name("TEXT");
}

CLI::Option *textsOption(CLI::App &app, const char *name, QStringList &target, const char *help)
{
    return app
        .add_option_function<std::vector<std::string>>(
            name,
            [&target](const std::vector<std::string> &texts) {
                for (const std::string &text : texts)
                    target.append(QString::fromStdString(text));
            },
            help)
        ->type_name("TEXT")
        ->allow_extra_args(false);
}

void projectArgument(CLI::App &command, QString &project)
{
    textOption(command, "PROJECT", project, "The project")->required();
}

void datasetArgument(CLI::App &command, QString &dataset)
{
    textOption(command, "DATASET", dataset, "The dataset, as DATASET or GEOGRAPHY/DATASET")
        ->required();
}

void overwriteOption(CLI::App &app, Context &context)
{
    app.add_flag("--overwrite", context.overwrite,
                 "Replace the output file when it is there already");
}

void valueOptions(CLI::App &command, ObjectChoice &choice)
{
    textsOption(command, "--values", choice.values, "Objects with one of these values")
        ->delimiter(',');
    textOption(command, "--min", choice.low, "Objects with at least this value");
    textOption(command, "--max", choice.high, "Objects with at most this value");
    textOption(command, "--at", choice.at, "The time (default: the dataset's last)");
}

} // namespace meridor
