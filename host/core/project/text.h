// SPDX-License-Identifier: MIT
/// Numbers, lists and errors as texts.
#pragma once
#include <QJsonValue>
#include <QString>
#include <QStringList>
#include <cerrno>
#include "core/export.h"

namespace meridor {

/// The shortest text from which the same number is read.
MERIDOR_EXPORT QString exactNumber(double value);
/// For display: at most `decimals` decimal places, without trailing zeros.
MERIDOR_EXPORT QString shortNumber(double value, int decimals = 3);
/// A count with its noun, "1 object" or "2 objects": nouns in -s, -x and -ex take their endings.
MERIDOR_EXPORT QString counted(qint64 count, const char *noun);
/// The same for translated texts.
/// @param one, many  with %1 for the number.
MERIDOR_EXPORT QString counted(qint64 count, const QString &one, const QString &many);
/// Null for infinities and NaN, which JSON cannot represent.
MERIDOR_EXPORT QJsonValue jsonNumber(double value);
/// A list of at most `most` names for a message: "a, b, c and 17 more".
MERIDOR_EXPORT QString someOf(const QStringList &names, int most = 12);
/// The items of a list in one text, separated by commas as in a row of a CSV file: an item that
/// begins with a quotation mark ends with one, may hold separators, and holds quotation marks twice.
/// Empty items without quotation marks are left out. Raises a Failure of kind Misused for a
/// quotation mark that is not closed, or is followed by something else than a separator.
MERIDOR_EXPORT QStringList listItems(const QString &text, QChar separator = QLatin1Char(','));
/// The text from which listItems reads these items.
MERIDOR_EXPORT QString listText(const QStringList &items);
/// The name that `word` is most likely a misspelling of: the one that the fewest insertions,
/// deletions, replacements and swaps of neighbours make of it, at most half of its length and at
/// least one. Empty if there is none.
MERIDOR_EXPORT QString nearestOf(const QString &word, const QStringList &names);
/// The system's text for an error, such as "No space left on device".
MERIDOR_EXPORT QString systemError(int number = errno);

} // namespace meridor
