// SPDX-License-Identifier: MIT
/// Sources of an import that cannot be given to a reader as they are: pipes, which can be read only
/// once, and texts in UTF-16. Both are copied to a scratch file first.
#pragma once
#include <QString>
#include <memory>
#include "core/export.h"

class QTemporaryFile;

namespace meridor {

/// A file that can be read more than once.
struct SourceFile {
    QString path;                         ///< of the file or its copy
    std::unique_ptr<QTemporaryFile> copy; ///< null if no copy was needed
    bool converted = false;               ///< the copy is UTF-8, whatever the file was
};

/// @param encoding  of the file's texts as the user states it; may be empty. Raises a Failure if
///                  the file cannot be copied.
SourceFile openSource(const QString &path, const QString &encoding);

/// Whether a text is one that GDAL opens as a connection, such as "PG:dbname=t", and no path.
MERIDOR_EXPORT bool isConnection(const QString &text);
/// The text as it may be shown and stored: passwords of connections are left out.
MERIDOR_EXPORT QString withoutPassword(const QString &text);

} // namespace meridor
