// SPDX-License-Identifier: MIT
/// How a verb declares what it takes. The parser behind it shows in command.cpp and commandLine.cpp
/// alone: its header costs each source that includes it more than all of a verb's own code.
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

/// An option or argument that was declared; a handle, copied freely.
class Setting {
public:
    explicit Setting(CLI::Option *option) : mOption(option) {}
    Setting &required();
    /// The value has to be one of these.
    Setting &oneOf(const QStringList &values);
    Setting &range(int least, int most);
    Setting &range(double least, double most);
    Setting &notNegative();
    /// The help shows the value that the target has now, or this text, as the default.
    Setting &shown();
    Setting &shown(const char *text);
    /// One word holds several values.
    Setting &partedBy(char delimiter);
    /// So many values, each a word of its own.
    Setting &values(int least, int most);
    bool isGiven() const;

private:
    CLI::Option *mOption;
};

/// A verb, or the program; a handle, copied freely. Targets live as long as the command line.
class Command {
public:
    explicit Command(CLI::App &app) : mApp(&app) {}
    Command verb(const char *name, const char *help) const;
    /// Verbs below this one, of which one has to be chosen.
    void needsVerb() const;
    Setting text(const char *name, QString &target, const char *help) const;
    /// May be given several times, one text each.
    Setting texts(const char *name, QStringList &target, const char *help) const;
    Setting number(const char *name, int &target, const char *help) const;
    Setting number(const char *name, double &target, const char *help) const;
    Setting numbers(const char *name, QVector<double> &target, const char *help) const;
    /// A name that begins with "!" makes the target false.
    Setting flag(const char *name, bool &target, const char *help) const;
    /// What stands under the help.
    void footer(const char *text) const;
    /// Called when the verb was chosen and its words are read.
    void chosen(const std::function<void()> &then) const;

private:
    CLI::App *mApp;
};

} // namespace meridor
