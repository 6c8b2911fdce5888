// SPDX-License-Identifier: MIT
/// What the cells of a column mean: decimal numbers, 32-bit integers or texts.
#pragma once
#include <optional>
#include <string_view>
#include "core/export.h"
#include "core/formats/featureTable.h"

namespace meridor {

// Blanks around a number are left out of account; a point is the decimal point.
/// Nothing for a text that is no finite number.
MERIDOR_EXPORT std::optional<double> toDecimal(std::string_view text);
/// Nothing for what is no plain integer of 32 bits; texts with leading zeros are codes, not
/// numbers.
MERIDOR_EXPORT std::optional<int> toInteger(std::string_view text);

/// The narrowest kind that holds every cell that is not missing; nothing when there is none to look
/// at.
MERIDOR_EXPORT std::optional<ValueKind> recogniseKind(const Column &column);
/// The kind of both.
MERIDOR_EXPORT ValueKind widest(ValueKind a, ValueKind b);

MERIDOR_EXPORT const char *kindName(ValueKind kind);
/// "decimal", "integer" or "text"; nothing for anything else.
MERIDOR_EXPORT std::optional<ValueKind> kindOfName(const QString &name);

} // namespace meridor
