// SPDX-License-Identifier: MIT
/// Conversion of cells to values: decimal numbers, 32-bit integers or texts.
#pragma once
#include <optional>
#include <string_view>
#include "core/export.h"
#include "core/formats/featureTable.h"

namespace meridor {

/// The text without blanks and line breaks around it.
MERIDOR_EXPORT std::string_view trimmed(std::string_view text);

// Blanks around a number are ignored.
/// Nothing if the text is no finite number with this decimal separator.
MERIDOR_EXPORT std::optional<double> toDecimal(std::string_view text, char decimal = '.');
/// Nothing if the text is no integer of 32 bits, or has leading zeros: such texts are codes, not
/// numbers.
MERIDOR_EXPORT std::optional<int> toInteger(std::string_view text);
/// Whether the text is a number with a comma in the place of the decimal point, such as "1,5".
MERIDOR_EXPORT bool looksLikeDecimalComma(std::string_view text);

/// What the cells of a column are.
struct CellKinds {
    std::optional<ValueKind> kind; ///< the narrowest that holds all cells; none if all are missing
    /// The first cell that is neither a number nor a code with leading zeros; -1 if there is none.
    int firstText = -1;
    int texts = 0;             ///< number of such cells
    int numbers = 0;           ///< number of cells that are numbers
    int firstCommaNumber = -1; ///< the first such cell that is a number with a decimal comma
};
/// @param exact  integers that a decimal number cannot hold exactly make the column text, since
///               they are keys or codes; otherwise they are rounded.
MERIDOR_EXPORT CellKinds recogniseKinds(const Column &column, int rows, bool exact);
/// The narrowest kind that can hold the values of both.
MERIDOR_EXPORT ValueKind widest(ValueKind a, ValueKind b);

MERIDOR_EXPORT const char *kindName(ValueKind kind);
/// The kind for "decimal", "integer" or "text"; nothing for any other name.
MERIDOR_EXPORT std::optional<ValueKind> kindOfName(const QString &name);

} // namespace meridor
