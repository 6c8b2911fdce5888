// SPDX-License-Identifier: MIT
/// What the program says about its own use: help, and what is wrong with a command line.
#pragma once
#include <QString>
#include <memory>

namespace CLI {
class App;
class FormatterBase;
class ParseError;
} // namespace CLI

namespace meridor {

/// Formats the help of a verb with the options of the program, which may stand behind the verb.
std::shared_ptr<CLI::FormatterBase> helpFormatter();

/// A message about the first word that stands where a verb must and is none, with the nearest verb;
/// empty if there is no such word. Asked before the parsing, which would answer `paint --help` with
/// the help of the program.
QString unknownVerb(const CLI::App &program, int argc, const char *const *argv);

/// A message about a command line that could not be parsed. It names an unknown option, with the
/// nearest one, before a missing argument, since the former often causes the latter.
QString usageError(const CLI::App &program, const CLI::ParseError &error);

} // namespace meridor
