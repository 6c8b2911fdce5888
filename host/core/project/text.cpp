// SPDX-License-Identifier: MIT
#include "core/project/text.h"
#include <QLocale>
#include <cmath>

namespace meridor {

QString exactNumber(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString shortNumber(double value, int decimals)
{
    if (!std::isfinite(value))
        return QStringLiteral("-");
    if (value != 0 && (std::abs(value) < std::pow(10.0, -decimals) || std::abs(value) >= 1e15))
        return QString::number(value, 'g', 6);
    QString text = QString::number(value, 'f', decimals);
    while (text.contains(QLatin1Char('.'))
           && (text.endsWith(QLatin1Char('0')) || text.endsWith(QLatin1Char('.')))) {
        const bool point = text.endsWith(QLatin1Char('.'));
        text.chop(1);
        if (point)
            break;
    }
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

QJsonValue jsonNumber(double value)
{
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue(QJsonValue::Null);
}

QString someOf(const QStringList &names, int most)
{
    if (names.size() <= most)
        return names.join(QStringLiteral(", "));
    return QStringList(names.mid(0, most)).join(QStringLiteral(", "))
           + QStringLiteral(" and %1 more").arg(names.size() - most);
}

} // namespace meridor
