// SPDX-License-Identifier: MIT
/// Looks at a file and proposes how to import it.
#pragma once
#include "core/export.h"
#include "core/import/importOptions.h"

namespace meridor {

enum class SourceForm {
    Shapes, ///< a vector file or a database
    Table,  ///< a table, whose points are two of its fields
    Grid,
    Cube
};

struct ImportGuess {
    SourceForm form = SourceForm::Shapes;
    QStringList layers; ///< of a vector file
    QStringList fields; ///< of its chosen layer; of a grid the names of its bands
    /// The map, its layer, and what was recognised: keys, times, coordinates, series.
    ImportOptions options;
};

/// Fields are recognised by their names, and proposed only if their values can be what the names
/// say: this reads the fields of the file once, unless it is larger than 64 MB or a database. A key
/// has a different value in each row, or in each row of one start; without a name that tells it, it
/// is the first field of texts of which that holds. Places are two numbers, dates also have patterns
/// such as d.M.yyyy, and numbers decimal commas. Of several layers the first is chosen if `layer` is
/// empty. Raises a Failure if the file cannot be read, and for pipes and devices, which could not be
/// read again.
MERIDOR_EXPORT ImportGuess guessImport(const QString &path, const QString &layer = QString());

} // namespace meridor
