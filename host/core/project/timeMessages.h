// SPDX-License-Identifier: MIT
/// Messages about texts that denote no time.
#pragma once
#include <QString>
#include "core/export.h"
#include "core/project/times.h"

namespace meridor {

/// Says why `axis.range(text)` gives nothing.
MERIDOR_EXPORT QString whyNoRange(const TimeAxis &axis, const QString &text);
/// Says why `axis.span(text)` gives nothing.
MERIDOR_EXPORT QString whyNoTime(const TimeAxis &axis, const QString &text);

} // namespace meridor
