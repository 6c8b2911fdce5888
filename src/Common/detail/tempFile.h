// SPDX-License-Identifier: MIT
/// Scratch files of this process.
#pragma once
#include <QString>

namespace datainterface {

/// Makes a new empty file in `directory` whose name begins with `prefix`, readable and writable by
/// its owner alone. The directory is made when it is missing.
/// @return the file's path; empty when the file could not be made.
QString uniqueTempFile(const QString &directory, const char *prefix);

} // namespace datainterface
