// SPDX-License-Identifier: MIT
/// Classes of a dataset's values, as a legend shows them.
#pragma once
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>
#include "datainterface/MDataset.h"

namespace meridor {

/// A dataset's values at one time, numeric or text.
struct ValuesAt {
    bool numeric = true;
    QVector<double> numbers; ///< of grids with NaN for what is missing
    QStringList texts;
    QSet<int> missing;
};
ValuesAt valuesAt(int dataset, qint64 time);

MDataset::ClassificationType classificationOf(const QString &method);
QStringList classificationNames();

/// Limits of classes, ascending, one more than there are classes; of all values of the dataset, or
/// of one time's alone. Empty without values; raises the cancel.
QVector<double> breaksOfAll(int dataset, MDataset::ClassificationType method, int classes);
QVector<double> breaksAt(int dataset, qint64 time, MDataset::ClassificationType method,
                         int classes);

/// The class of a value: the first takes its lower limit too, each its upper one. -1 outside.
int classOf(double value, const QVector<double> &breaks);

} // namespace meridor
