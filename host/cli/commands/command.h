// SPDX-License-Identifier: MIT
/// Declaration of verbs and their options. The parser library is included by no verb, because its
/// header takes longer to compile than the code of a verb.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace meridor {

/// A declared option or argument: a handle that may be copied.
class Setting {
public:
    explicit Setting(CLI::Option *option) : mOption(option) {}
    Setting &required();
    /// Accepts only these values.
    Setting &oneOf(const QStringList &values);
    Setting &range(int least, int most);
    Setting &range(double least, double most);
    Setting &notNegative();
    Setting &positive();
    /// Shows the present value of the target, or this text, as the default in the help.
    Setting &shown();
    Setting &shown(const char *text);
    /// One argument contains several values, separated by `delimiter`.
    Setting &partedBy(char delimiter);
    /// Takes from `least` to `most` arguments as values.
    Setting &values(int least, int most);
    bool isGiven() const;

private:
    CLI::Option *mOption;
};

/// A verb or the program itself: a handle that may be copied. Targets must outlive the parsing and
/// the work of the verb.
class Command {
public:
    explicit Command(CLI::App &app) : mApp(&app) {}
    Command verb(const char *name, const char *help) const;
    /// A verb that no help names.
    Command hiddenVerb(const char *name) const;
    /// Requires one of the verbs below this one.
    void needsVerb() const;
    Setting text(const char *name, QString &target, const char *help) const;
    /// An option that may be given several times, with one text each.
    Setting texts(const char *name, QStringList &target, const char *help) const;
    /// An option with a list of texts, see listItems(); it may be given several times.
    Setting list(const char *name, QStringList &target, const char *help) const;
    Setting number(const char *name, int &target, const char *help) const;
    Setting number(const char *name, double &target, const char *help) const;
    Setting numbers(const char *name, QVector<double> &target, const char *help) const;
    /// Sets the target to true; to false if the name begins with "!".
    Setting flag(const char *name, bool &target, const char *help) const;
    /// Text below the help.
    void footer(const char *text) const;
    /// `then` is called when the verb was given and its arguments are parsed.
    void chosen(const std::function<void()> &then) const;

private:
    CLI::App *mApp;
};

} // namespace meridor
