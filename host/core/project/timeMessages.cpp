// SPDX-License-Identifier: MIT
#include "core/project/timeMessages.h"

namespace meridor {

QString whyNoRange(const TimeAxis &axis, const QString &text)
{
    const int slash = text.indexOf(QLatin1Char('/'));
    if (slash > 0 && axis.span(text.left(slash)) && axis.span(text.mid(slash + 1)))
        return QStringLiteral("%1 ends before it starts").arg(text);
    return QStringLiteral("%1 is no %2").arg(text, QLatin1String(timeFormatName(axis.format())));
}

QString whyNoTime(const TimeAxis &axis, const QString &text)
{
    return axis.range(text) ? QStringLiteral("%1 is a span, where one time is asked for").arg(text)
                            : whyNoRange(axis, text);
}

} // namespace meridor
