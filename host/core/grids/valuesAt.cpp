// SPDX-License-Identifier: MIT
#include "core/grids/valuesAt.h"
#include "core/grids/gridValues.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/MDataset.h"

namespace meridor {

ValuesAt valuesAt(int dataset, qint64 time)
{
    ValuesAt values;
    values.numeric = datasetOf(dataset)->IsNumeric();
    bool there = false;
    if (rasterOf(dataset)) {
        values.numbers = gridValues(dataset, time);
        there = true;
    } else if (values.numeric) {
        there = VORN_GetNumericValues(dataset, 0, time, values.numbers, values.missing);
    } else {
        QVector<QString> texts;
        there = VORN_GetDataValues(dataset, 0, time, texts, values.missing);
        values.texts = QStringList(texts.toList());
    }
    if (!there) {
        const int geography = VORN_GetGeographyId(dataset);
        fail(QStringLiteral("%1 holds no values at %2")
                 .arg(datasetName(dataset), axisOf(geography).show(time)));
    }
    return values;
}

} // namespace meridor
