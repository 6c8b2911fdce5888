// SPDX-License-Identifier: MIT
/// The content of a vector file or table: columns of cells and, for a map, one shape per row. Cells
/// and shapes are kept in a Spool, so a table takes a bounded amount of memory.
#pragma once
#include <QPointF>
#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVector>
#include <cstring>
#include <memory>
#include <string_view>
#include "core/formats/spool.h"

namespace meridor {

enum class ValueKind { Integer, Decimal, Text };
enum class ShapeKind { None, Points, Polygons, Lines };

/// The parts of one shape: all rings of a polygon (outer rings and holes are not distinguished),
/// the parts of a line, or the single vertex of a point. Empty: the row has no shape.
using ShapeParts = QVector<QVector<QPointF>>;

/// The shapes of the rows of a map. A shape is stored as the number of its parts and their sizes,
/// 32 bits each, and its vertices.
class MERIDOR_EXPORT Shapes {
public:
    explicit Shapes(const std::shared_ptr<Spool> &spool) : mCells(spool) {}

    void append(const ShapeParts &parts);
    int size() const { return mCells.size(); }
    bool isEmpty(int row) const { return mCells.view(row).empty(); }
    ShapeParts parts(int row) const;
    /// Calls `visit` with each vertex of a shape.
    template <class Visit> void visitVertices(int row, Visit visit) const
    {
        const std::string_view shape = mCells.view(row);
        if (shape.empty())
            return;
        quint32 parts = 0;
        std::memcpy(&parts, shape.data(), sizeof parts);
        for (size_t at = sizeof parts * (parts + size_t(1)); at < shape.size();
             at += sizeof(double[2])) {
            double place[2];
            std::memcpy(place, shape.data() + at, sizeof place);
            visit(place[0], place[1]);
        }
    }
    /// The smallest rectangle around all vertices; null without vertices.
    QRectF bounds() const;
    qint64 vertexCount() const { return mVertices; }

private:
    Cells mCells;
    std::vector<char> mBuffer; ///< the shape that is being appended
    qint64 mVertices = 0;
    double mLeft = 0, mRight = 0, mLow = 0, mHigh = 0;
};

struct Column {
    QString name;
    bool typed = false; ///< the file declares `kind`; otherwise it is recognised from the cells
    ValueKind kind = ValueKind::Text;
    std::shared_ptr<Cells> cells; ///< UTF-8, numbers with all their digits
    char decimal = '.';           ///< the decimal separator of its cells
    QString file;         ///< the file of a joined column; empty for the table's own columns
    QVector<int> fileRow; ///< of a joined column: the row in `file` and `cells`, -1 for none

    std::string_view view(int row) const
    {
        if (fileRow.isEmpty())
            return cells->view(row);
        return fileRow[row] < 0 ? std::string_view() : cells->view(fileRow[row]);
    }
    bool isMissing(int row) const { return view(row).empty(); }
    bool same(int a, int b) const
    {
        return a == b || std::string(view(a)) == view(b); // a view ends with the next one
    }
    /// The text of a cell; null if it is missing.
    QString text(int row) const
    {
        const std::string_view cell = view(row);
        return cell.empty() ? QString()
                            : QString::fromUtf8(cell.data(), static_cast<int>(cell.size()));
    }
};

struct FeatureTable {
    QString file; ///< as the user wrote it, for messages
    QString layer;
    QString projection; ///< WKT; empty if the file has none
    ShapeKind shapeKind = ShapeKind::None;
    QVector<Column> columns;
    std::shared_ptr<Spool> spool = std::make_shared<Spool>();
    std::shared_ptr<Shapes> shapes; ///< of a map; null for a table
    int rows = 0;

    /// -1 if there is no such column.
    int indexOf(const QString &column) const
    {
        for (int i = 0; i < columns.size(); ++i)
            if (columns[i].name == column)
                return i;
        return -1;
    }
    QStringList columnNames() const
    {
        QStringList names;
        for (const Column &column : columns)
            names.append(column.name);
        return names;
    }
};

/// The position of a cell for a message: "states.csv, field income, row 7". Rows count from 1,
/// without the heading.
inline QString place(const FeatureTable &table, const Column &column, int row)
{
    const bool joined = !column.file.isEmpty();
    return QStringLiteral("%1, field %2, row %3")
        .arg(joined ? column.file : table.file, column.name,
             QString::number((joined ? column.fileRow[row] : row) + 1));
}

inline QString place(const FeatureTable &table, int row)
{
    return QStringLiteral("%1, row %2").arg(table.file, QString::number(row + 1));
}

} // namespace meridor
