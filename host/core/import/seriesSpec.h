// SPDX-License-Identifier: MIT
/// The little language that says which columns are a dataset over time.
///
///     income=1929..2009                 every column from 1929 to 2009, each of the time its name
///     ends in births=BIR*                       every column BIR and a time
///     births=BIR74@1974-07-01/1978-06-30,BIR79@1979-07-01/1984-06-30
///     wind=wind_kt@time                 of a table of observations: value, start (and /end)
///     columns
#pragma once
#include <QString>
#include <QVector>
#include "core/export.h"
#include "core/formats/featureTable.h"

namespace meridor {

struct SeriesStep {
    int column;
    QString start;
    QString end; ///< empty: the span of `start`
};

struct SeriesSpec {
    QString name;
    QVector<SeriesStep> steps;
};

/// Raises a Failure (wrong usage for a text that is no series, failed for a column that `table`
/// lacks).
MERIDOR_EXPORT SeriesSpec parseSeries(const QString &text, const FeatureTable &table);

struct ObservationSpec {
    QString name;
    int value;
    int start;
    int end; ///< -1: the span of the start; kUntilNext
    static constexpr int kUntilNext = -2;
};
MERIDOR_EXPORT ObservationSpec parseObservation(const QString &text, const FeatureTable &table);

/// Index of a column that must be there.
MERIDOR_EXPORT int requireColumn(const FeatureTable &table, const QString &name);

} // namespace meridor
