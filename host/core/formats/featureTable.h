// SPDX-License-Identifier: MIT
/// The content of a vector file or table as plain values: columns of cells and, for a map, one
/// shape per row.
#pragma once
#include <QPointF>
#include <QString>
#include <QStringList>
#include <QVector>
#include <string_view>
#include <vector>

namespace meridor {

enum class ValueKind { Integer, Decimal, Text };
enum class ShapeKind { None, Points, Polygons, Lines };

/// The parts of one shape: all rings of a polygon (outer rings and holes are not distinguished),
/// the parts of a line, or the single vertex of a point. Empty: the row has no shape.
using ShapeParts = QVector<QVector<QPointF>>;

/// The cells of one column, concatenated as UTF-8 in one buffer; this avoids a string object per
/// cell. An empty cell is a missing value.
class Cells {
public:
    void append(const QByteArray &text)
    {
        mBytes.insert(mBytes.end(), text.cbegin(), text.cend());
        mEnds.push_back(mBytes.size());
    }
    int size() const { return static_cast<int>(mEnds.size()); }
    std::string_view view(int row) const
    {
        const auto index = static_cast<size_t>(row);
        const size_t start = index == 0 ? 0 : mEnds[index - 1];
        return std::string_view(mBytes.data() + start, mEnds[index] - start);
    }
    bool isMissing(int row) const { return view(row).empty(); }
    bool same(int a, int b) const { return view(a) == view(b); }
    /// The text of a cell; null if it is missing.
    QString operator[](int row) const
    {
        const std::string_view text = view(row);
        return text.empty() ? QString()
                            : QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    }

private:
    std::vector<char> mBytes;
    std::vector<size_t> mEnds;
};

struct Column {
    QString name;
    bool typed = false; ///< the file declares `kind`; otherwise it is recognised from the cells
    ValueKind kind = ValueKind::Text;
    Cells cells;          ///< numbers with all their digits
    QString file;         ///< the file of a joined column; empty for the table's own columns
    QVector<int> fileRow; ///< of a joined column: the row in `file`, -1 for none
};

struct FeatureTable {
    QString file; ///< as the user wrote it, for messages
    QString layer;
    QString projection; ///< WKT; empty if the file has none
    ShapeKind shapeKind = ShapeKind::None;
    QVector<Column> columns;
    QVector<ShapeParts> shapes; ///< one per row for a map, empty for a table
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
        .arg(joined ? column.file : table.file, column.name)
        .arg((joined ? column.fileRow[row] : row) + 1);
}

inline QString place(const FeatureTable &table, int row)
{
    return QStringLiteral("%1, row %2").arg(table.file).arg(row + 1);
}

} // namespace meridor
