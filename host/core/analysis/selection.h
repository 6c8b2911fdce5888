// SPDX-License-Identifier: MIT
/// Selection of objects by key, by values, by a range of values or by existence.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include "core/export.h"

class MAttributes;

namespace meridor {

/// The flags that the views of a geography share, which it owns: 0 shown, 1 selected, 2 hovered. They
/// are made at the first call. Null for an unknown geography.
MERIDOR_EXPORT MAttributes *sharedAttributes(int geography);

struct ObjectChoice {
    QString geography; ///< empty: the only one, or that of `dataset`
    QStringList keys;
    QString dataset; ///< the dataset of `values`, `low` and `high`
    QStringList values;
    QString low;
    QString high;
    int realization = 0; ///< of `dataset`, from 0
    QString at;          ///< time of the values and of existence; empty: the last of the dataset
    bool existing = false;
};

/// The geography of a choice. Raises a Failure if it cannot be determined.
MERIDOR_EXPORT int geographyOf(const ObjectChoice &choice);
/// The indices of the objects that meet all conditions, ascending; what is selected does not change.
/// Raises a Failure for an unknown name or key, or a value that cannot be read.
MERIDOR_EXPORT QVector<int> chosenObjects(int geography, const ObjectChoice &choice);

} // namespace meridor
