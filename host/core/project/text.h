// SPDX-License-Identifier: MIT
/// Numbers and lists as texts.
#pragma once
#include <QJsonValue>
#include <QString>
#include <QStringList>
#include "core/export.h"

namespace meridor {

/// The shortest text from which the same number is read.
MERIDOR_EXPORT QString exactNumber(double value);
/// For display: at most `decimals` decimal places, without trailing zeros.
MERIDOR_EXPORT QString shortNumber(double value, int decimals = 3);
/// Null for infinities and NaN, which JSON cannot represent.
MERIDOR_EXPORT QJsonValue jsonNumber(double value);
/// A list of at most `most` names for a message: "a, b, c and 17 more".
MERIDOR_EXPORT QString someOf(const QStringList &names, int most = 12);

} // namespace meridor
