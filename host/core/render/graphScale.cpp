// SPDX-License-Identifier: MIT
#include "core/render/graphScale.h"
#include <algorithm>
#include <cmath>
#include <qwt_date_scale_draw.h>
#include <qwt_scale_draw.h>
#include "core/render/theme.h"

namespace meridor {
namespace {

/// Labels with digits in groups, all with the same number of decimal places.
class NumberScaleDraw : public QwtScaleDraw {
public:
    QwtText label(double value) const override
    {
        const QList<double> ticks = scaleDiv().ticks(QwtScaleDiv::MajorTick);
        const double largest =
            std::max(std::abs(ticks.value(0)), std::abs(ticks.value(ticks.size() - 1)));
        if (largest >= 1e9 || (largest > 0 && largest < 1e-4))
            return QString::number(value, 'g', 4);
        QString text = grouped(value, decimalsFor(ticks.toVector()));
        return largest < 10000 ? text.remove(QChar(0x2009)) : text; // years are not grouped
    }
};

} // namespace

std::unique_ptr<QwtScaleDraw> graphScaleDraw(bool dates)
{
    if (!dates)
        return std::make_unique<NumberScaleDraw>();
    auto draw = std::make_unique<QwtDateScaleDraw>(Qt::UTC);
    draw->setDateFormat(QwtDate::Month, QStringLiteral("yyyy-MM"));
    draw->setDateFormat(QwtDate::Week, QStringLiteral("yyyy-MM-dd"));
    draw->setDateFormat(QwtDate::Day, QStringLiteral("yyyy-MM-dd"));
    draw->setDateFormat(QwtDate::Hour, QStringLiteral("hh:mm\nyyyy-MM-dd"));
    draw->setDateFormat(QwtDate::Minute, QStringLiteral("hh:mm\nyyyy-MM-dd"));
    draw->setDateFormat(QwtDate::Second, QStringLiteral("hh:mm:ss\nyyyy-MM-dd"));
    return draw;
}

} // namespace meridor
