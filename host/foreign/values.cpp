// SPDX-License-Identifier: MIT
#include "foreign/values.h"
#include <algorithm>
#include <cmath>

namespace meridor {

std::optional<double> toDecimal(const QString &text)
{
    bool fits = false;
    const double value = text.trimmed().toDouble(&fits);
    if (!fits || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::optional<int> toInteger(const QString &text)
{
    const QString digits = text.trimmed();
    const int sign = digits.startsWith(QLatin1Char('-')) ? 1 : 0;
    if (digits.size() > sign + 1 && digits.at(sign) == QLatin1Char('0'))
        return std::nullopt;
    bool fits = false;
    const int value = digits.toInt(&fits);
    return fits ? std::optional<int>(value) : std::nullopt;
}

std::optional<ValueKind> recogniseKind(const Column &column)
{
    if (column.typed)
        return column.kind;
    bool any = false;
    ValueKind kind = ValueKind::Integer;
    for (const QString &cell : column.cells) {
        if (cell.isNull())
            continue;
        any = true;
        if (kind == ValueKind::Integer && !toInteger(cell))
            kind = ValueKind::Decimal;
        // "007" reads as a number and is a code: turning it into 7 would lose it.
        const bool code = cell.size() > 1 && cell.at(0) == QLatin1Char('0') && cell.at(1).isDigit();
        if (kind == ValueKind::Decimal && (code || !toDecimal(cell)))
            return ValueKind::Text;
    }
    return any ? std::optional<ValueKind>(kind) : std::nullopt;
}

ValueKind widest(ValueKind a, ValueKind b)
{
    return std::max(a, b);
}

const char *kindName(ValueKind kind)
{
    switch (kind) {
    case ValueKind::Integer: return "integer";
    case ValueKind::Decimal: return "decimal";
    default: return "text";
    }
}

std::optional<ValueKind> kindOfName(const QString &name)
{
    for (const ValueKind kind : {ValueKind::Integer, ValueKind::Decimal, ValueKind::Text})
        if (name == QLatin1String(kindName(kind)))
            return kind;
    return std::nullopt;
}

} // namespace meridor
