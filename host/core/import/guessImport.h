// SPDX-License-Identifier: MIT
/// Looks at a file and proposes how to import it.
#pragma once
#include "core/export.h"
#include "core/import/importOptions.h"

namespace meridor {

enum class SourceForm {
    Shapes, ///< a vector file or a database
    Table,  ///< a table of texts, whose points are two of its fields
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

/// Fields are recognised by their names. A key and times are proposed only if their values can be
/// ones: this reads the fields of the file once, unless it is larger than 64 MB. Of several layers
/// the first is chosen if `layer` is empty. Raises a Failure if the file cannot be read.
MERIDOR_EXPORT ImportGuess guessImport(const QString &path, const QString &layer = QString());

} // namespace meridor
