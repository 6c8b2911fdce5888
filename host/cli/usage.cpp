// SPDX-License-Identifier: MIT
#include "cli/usage.h"
#include <CLI/CLI.hpp>
#include <QStringList>
#include "core/project/text.h"

namespace meridor {
namespace {

class HelpFormatter final : public CLI::Formatter {
public:
    std::string make_subcommands(const CLI::App *app, CLI::AppFormatMode mode) const override
    {
        std::string text = CLI::Formatter::make_subcommands(app, mode);
        const CLI::App *program = app;
        while (program->get_parent())
            program = program->get_parent();
        if (program == app)
            return text;
        // Help and version cannot be set in a configuration, unlike all other options.
        return text
               + make_group("Common options", false,
                            program->get_options([](const CLI::Option *option) {
                                return option->nonpositional() && option->get_configurable();
                            }));
    }
};

QStringList verbsOf(const CLI::App &app)
{
    QStringList names;
    for (const CLI::App *verb : app.get_subcommands([](const CLI::App *) { return true; }))
        if (!verb->get_group().empty()) // hidden verbs have no group
            names.append(QString::fromStdString(verb->get_name()));
    return names;
}

/// The words that call a verb, such as "meridor weights create".
QString wordsOf(const CLI::App &app)
{
    const QString name = QString::fromStdString(app.get_name());
    return app.get_parent() ? wordsOf(*app.get_parent()) + QLatin1Char(' ') + name : name;
}

const CLI::App *verbNamed(const CLI::App &app, const std::string &name)
{
    const auto found =
        app.get_subcommands([&name](const CLI::App *verb) { return verb->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

/// The option of this name of the verb or of one that it belongs to.
const CLI::Option *optionNamed(const CLI::App *app, const std::string &name)
{
    for (; app; app = app->get_parent())
        if (const CLI::Option *option = app->get_option_no_throw(name))
            return option;
    return nullptr;
}

bool takesValue(const CLI::App &app, const std::string &word)
{
    if (word.find('=') != std::string::npos)
        return false;
    const CLI::Option *option = optionNamed(&app, word);
    return option && option->get_expected_min() > 0;
}

QString didYouMean(const QString &nearest)
{
    return nearest.isEmpty() ? QString() : QStringLiteral("; did you mean %1?").arg(nearest);
}

QStringList optionNames(const CLI::App *app)
{
    QStringList names;
    for (; app; app = app->get_parent())
        for (const CLI::Option *option : app->get_options())
            for (const std::string &name : option->get_lnames())
                names.append(QStringLiteral("--") + QString::fromStdString(name));
    return names;
}

/// The verb that was recognised last.
const CLI::App &chosenVerb(const CLI::App &program)
{
    const auto parsed = program.get_subcommands();
    return parsed.empty() ? program : chosenVerb(*parsed.back());
}

/// A message about the first word that no option or argument took; empty if there is none.
QString unexpected(const CLI::App &program, const CLI::App &verb)
{
    for (const std::string &word : program.remaining(true)) {
        if (word == "--")
            continue;
        const QString text = QString::fromStdString(word);
        const bool isNumber = word.size() > 1 && word[0] == '-' && std::isdigit(word[1]) != 0;
        if (isNumber)
            return QStringLiteral("%1: a number below zero stands behind --").arg(text);
        if (text.startsWith(QLatin1Char('-')))
            return QStringLiteral("no option %1%2")
                .arg(text, didYouMean(nearestOf(text.section(QLatin1Char('='), 0, 0),
                                                optionNames(&verb))));
        return QStringLiteral("%1: one argument too many").arg(text);
    }
    return QString();
}

} // namespace

std::shared_ptr<CLI::FormatterBase> helpFormatter()
{
    return std::make_shared<HelpFormatter>();
}

QString unknownVerb(const CLI::App &program, int argc, const char *const *argv)
{
    const CLI::App *app = &program;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const bool takesVerbs =
            !app->get_subcommands([](const CLI::App *) { return true; }).empty();
        if (!takesVerbs || word == "--")
            break;
        if (word.size() > 1 && word[0] == '-') {
            i += takesValue(*app, word) ? 1 : 0;
            continue;
        }
        const CLI::App *verb = verbNamed(*app, word);
        if (!verb) {
            const QString text =
                word.empty() ? QStringLiteral("\"\"") : QString::fromStdString(word);
            return QStringLiteral("no verb %1%2\n%3 --help lists the verbs.")
                .arg(text, didYouMean(nearestOf(text, verbsOf(*app))), wordsOf(*app));
        }
        app = verb;
    }
    return QString();
}

QString usageError(const CLI::App &program, const CLI::ParseError &error)
{
    const CLI::App &verb = chosenVerb(program);
    QString text = unexpected(program, verb);
    if (text.isEmpty()) {
        text = QString::fromUtf8(error.what());
        if (text.startsWith(QLatin1String("A subcommand is")))
            text = QStringLiteral("a verb is required");
    }
    return QStringLiteral("%1\n%2 --help shows the usage.").arg(text, wordsOf(verb));
}

} // namespace meridor
