// SPDX-License-Identifier: MIT
#include "cli/definitions.h"
#include <CLI/CLI.hpp>
#include <QStringList>
#include <algorithm>

namespace meridor {
namespace {

using Options = std::vector<const CLI::Option *>;

QString text(const std::string &bytes)
{
    return QString::fromStdString(bytes);
}

/// The words that call a verb, such as "meridor weights create".
QStringList wordsOf(const CLI::App &verb)
{
    QStringList words = verb.get_parent() ? wordsOf(*verb.get_parent()) : QStringList();
    return words << text(verb.get_name());
}

std::vector<const CLI::App *> verbsOf(const CLI::App &app)
{
    // Hidden verbs have no group.
    return app.get_subcommands([](const CLI::App *verb) { return !verb->get_group().empty(); });
}

/// Calls `visit` for the verb and all below it.
template <class Visit> void visitVerbs(const CLI::App &verb, const Visit &visit)
{
    visit(verb);
    for (const CLI::App *below : verbsOf(verb))
        visitVerbs(*below, visit);
}

Options optionsOf(const CLI::App &verb)
{
    return verb.get_options([](const CLI::Option *option) { return option->nonpositional(); });
}

/// The options of the program that may stand behind every verb.
Options commonOptions(const CLI::App &verb)
{
    const CLI::App *program = &verb;
    while (program->get_parent())
        program = program->get_parent();
    return program->get_options([](const CLI::Option *option) {
        return option->nonpositional() && option->get_configurable();
    });
}

Options argumentsOf(const CLI::App &verb)
{
    return verb.get_options([](const CLI::Option *option) { return option->get_positional(); });
}

QStringList namesOf(const CLI::Option &option)
{
    QStringList names;
    for (const std::string &name : option.get_snames())
        names.append(QLatin1Char('-') + text(name));
    for (const std::string &name : option.get_lnames())
        names.append(QStringLiteral("--") + text(name));
    return names;
}

bool takesValue(const CLI::Option &option)
{
    return option.get_expected_min() > 0;
}

/// The words that an option accepts; none if it accepts other values as well.
QStringList choicesOf(const CLI::Option &option)
{
    const QString type = text(option.get_type_name());
    const int open = type.indexOf(QLatin1Char('{'));
    const int close = type.indexOf(QLatin1Char('}'));
    return open < 0 || close < open ? QStringList()
                                    : type.mid(open + 1, close - open - 1).split(QLatin1Char(','));
}

/// What is stated about the values of an option besides its description.
QString valuesOf(const CLI::Option &option)
{
    QString sentence;
    const QString type = text(option.get_type_name());
    const QStringList choices = choicesOf(option);
    const int range = type.indexOf(QLatin1String(" in ["));
    const QString description = text(option.get_description());
    const bool namesChoices =
        std::all_of(choices.begin(), choices.end(),
                    [&description](const QString &choice) { return description.contains(choice); });
    if (!choices.isEmpty() && !namesChoices)
        sentence = QStringLiteral(" One of %1.").arg(choices.join(QStringLiteral(", ")));
    else if (range >= 0)
        sentence = QStringLiteral(" From %1.")
                       .arg(type.mid(range + 5)
                                .remove(QLatin1Char(']'))
                                .replace(QLatin1String(" - "), QLatin1String(" to ")));
    else if (type.contains(QLatin1String("NONNEGATIVE")))
        sentence = QStringLiteral(" Not below 0.");
    if (!option.get_default_str().empty())
        sentence += QStringLiteral(" Default: %1.").arg(text(option.get_default_str()));
    return sentence;
}

/// A text for the formatter of manual pages: no character of it is a request or an escape.
QString escaped(QString line)
{
    line.replace(QLatin1Char('\\'), QLatin1String("\\e"));
    line.replace(QLatin1Char('-'), QLatin1String("\\-"));
    if (line.startsWith(QLatin1Char('.')) || line.startsWith(QLatin1Char('\'')))
        line.prepend(QLatin1String("\\&"));
    return line;
}

QString bold(const QString &word)
{
    return QStringLiteral("\\fB%1\\fR").arg(escaped(word));
}

QString italic(const QString &word)
{
    return QStringLiteral("\\fI%1\\fR").arg(escaped(word));
}

/// A full sentence: descriptions have no full stop.
QString sentence(const std::string &description)
{
    return escaped(text(description)) + QLatin1Char('.');
}

QString optionEntry(const CLI::Option &option)
{
    QStringList names;
    for (const QString &name : namesOf(option))
        names.append(bold(name));
    QString heading = names.join(QStringLiteral(", "));
    if (takesValue(option))
        heading += QLatin1Char(' ') + italic(text(option.get_type_name()).section(':', 0, 0));
    return QStringLiteral(".TP\n%1\n%2%3\n")
        .arg(heading, sentence(option.get_description()), escaped(valuesOf(option)));
}

QString section(const char *title, const QString &content)
{
    return content.isEmpty() ? QString()
                             : QStringLiteral(".SH %1\n%2").arg(QLatin1String(title), content);
}

template <class Items, class Entry> QString joined(const Items &items, const Entry &entry)
{
    QString all;
    for (const auto *item : items)
        all += entry(*item);
    return all;
}

QString synopsis(const CLI::App &verb)
{
    QString line = bold(wordsOf(verb).join(QLatin1Char(' '))) + QStringLiteral(" [")
                   + italic(QStringLiteral("option")) + QStringLiteral("...]");
    for (const CLI::Option *argument : argumentsOf(verb)) {
        const QString name = italic(text(argument->get_name(true, false)))
                             + QLatin1String(argument->get_expected_max() > 1 ? "..." : "");
        line +=
            argument->get_required() ? QLatin1Char(' ') + name : QStringLiteral(" [%1]").arg(name);
    }
    if (!verbsOf(verb).empty())
        line += QLatin1Char(' ') + italic(QStringLiteral("verb")) + QStringLiteral(" ...");
    return line + QLatin1Char('\n');
}

/// The lines of the examples, which are indented in the footer.
QString examples(const CLI::App &verb)
{
    QString lines;
    for (const QString &line : text(verb.get_footer()).split(QLatin1Char('\n')))
        if (line.startsWith(QLatin1String("  ")))
            lines += escaped(line.mid(2)) + QLatin1Char('\n');
    return lines.isEmpty() ? lines : QStringLiteral(".nf\n%1.fi\n").arg(lines);
}

QString pageName(const CLI::App &verb)
{
    return wordsOf(verb).join(QLatin1Char('-'));
}

QString seeAlso(const CLI::App &verb)
{
    QStringList pages;
    if (verb.get_parent())
        pages.append(bold(pageName(*verb.get_parent())) + QStringLiteral("(1)"));
    for (const CLI::App *below : verbsOf(verb))
        pages.append(bold(pageName(*below)) + QStringLiteral("(1)"));
    return pages.join(QStringLiteral(",\n")) + QLatin1Char('\n');
}

QString manualPage(const CLI::App &verb, const QString &version)
{
    const QString name = pageName(verb);
    return QStringLiteral(".TH %1 1 \"\" \"%2\" \"User commands\"\n")
               .arg(escaped(name.toUpper()), escaped(version))
           + section("NAME", QStringLiteral("%1 \\- %2\n")
                                 .arg(escaped(name), escaped(text(verb.get_description()))))
           + section("SYNOPSIS", synopsis(verb))
           + section("VERBS", joined(verbsOf(verb),
                                     [](const CLI::App &below) {
                                         return QStringLiteral(".TP\n%1\n%2\n")
                                             .arg(bold(text(below.get_name())),
                                                  sentence(below.get_description()));
                                     }))
           + section("ARGUMENTS", joined(argumentsOf(verb),
                                         [](const CLI::Option &argument) {
                                             return QStringLiteral(".TP\n%1\n%2%3\n")
                                                 .arg(italic(text(argument.get_name(true, false))),
                                                      sentence(argument.get_description()),
                                                      escaped(valuesOf(argument)));
                                         }))
           + section("OPTIONS", joined(optionsOf(verb), optionEntry))
           + section("COMMON OPTIONS",
                     verb.get_parent() ? joined(commonOptions(verb), optionEntry) : QString())
           + section("EXIT STATUS", QStringLiteral(".TP\n0\nDone.\n.TP\n1\nFailed; the message "
                                                   "says why.\n.TP\n2\nWrong usage.\n"
                                                   ".TP\n130\nCancelled.\n"))
           + section("EXAMPLES", examples(verb)) + section("SEE ALSO", seeAlso(verb));
}

/// A word of a script of bash.
QString quoted(QString word)
{
    return QLatin1Char('\'') + word.replace(QLatin1Char('\''), QLatin1String("'\\''"))
           + QLatin1Char('\'');
}

/// A function of bash that prints what belongs to a key, in one line.
QString lookup(const char *name, const QMap<QString, QStringList> &lines)
{
    QString cases;
    for (auto line = lines.begin(); line != lines.end(); ++line)
        if (!line->isEmpty())
            cases += QStringLiteral("    %1) echo %2 ;;\n")
                         .arg(quoted(line.key()), quoted(line->join(QLatin1Char(' '))));
    return QStringLiteral("%1()\n{\n    case \"$1\" in\n%2    esac\n}\n")
        .arg(QLatin1String(name), cases);
}

const char kCompletion[] = R"script(
# Whether option $2 of verb $1 takes a value.
_meridor_takes()
{
    [[ " $(_meridor_valued "$1") $(_meridor_valued meridor) " == *" $2 "* ]]
}

# Names of a project that begin with the present word, which may be quoted.
_meridor_names()
{
    local quote='' start=$3 name
    case $start in [\"\']*) quote=${start:0:1} start=${start:1} ;; esac
    [[ $quote ]] || start=${start//\\/}
    while IFS= read -r name; do
        [[ $name == "$start"* ]] || continue
        [[ $quote ]] || name=$(printf %q "$name")
        COMPREPLY+=("$name")
    done < <(timeout 3 meridor --quiet names "$1" "$2" 2>/dev/null)
}

_meridor()
{
    local cur=${COMP_WORDS[COMP_CWORD]} verb=meridor project='' count=0 skip='' word i
    local -a arguments
    COMPREPLY=()
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        if [[ $skip ]]; then
            skip=''
        elif [[ $word == -?* ]]; then
            _meridor_takes "$verb" "$word" && skip=$word
        elif [[ " $(_meridor_verbs "$verb") " == *" $word "* ]]; then
            verb="$verb $word"
        else
            read -ra arguments <<<"$(_meridor_arguments "$verb")"
            [[ ${arguments[count]} == PROJECT ]] && project=${word//\\/}
            ((++count))
        fi
    done
    if [[ $skip ]]; then
        local values
        values=$(_meridor_values "$verb $skip")
        [[ $values ]] || values=$(_meridor_values "meridor $skip")
        if [[ $values ]]; then
            mapfile -t COMPREPLY < <(compgen -W "$values" -- "$cur")
        elif [[ $skip == --datasets || $skip == --where ]] && [[ $project ]]; then
            _meridor_names "$project" datasets "$cur"
        else
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$cur")
        fi
    elif [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(
            compgen -W "$(_meridor_options "$verb") $(_meridor_options meridor)" -- "$cur"
        )
    elif [[ $(_meridor_verbs "$verb") ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(_meridor_verbs "$verb")" -- "$cur")
    else
        read -ra arguments <<<"$(_meridor_arguments "$verb")"
        case ${arguments[count]} in
        DATASET) _meridor_names "$project" datasets "$cur" ;;
        SET) _meridor_names "$project" sets "$cur" ;;
        *)
            compopt -o filenames
            mapfile -t COMPREPLY < <(compgen -f -- "$cur")
            ;;
        esac
    fi
} && complete -F _meridor meridor
)script";

} // namespace

QMap<QString, QString> manualPages(const CLI::App &program, const QString &version)
{
    QMap<QString, QString> pages;
    visitVerbs(program, [&](const CLI::App &verb) {
        pages.insert(pageName(verb) + QStringLiteral(".1"), manualPage(verb, version));
    });
    return pages;
}

QString bashCompletion(const CLI::App &program)
{
    QMap<QString, QStringList> verbs;
    QMap<QString, QStringList> options;
    QMap<QString, QStringList> valued;
    QMap<QString, QStringList> values;
    QMap<QString, QStringList> arguments;
    visitVerbs(program, [&](const CLI::App &verb) {
        const QString words = wordsOf(verb).join(QLatin1Char(' '));
        for (const CLI::App *below : verbsOf(verb))
            verbs[words].append(text(below->get_name()));
        for (const CLI::Option *argument : argumentsOf(verb))
            arguments[words].append(text(argument->get_name(true, false)));
        for (const CLI::Option *option : optionsOf(verb)) {
            options[words] += namesOf(*option);
            if (takesValue(*option))
                valued[words] += namesOf(*option);
            for (const QString &name : namesOf(*option))
                values[words + QLatin1Char(' ') + name] = choicesOf(*option);
        }
    });
    return QStringLiteral(
               "# Completion of meridor in bash; made of the definitions of its verbs.\n")
           + lookup("_meridor_verbs", verbs) + lookup("_meridor_options", options)
           + lookup("_meridor_valued", valued) + lookup("_meridor_values", values)
           + lookup("_meridor_arguments", arguments) + QString::fromUtf8(kCompletion);
}

} // namespace meridor
