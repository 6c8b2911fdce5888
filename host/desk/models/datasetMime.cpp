// SPDX-License-Identifier: MIT
#include "desk/models/datasetMime.h"
#include <QMimeData>
#include "core/project/catalog.h"

namespace meridor {

QMimeData *mimeOf(int dataset)
{
    auto *const data = new QMimeData;
    data->setData(QLatin1String(kDatasetMime), QByteArray::number(dataset));
    return data;
}

int datasetOf(const QMimeData *data)
{
    if (!data || !data->hasFormat(QLatin1String(kDatasetMime)))
        return -1;
    bool isNumber = false;
    const int dataset = data->data(QLatin1String(kDatasetMime)).toInt(&isNumber);
    return isNumber && datasetOf(dataset) ? dataset : -1;
}

} // namespace meridor
