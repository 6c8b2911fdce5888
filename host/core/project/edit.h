// SPDX-License-Identifier: MIT
/// Names, descriptions and removal of what the loaded project holds.
#pragma once
#include <QString>
#include <QStringList>
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

/// What people wrote about a dataset: one line, and how it came to be.
struct Description {
    QString summary;
    QString history;
};
MERIDOR_EXPORT Description descriptionOf(int dataset);
/// Raises a Failure if the library refuses.
MERIDOR_EXPORT void setDescription(int dataset, const Description &description);
/// A geography has a history alone.
MERIDOR_EXPORT QString historyOf(int geography);
MERIDOR_EXPORT void setHistory(int geography, const QString &history);

/// "BASE copy", or with the least number from 2 on behind it that makes it none of `taken`.
MERIDOR_EXPORT QString copyName(const QString &base, const QStringList &taken);

} // namespace meridor
