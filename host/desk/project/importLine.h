// SPDX-License-Identifier: MIT
/// The command line of an import.
#pragma once
#include <QStringList>

namespace meridor {

struct ImportOptions;

/// A path as a word of a command line: relative if it is below the present directory, and never an
/// option.
QString pathWord(const QString &path);
/// The words after "meridor" that do the import.
/// @param append  whether the project exists; else it is made, or replaced.
QStringList importLine(const ImportOptions &options, const QString &project, bool append);

/// A verb with its arguments and options. Arguments that look like options, such as a dataset called
/// "-1", come last, behind two hyphens.
QStringList commandWords(const QStringList &verb, const QStringList &arguments,
                         const QStringList &options);

} // namespace meridor
