// SPDX-License-Identifier: MIT
/// What a foreign file holds, in plain values: columns of cells and, for a map, one shape a row.
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

/// The parts of one shape: rings of a polygon (holes and further parts alike), parts of a line, the
/// one vertex of a point. No part: the row has no shape.
using ShapeParts = QVector<QVector<QPointF>>;

/// The cells of one column as UTF-8 in one piece: a dozen bytes a cell rather than a text object
/// each. An empty cell is a missing one.
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
    /// Null when it is missing.
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
    bool typed =
        false; ///< the file itself says what `kind` is; otherwise it is recognised from the cells
    ValueKind kind = ValueKind::Text;
    Cells cells;          ///< exact for numbers
    QString file;         ///< set for a column that came from another file ...
    QVector<int> fileRow; ///< ... with its row there, -1 for none
};

struct FeatureTable {
    QString file; ///< as the user wrote it: for messages
    QString layer;
    QString projection; ///< WKT; empty when the file has none
    ShapeKind shapeKind = ShapeKind::None;
    QVector<Column> columns;
    QVector<ShapeParts> shapes; ///< one a row for a map, none for a table
    int rows = 0;

    /// -1 when there is no such column.
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

/// "states.csv, field income, row 7": where a message points. Rows count from 1, headings left out.
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
