// SPDX-License-Identifier: MIT
#include "core/render/theme.h"
#include <QFontMetricsF>
#include <QPainter>
#include <QVector>
#include <algorithm>
#include <cmath>

namespace meridor {

namespace colors {
const QColor missing(0xec, 0xed, 0xee);
const QColor hatch(0x9a, 0xa0, 0xa5);
const QColor selected(0xff, 0x95, 0x00);
const QColor ink(0x1f, 0x2a, 0x33);
const QColor softInk(0x53, 0x60, 0x6a);
const QColor outline(0x7d, 0x89, 0x91);
const QColor border(0xff, 0xff, 0xff);
const QColor ground(0xf4, 0xf6, 0xf7);
const QColor grid(0xdd, 0xe2, 0xe5);
} // namespace colors

namespace {

constexpr double kLeastUnit = 0.55;
constexpr int kLeastFont = 9;

} // namespace

Theme::Theme(const PictureSize &size) : mSize(size.pixels)
{
    const double natural = std::min(mSize.width() / 1600.0, mSize.height() / 1000.0);
    mUnit = std::max(natural, kLeastUnit) * size.scale;
    mMargin = 44 * natural * std::min(size.scale, 1.5);
}

QFont Theme::font(double height, QFont::Weight weight) const
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(std::max(kLeastFont, static_cast<int>(std::lround(unit(height)))));
    font.setWeight(weight);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

QRectF Theme::drawTexts(QPainter &painter, const PictureTexts &texts) const
{
    const double width = mSize.width() - 2 * mMargin;
    double top = 0.75 * mMargin;
    for (const QString &line : brokenLines(texts.title, titleFont(), width, 2))
        top = drawText(painter, titleFont(), colors::ink, QPointF(mMargin, top), width, line);
    for (const QString &line : brokenLines(texts.subtitle, subtitleFont(), width, 2))
        top =
            drawText(painter, subtitleFont(), colors::softInk, QPointF(mMargin, top), width, line);
    double bottom = mSize.height() - 0.6 * mMargin;
    const QStringList notes = brokenLines(texts.footnote, smallFont(), width, 2);
    bottom -= notes.size() * QFontMetricsF(smallFont()).height();
    double y = bottom;
    for (const QString &line : notes)
        y = drawText(painter, smallFont(), colors::softInk, QPointF(mMargin, y), width, line);
    top += 0.5 * mMargin;
    bottom -= 0.4 * mMargin;
    return QRectF(mMargin, top, width, std::max(1.0, bottom - top));
}

double drawText(QPainter &painter, const QFont &font, const QColor &color, const QPointF &topLeft,
                double width, const QString &text, Qt::Alignment alignment)
{
    const QFontMetricsF metrics(font);
    const QString fitting = metrics.elidedText(text, Qt::ElideRight, width + 0.5);
    const double advance = metrics.horizontalAdvance(fitting);
    const double left = alignment & Qt::AlignRight     ? width - advance
                        : alignment & Qt::AlignHCenter ? (width - advance) / 2
                                                       : 0;
    painter.setFont(font);
    painter.setPen(color);
    if (!fitting.isEmpty())
        painter.drawText(QPointF(topLeft.x() + left, topLeft.y() + metrics.ascent()), fitting);
    return topLeft.y() + metrics.height();
}

QStringList brokenLines(const QString &text, const QFont &font, double width, int mostLines)
{
    const QFontMetricsF metrics(font);
    QStringList lines;
    for (const QString &word : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QString longer = lines.isEmpty() ? word : lines.last() + QLatin1Char(' ') + word;
        if (lines.isEmpty())
            lines.append(word);
        else if (lines.size() == mostLines || metrics.horizontalAdvance(longer) <= width)
            lines.last() = longer;
        else
            lines.append(word);
    }
    for (QString &line : lines)
        line = metrics.elidedText(line, Qt::ElideRight, width);
    return lines;
}

QString grouped(double value, int decimals)
{
    if (std::isnan(value))
        return QStringLiteral("-");
    QString text = QString::number(value, 'f', decimals);
    if (text.startsWith(QLatin1Char('-')) && text.toDouble() == 0)
        text.remove(0, 1);
    const int point = text.indexOf(QLatin1Char('.'));
    const int first = text.startsWith(QLatin1Char('-')) ? 1 : 0;
    for (int at = (point < 0 ? text.size() : point) - 3; at > first; at -= 3)
        text.insert(at, QChar(0x2009));
    if (first == 1)
        text[0] = QChar(0x2212); // a minus sign, which is as wide as a plus sign
    return text;
}

int decimalsFor(const QVector<double> &ascending)
{
    if (ascending.isEmpty())
        return 0;
    double step = ascending.last() - ascending.first();
    for (int i = 1; i < ascending.size(); ++i)
        if (ascending[i] > ascending[i - 1])
            step = std::min(step, ascending[i] - ascending[i - 1]);
    for (int decimals = 0; decimals < 8; ++decimals) {
        const double scale = std::pow(10, decimals);
        if (std::all_of(ascending.begin(), ascending.end(), [&](double limit) {
                return std::abs(std::round(limit * scale) / scale - limit) <= 0.005 * step;
            }))
            return decimals;
    }
    return 8;
}

} // namespace meridor
