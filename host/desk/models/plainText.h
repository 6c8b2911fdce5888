// SPDX-License-Identifier: MIT
/// Names and messages where Qt reads signs: they are shown letter by letter.
#pragma once
#include <QString>

namespace meridor {

/// Tool tips take a text that looks like markup for markup.
inline QString plainTip(const QString &text)
{
    return text.isEmpty() ? text
                          : QStringLiteral("<div style='white-space: pre-wrap'>%1</div>")
                                .arg(text.toHtmlEscaped());
}

/// In actions and tabs the letter after "&" is a key.
inline QString plainLabel(QString text)
{
    return text.replace(QLatin1Char('&'), QLatin1String("&&"));
}

/// In titles of windows "[*]" is the place of the mark of changes.
inline QString plainTitle(QString text)
{
    return text.replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
}

} // namespace meridor
