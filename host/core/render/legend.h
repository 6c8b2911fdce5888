// SPDX-License-Identifier: MIT
/// The legend of maps and graphs: blocks of entries with a symbol, a text and a count.
#pragma once
#include <QColor>
#include <QString>
#include <QVector>
#include "core/export.h"
#include "core/render/theme.h"

namespace meridor {

struct LegendEntry {
    enum Symbol { Box, Hatch, Line, Dashes, Dot };
    QColor color;
    QString text;
    qint64 count = -1; ///< -1: none is shown
    Symbol symbol = Box;
};

struct LegendBlock {
    QString title;
    QVector<LegendEntry> entries; ///< from top to bottom
};

/// Fills a rectangle with the hatching of missing values.
MERIDOR_EXPORT void drawHatch(QPainter &painter, const QRectF &area, const Theme &theme);

/// A legend laid out in a space. Rows move closer together if there are too many; if they still do
/// not fit, the last ones are replaced by a line that tells how many are left out.
class MERIDOR_EXPORT Legend {
public:
    /// @param space  the largest size of the legend.
    Legend(const QVector<LegendBlock> &blocks, const Theme &theme, const QSizeF &space);
    bool isEmpty() const { return mRows.isEmpty(); }
    double width() const { return mWidth; }
    void draw(QPainter &painter, const QPointF &topLeft) const;

private:
    struct Row {
        bool isTitle;
        LegendEntry entry;
    };
    double heightOf(const QVector<Row> &rows, double gap) const;

    Theme mTheme;
    QVector<Row> mRows;
    double mGap = 0; ///< between rows
    double mWidth = 0;
    double mCountWidth = 0;
};

} // namespace meridor
