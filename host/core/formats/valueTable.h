// SPDX-License-Identifier: MIT
/// A table on its way into a foreign file: typed columns, and rows that may have a shape.
#pragma once
#include <QString>
#include <QVector>
#include <variant>
#include <vector>
#include "core/export.h"
#include "core/formats/featureTable.h"

namespace meridor {

enum class CellKind { Integer, Decimal, Text, Date, Moment, Clock };

struct TableColumn {
    QString name;
    CellKind kind = CellKind::Text;
};

/// Empty for a missing value; a date, moment or time of day is its ISO text.
using TableCell = std::variant<std::monostate, qint64, double, QString>;

inline bool isMissing(const TableCell &cell)
{
    return std::holds_alternative<std::monostate>(cell);
}

/// Receives a table row by row; everything throws a Failure.
class MERIDOR_EXPORT TableSink {
public:
    virtual ~TableSink();
    /// @param columns  have different names.
    virtual void begin(const QVector<TableColumn> &columns) = 0;
    /// @param shape  null in a table without shapes; without parts for a row whose shape is empty.
    virtual void row(const std::vector<TableCell> &cells, const ShapeParts *shape) = 0;
    /// Writes what is buffered.
    virtual void end() = 0;
};

} // namespace meridor
