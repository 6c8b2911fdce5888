// SPDX-License-Identifier: MIT
#include "project/datasetNames.h"
#include <QSet>
#include "Common/uniqueName.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"

namespace datainterface {

QString uniqueDatasetName(const MGeoData *geography, const QString &name)
{
    MDataSource *source = geography ? geography->GetDataSource() : nullptr;
    if (!source)
        return name;
    QSet<QString> taken;
    for (const DataId &id : source->GetDatasetIds())
        taken.insert(source->GetDisplayName(id));
    return uniqueName(name, taken);
}

} // namespace datainterface
