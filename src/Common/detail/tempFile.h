// SPDX-License-Identifier: MIT
/// Makes scratch files.
#pragma once
#include <QString>

namespace datainterface {

/// Makes a new empty file in `directory` whose name begins with `prefix`, readable and writable by
/// its owner alone. A missing directory is made.
/// @return the file's path; empty when the file could not be made.
QString uniqueTempFile(const QString &directory, const char *prefix);

} // namespace datainterface
