// SPDX-License-Identifier: MIT
#include "core/render/legend.h"
#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace meridor {
namespace {

constexpr double kBox = 40;    ///< width of a symbol
constexpr double kIndent = 54; ///< from the left of the symbol to the text
constexpr double kCountGap = 16;
constexpr double kGap = 9;      ///< between two rows
constexpr double kBlockGap = 2; ///< above a further title, in gaps

QFont titleFont(const Theme &theme)
{
    return theme.font(21, QFont::DemiBold);
}

void drawSymbol(QPainter &painter, const QRectF &box, const LegendEntry &entry, const Theme &theme)
{
    const bool dashed = entry.symbol == LegendEntry::Dashes;
    switch (entry.symbol) {
    case LegendEntry::Hatch:
        drawHatch(painter, box, theme);
        break;
    case LegendEntry::Line:
        painter.setPen(QPen(colors::outline, theme.unit(5)));
        painter.drawLine(QPointF(box.left(), box.center().y()),
                         QPointF(box.right(), box.center().y()));
        Q_FALLTHROUGH();
    case LegendEntry::Dashes:
        painter.setPen(QPen(entry.color, theme.unit(3), dashed ? Qt::DashLine : Qt::SolidLine));
        painter.drawLine(QPointF(box.left(), box.center().y()),
                         QPointF(box.right(), box.center().y()));
        break;
    case LegendEntry::Dot:
        painter.setPen(QPen(colors::outline, theme.unit(1)));
        painter.setBrush(entry.color);
        painter.drawEllipse(box.center(), box.height() / 2.6, box.height() / 2.6);
        break;
    case LegendEntry::Box:
        painter.setPen(QPen(colors::outline, theme.unit(1)));
        painter.setBrush(entry.color);
        painter.drawRect(box);
    }
}

} // namespace

void drawHatch(QPainter &painter, const QRectF &area, const Theme &theme)
{
    painter.fillRect(area, colors::missing);
    painter.setPen(QPen(colors::hatch, theme.unit(1.2)));
    // Lines from the left or the bottom side up to the top or the right side.
    const double step = theme.unit(7);
    for (double at = step / 2; at < area.width() + area.height(); at += step) {
        const double below = std::max(0.0, at - area.height());
        const double beyond = std::max(0.0, at - area.width());
        painter.drawLine(QPointF(area.left() + below, area.top() + at - below),
                         QPointF(area.left() + at - beyond, area.top() + beyond));
    }
    painter.setPen(QPen(colors::outline, theme.unit(1)));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(area);
}

Legend::Legend(const QVector<LegendBlock> &blocks, const Theme &theme, const QSizeF &space)
    : mTheme(theme)
{
    const QFontMetricsF metrics(theme.textFont());
    const QFontMetricsF titles(titleFont(theme));
    double textWidth = 0;
    double titleWidth = 0;
    for (const LegendBlock &block : blocks) {
        for (const QString &line : brokenLines(block.title, titleFont(theme), space.width(), 3)) {
            mRows.append({true, {QColor(), line}});
            titleWidth = std::max(titleWidth, titles.horizontalAdvance(line));
        }
        for (const LegendEntry &entry : block.entries) {
            mRows.append({false, entry});
            textWidth = std::max(textWidth, metrics.horizontalAdvance(entry.text));
            if (entry.count >= 0)
                mCountWidth = std::max(mCountWidth, theme.unit(kCountGap)
                                                        + metrics.horizontalAdvance(grouped(
                                                            static_cast<double>(entry.count), 0)));
        }
    }
    mWidth = std::min(space.width(),
                      std::max(titleWidth + 1, theme.unit(kIndent) + textWidth + mCountWidth + 1));
    for (mGap = theme.unit(kGap); mGap > 1 && heightOf(mRows, mGap) > space.height();)
        mGap *= 0.7;
    int hidden = 0;
    while (mRows.size() > 2 && heightOf(mRows, mGap) > space.height()) {
        if (hidden == 0)
            mRows.append(Row{true, {}}); // takes the place of the last rows
        const bool isTitle = mRows[mRows.size() - 2].isTitle;
        mRows.removeAt(mRows.size() - 2);
        hidden += isTitle ? 0 : 1;
        mRows.last() = {false,
                        {QColor(), QStringLiteral("%1 more").arg(hidden), -1, LegendEntry::Box}};
    }
}

double Legend::heightOf(const QVector<Row> &rows, double gap) const
{
    const double text = QFontMetricsF(mTheme.textFont()).height();
    const double title = QFontMetricsF(titleFont(mTheme)).height();
    double height = 0;
    for (int i = 0; i < rows.size(); ++i) {
        if (rows[i].isTitle && i > 0 && !rows[i - 1].isTitle)
            height += kBlockGap * gap;
        height += rows[i].isTitle ? title + gap / 2 : text + gap;
    }
    return height;
}

void Legend::draw(QPainter &painter, const QPointF &topLeft) const
{
    const QFont font = mTheme.textFont();
    const double height = QFontMetricsF(font).height();
    const double indent = std::min(mTheme.unit(kIndent), mWidth / 3);
    double y = topLeft.y();
    for (int i = 0; i < mRows.size(); ++i) {
        const LegendEntry &entry = mRows[i].entry;
        if (mRows[i].isTitle) {
            if (i > 0 && !mRows[i - 1].isTitle)
                y += kBlockGap * mGap;
            y = drawText(painter, titleFont(mTheme), colors::ink, QPointF(topLeft.x(), y), mWidth,
                         entry.text)
                + mGap / 2;
            continue;
        }
        const double box = std::min(mTheme.unit(kBox), indent * kBox / kIndent);
        if (entry.color.isValid() || entry.symbol != LegendEntry::Box)
            drawSymbol(painter, QRectF(topLeft.x(), y + 0.08 * height, box, 0.84 * height), entry,
                       mTheme);
        const double width = mWidth - indent - mCountWidth;
        drawText(painter, font, colors::ink, QPointF(topLeft.x() + indent, y), width, entry.text);
        if (entry.count >= 0)
            drawText(painter, font, colors::softInk, QPointF(topLeft.x() + mWidth - mCountWidth, y),
                     mCountWidth, grouped(static_cast<double>(entry.count), 0), Qt::AlignRight);
        y += height + mGap;
    }
}

} // namespace meridor
