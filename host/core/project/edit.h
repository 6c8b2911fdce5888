// SPDX-License-Identifier: MIT
/// Names and removal of what the loaded project holds.
#pragma once
#include <QString>
#include <QVector>
#include "core/export.h"
#include "core/project/notes.h"

namespace meridor {

/// Each raises a Failure if the name is empty, or if another dataset of the geography, or another
/// geography of the project, has it.
MERIDOR_EXPORT void renameDataset(int dataset, const QString &name);
MERIDOR_EXPORT void renameGeography(int geography, const QString &name);

/// Notes when a dataset held the keys of the objects.
MERIDOR_EXPORT void removeDatasets(const QVector<int> &datasets, const Notes &notes);
MERIDOR_EXPORT void removeGeographies(const QVector<int> &geographies);

} // namespace meridor
