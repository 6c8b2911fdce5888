// SPDX-License-Identifier: MIT
/// Objects as people choose them: by key, by a value, by a range of values, by existence.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include "core/export.h"

namespace meridor {

struct ObjectChoice {
    QString geography; ///< empty: the only one, or that of `dataset`
    QStringList keys;
    QString dataset; ///< the one that `values`, `low` and `high` are of
    QStringList values;
    QString low;
    QString high;
    QString at; ///< time of the values and of existence; empty: the dataset's last
    bool existing = false;
};

/// The geography that is meant. Raises a Failure.
MERIDOR_EXPORT int geographyOf(const ObjectChoice &choice);
/// Objects that meet everything asked for, ascending. Raises a Failure for what is not there and
/// for what cannot be told.
MERIDOR_EXPORT QVector<int> chosenObjects(int geography, const ObjectChoice &choice);

} // namespace meridor
