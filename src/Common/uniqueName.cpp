// SPDX-License-Identifier: MIT
#include "Common/uniqueName.h"

namespace datainterface {

QString uniqueName(const QString &name, const QSet<QString> &taken)
{
    QString candidate = name;
    for (int n = 2; taken.contains(candidate); ++n)
        candidate = name + QLatin1Char(' ') + QString::number(n);
    return candidate;
}

} // namespace datainterface
