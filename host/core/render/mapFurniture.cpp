// SPDX-License-Identifier: MIT
#include "core/render/mapFurniture.h"
#include <QFontMetricsF>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace meridor {
namespace {

/// The largest of 1, 2 and 5 times a power of ten that is at most `most`.
double roundBelow(double most)
{
    const double power = std::pow(10, std::floor(std::log10(most)));
    for (const double factor : {5.0, 2.0})
        if (factor * power <= most)
            return factor * power;
    return power;
}

/// A distance of lines in degrees, so that there are about five over the longer side.
double degreeStep(const QRectF &frame)
{
    const double most = std::max(frame.width(), frame.height()) / 4;
    for (const double step : {30.0, 15.0, 10.0, 5.0, 2.0, 1.0, 0.5, 0.2, 0.1, 0.05, 0.02, 0.01})
        if (step <= most)
            return step;
    return roundBelow(std::max(most, 1e-9));
}

QString degreeText(double degrees, double step, const char *positive, const char *negative)
{
    const int decimals = step >= 1 ? 0 : static_cast<int>(std::ceil(-std::log10(step) - 1e-9));
    const QString text =
        QString::number(std::abs(degrees), 'f', decimals) + QStringLiteral("\u00b0");
    return text.left(text.size() - 1).toDouble() == 0 ? text
           : degrees > 0                              ? text + QLatin1String(positive)
                                                      : text + QLatin1String(negative);
}

/// Multiples of the step from `low` to `high`.
QVector<double> multiples(double low, double high, double step)
{
    QVector<double> values;
    for (double i = std::ceil(low / step); i * step <= high && values.size() < 100; ++i)
        values.append(i * step);
    return values;
}

} // namespace

QSizeF graticuleRoom(const Theme &theme)
{
    const QFontMetricsF metrics(theme.smallFont());
    return {metrics.horizontalAdvance(QStringLiteral("00.0\u00b0N")) + theme.unit(10),
            metrics.height() + theme.unit(8)};
}

void drawGraticule(QPainter &painter, const Theme &theme, const QRectF &frame,
                   const QTransform &transform, bool isLabelled)
{
    if (!(frame.width() > 0 && frame.height() > 0))
        return; // a single point, or points on a line
    const double step = degreeStep(frame);
    const QRectF box = transform.mapRect(frame);
    const QFont font = theme.smallFont();
    const QFontMetricsF metrics(font);
    const QPen pen(colors::grid, theme.unit(1.2));
    double free = box.left(); // labels along the lower side do not overlap
    for (const double longitude : multiples(frame.left(), frame.right(), step)) {
        const double x = transform.map(QPointF(longitude, frame.top())).x();
        painter.setPen(pen);
        painter.drawLine(QPointF(x, box.top()), QPointF(x, box.bottom()));
        const QString text = degreeText(longitude, step, "E", "W");
        const double width = metrics.horizontalAdvance(text);
        if (!isLabelled || x - width / 2 < free || x + width / 2 > box.right() + width / 2)
            continue;
        drawText(painter, font, colors::softInk,
                 QPointF(x - width / 2, box.bottom() + theme.unit(6)), width, text);
        free = x + width / 2 + theme.unit(12);
    }
    double above = box.bottom() + metrics.height();
    for (const double latitude : multiples(frame.top(), frame.bottom(), step)) {
        const double y = transform.map(QPointF(frame.left(), latitude)).y();
        painter.setPen(pen);
        painter.drawLine(QPointF(box.left(), y), QPointF(box.right(), y));
        if (!isLabelled || y + metrics.height() / 2 > above)
            continue;
        const double room = graticuleRoom(theme).width() - theme.unit(6);
        drawText(painter, font, colors::softInk,
                 QPointF(box.left() - room - theme.unit(6), y - metrics.height() / 2), room,
                 degreeText(latitude, step, "N", "S"), Qt::AlignRight);
        above = y - metrics.height() / 2 - theme.unit(4);
    }
}

double scaleBarHeight(const Theme &theme)
{
    return QFontMetricsF(theme.smallFont()).height() + theme.unit(12);
}

void drawScaleBar(QPainter &painter, const Theme &theme, const QPointF &topLeft, double width,
                  double metresPerPixel)
{
    if (!(metresPerPixel > 0) || !std::isfinite(metresPerPixel) || width < 1)
        return;
    const double metres = roundBelow(width * metresPerPixel);
    const double length = metres / metresPerPixel;
    const QString text = metres >= 1000 ? grouped(metres / 1000, 0) + QStringLiteral(" km")
                                        : QString::number(metres) + QStringLiteral(" m");
    const QFontMetricsF metrics(theme.smallFont());
    const double middle = topLeft.y() + theme.unit(12) + metrics.height() / 2;
    const double tick = theme.unit(6);
    painter.setPen(QPen(colors::softInk, theme.unit(1.8)));
    painter.drawLine(QPointF(topLeft.x(), middle), QPointF(topLeft.x() + length, middle));
    for (const double x : {topLeft.x(), topLeft.x() + length})
        painter.drawLine(QPointF(x, middle - tick), QPointF(x, middle + tick));
    drawText(painter, theme.smallFont(), colors::softInk,
             QPointF(topLeft.x() + length + theme.unit(10), middle - metrics.height() / 2),
             metrics.horizontalAdvance(text) + 1, text);
}

} // namespace meridor
