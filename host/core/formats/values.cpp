// SPDX-License-Identifier: MIT
#include "core/formats/values.h"
#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>
#include <system_error>

namespace meridor {

std::string_view trimmed(std::string_view text)
{
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

namespace {

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

/// Whether the text is an integer that a decimal number does not hold exactly.
bool isWideInteger(std::string_view text)
{
    text = trimmed(text);
    if (!text.empty() && (text[0] == '-' || text[0] == '+'))
        text.remove_prefix(1);
    if (text.size() < 16 || !std::all_of(text.begin(), text.end(), isDigit))
        return false;
    constexpr quint64 kExact = quint64(1) << 53;
    const auto value = parse<quint64>(text);
    return !value || *value > kExact;
}

} // namespace

std::optional<double> toDecimal(std::string_view text, char decimal)
{
    if (decimal != '.') {
        if (text.find('.') != std::string_view::npos)
            return std::nullopt; // between thousands, or of another convention
        std::string pointed(text);
        std::replace(pointed.begin(), pointed.end(), decimal, '.');
        return toDecimal(pointed);
    }
    const auto value = parse<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<int> toInteger(std::string_view text)
{
    return isCode(text) ? std::nullopt : parse<int>(text);
}

bool looksLikeDecimalComma(std::string_view text)
{
    return std::count(text.begin(), text.end(), ',') == 1 && toDecimal(text, ',').has_value();
}

CellKinds recogniseKinds(const Column &column, int rows, bool exact)
{
    CellKinds found;
    ValueKind kind = ValueKind::Integer;
    bool any = false;
    for (int row = 0; row < rows; ++row) {
        const std::string_view cell = column.view(row);
        if (cell.empty())
            continue;
        any = true;
        if (column.typed)
            break;
        if (kind == ValueKind::Integer && toInteger(cell)) {
            ++found.numbers;
        } else if (isCode(cell) || (exact && isWideInteger(cell))) {
            kind = ValueKind::Text;
        } else if (toDecimal(cell, column.decimal)) {
            ++found.numbers;
            kind = std::max(kind, ValueKind::Decimal);
        } else {
            kind = ValueKind::Text;
            if (found.texts++ == 0)
                found.firstText = row;
            if (found.firstCommaNumber < 0 && looksLikeDecimalComma(cell))
                found.firstCommaNumber = row;
        }
    }
    if (column.typed)
        found.kind = column.kind;
    else if (any)
        found.kind = kind;
    return found;
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
