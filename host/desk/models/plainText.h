// SPDX-License-Identifier: MIT
/// Texts of tool tips.
#pragma once
#include <QString>

namespace meridor {

/// Tool tips take a text that looks like markup for markup, and names and messages may look so.
inline QString plainTip(const QString &text)
{
    return text.isEmpty() ? text
                          : QStringLiteral("<div style='white-space: pre-wrap'>%1</div>")
                                .arg(text.toHtmlEscaped());
}

} // namespace meridor
