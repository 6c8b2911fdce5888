// SPDX-License-Identifier: MIT
/// Conversion of cells to values: decimal numbers, 32-bit integers or texts.
#pragma once
#include <optional>
#include <string_view>
#include "core/export.h"
#include "core/formats/featureTable.h"

namespace meridor {

// Blanks around a number are ignored; the decimal separator is a point.
/// Nothing if the text is no finite number.
MERIDOR_EXPORT std::optional<double> toDecimal(std::string_view text);
/// Nothing if the text is no integer of 32 bits, or has leading zeros: such texts are codes, not
/// numbers.
MERIDOR_EXPORT std::optional<int> toInteger(std::string_view text);

/// The narrowest kind that can hold all cells; nothing if all cells are missing.
MERIDOR_EXPORT std::optional<ValueKind> recogniseKind(const Column &column);
/// The narrowest kind that can hold the values of both.
MERIDOR_EXPORT ValueKind widest(ValueKind a, ValueKind b);

MERIDOR_EXPORT const char *kindName(ValueKind kind);
/// The kind for "decimal", "integer" or "text"; nothing for any other name.
MERIDOR_EXPORT std::optional<ValueKind> kindOfName(const QString &name);

} // namespace meridor
