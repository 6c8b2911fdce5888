// SPDX-License-Identifier: MIT
/// Texts that assign columns to a dataset over time.
///
///     income=1929..2009    all columns from 1929 to 2009; each name ends in its time
///     births=BIR*          all columns whose names are BIR and a time
///     births=BIR74@1974-07-01/1978-06-30,BIR79@1979-07-01/1984-06-30
///                          single columns, each with its time
///     wind=wind_kt@time    observations: the columns of the value and the start;
///                          an end may follow as /COLUMN or /next
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

/// Raises a Failure: Misused for a text that is no series, Refused for a column that `table` does
/// not have.
MERIDOR_EXPORT SeriesSpec parseSeries(const QString &text, const FeatureTable &table);

struct ObservationSpec {
    QString name;
    int value;
    int start;
    int end; ///< a column, -1 for the span of the start, or kUntilNext
    static constexpr int kUntilNext = -2;
};
MERIDOR_EXPORT ObservationSpec parseObservation(const QString &text, const FeatureTable &table);

/// The index of a column. Raises a Failure if the table does not have it.
MERIDOR_EXPORT int requireColumn(const FeatureTable &table, const QString &name);

} // namespace meridor
