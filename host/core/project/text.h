// SPDX-License-Identifier: MIT
/// Numbers and lists as texts.
#pragma once
#include <QJsonValue>
#include <QString>
#include <QStringList>
#include "core/export.h"

namespace meridor {

/// The shortest text that reads back as the same number.
MERIDOR_EXPORT QString exactNumber(double value);
/// At most `decimals` places, trailing zeros dropped: for the eye.
MERIDOR_EXPORT QString shortNumber(double value, int decimals = 3);
/// Null for what JSON has no number for.
MERIDOR_EXPORT QJsonValue jsonNumber(double value);
/// "a, b, c and 17 more": lists in messages stay readable.
MERIDOR_EXPORT QString someOf(const QStringList &names, int most = 12);

} // namespace meridor
