// SPDX-License-Identifier: MIT
/// The values of a vector geography as rows: a row is an object in a span of time in which no chosen
/// value changes, or an object with a column for each time.
#pragma once
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>
#include <functional>
#include <memory>
#include <optional>
#include "core/export.h"
#include "core/formats/valueTable.h"

namespace meridor {

struct RowPlan {
    int geography = -1;
    /// Datasets of the geography, in the order of their columns. Empty: all, without those that are
    /// the columns of keys and names.
    QVector<int> datasets;
    /// Of rowParts(), in this order. Empty: those that have something to tell.
    QStringList parts;
    bool wide = false;   ///< one row an object, one column a dataset and time
    bool shapes = false; ///< rows have shapes, and end where the shape changes
    /// Rows that have no instant of this closed interval are left out.
    std::optional<QPair<qint64, qint64>> within;
    /// Only this realization; values of datasets of one realization are repeated. Else all.
    std::optional<int> realization;
    /// One row for each object that exists at this time; with `wide` its shape is that of this time.
    std::optional<qint64> at;
};

/// "key", "name", "start", "end", "realization", "datasets".
MERIDOR_EXPORT QStringList rowParts();

/// Objects that do not exist have no rows. In the long form a span without a value of any dataset
/// has none either, unless it is that of a shape. Static values are repeated in every row.
class MERIDOR_EXPORT ValueRows {
public:
    /// Raises a Failure for a grid, datasets of several geographies and unknown parts.
    explicit ValueRows(const RowPlan &plan);
    ~ValueRows();
    /// With names that are all different.
    const QVector<TableColumn> &columns() const;
    const QVector<int> &datasets() const;
    ShapeKind shapeKind() const;
    /// Passes all rows to the sink, ordered by realization, object and time. Values are read for as
    /// many objects at a time as a bounded buffer holds.
    /// @param meter  receives 0 to 100; throws to stop.
    /// @return the number of rows.
    qint64 pass(TableSink &sink, const std::function<void(int)> &meter) const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

} // namespace meridor
