// SPDX-License-Identifier: MIT
#include "core/formats/values.h"
#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace meridor {

namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr const char *kBlanks = " \t\r\n";
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

/// The whole text as a number; a plus sign is allowed.
template <class T> std::optional<T> parse(std::string_view text)
{
    text = trimmed(text);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    T value{};
    const char *const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end)
        return std::nullopt;
    return value;
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// Whether the text has leading zeros, such as "007": a number would lose them.
bool isCode(std::string_view text)
{
    text = trimmed(text);
    if (!text.empty() && text[0] == '-')
        text.remove_prefix(1);
    return text.size() > 1 && text[0] == '0' && isDigit(text[1]);
}

} // namespace

std::optional<double> toDecimal(std::string_view text)
{
    const auto value = parse<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<int> toInteger(std::string_view text)
{
    return isCode(text) ? std::nullopt : parse<int>(text);
}

std::optional<ValueKind> recogniseKind(const Column &column)
{
    if (column.typed)
        return column.kind;
    bool any = false;
    ValueKind kind = ValueKind::Integer;
    for (int row = 0; row < column.cells.size(); ++row) {
        const std::string_view cell = column.cells.view(row);
        if (cell.empty())
            continue;
        any = true;
        if (kind == ValueKind::Integer && !toInteger(cell))
            kind = ValueKind::Decimal;
        if (kind == ValueKind::Decimal && (isCode(cell) || !toDecimal(cell)))
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
    case ValueKind::Integer:
        return "integer";
    case ValueKind::Decimal:
        return "decimal";
    default:
        return "text";
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
