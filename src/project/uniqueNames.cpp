// SPDX-License-Identifier: MIT
#include "project/uniqueNames.h"
#include "api/callFrame.h"

namespace datainterface {

QString uniqueName(const QString &name, const QSet<QString> &taken)
{
    QString candidate = name;
    for (int n = 2; taken.contains(candidate); ++n)
        candidate = name + QLatin1Char(' ') + QString::number(n);
    return candidate;
}

QString uniqueDatasetName(int geographyId, const QString &name)
{
    return onGeographySource(geographyId, name, [&name](MDataSource &source) {
        QSet<QString> taken;
        for (const DataId &id : source.GetDatasetIds())
            taken.insert(source.GetDisplayName(id));
        return uniqueName(name, taken);
    });
}

} // namespace datainterface
