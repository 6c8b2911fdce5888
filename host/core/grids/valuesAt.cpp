// SPDX-License-Identifier: MIT
#include "core/grids/valuesAt.h"
#include <cmath>
#include "core/grids/gridValues.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "datainterface/RasterAPI.h"

namespace meridor {

std::optional<datum> valueOf(int dataset, int realization, unsigned int object, qint64 time)
{
    datum value;
    if (!rasterOf(dataset))
        return VORN_GetDataValue(dataset, realization, object, time, value)
                   ? std::optional<datum>(value)
                   : std::nullopt;
    const auto columns = static_cast<unsigned int>(
        VORN_GetGeographyProperties(VORN_GetGeographyId(dataset)).columns);
    return columns > 0
                   && VORN_GetRasterValue(dataset, realization, object % columns, object / columns,
                                          time, value)
               ? std::optional<datum>(value)
               : std::nullopt;
}

QString realizationText(int dataset, int realization)
{
    const int count = VORN_GetDatasetProperties(dataset).realizationCount;
    return count <= 1 ? QString()
                      : QStringLiteral("realization %1 of %2").arg(realization + 1).arg(count);
}

ValuesAt valuesAt(int dataset, qint64 time, int realization)
{
    ValuesAt values;
    values.numeric = datasetOf(dataset)->IsNumeric();
    bool there = false;
    if (rasterOf(dataset)) {
        values.numbers = gridValues(dataset, time, realization);
        there = true;
    } else if (values.numeric) {
        there = VORN_GetNumericValues(dataset, realization, time, values.numbers, values.missing);
    } else {
        QVector<QString> texts;
        there = VORN_GetDataValues(dataset, realization, time, texts, values.missing);
        values.texts = QStringList(texts.toList());
    }
    if (!there) {
        const int geography = VORN_GetGeographyId(dataset);
        fail(QStringLiteral("%1 holds no values at %2")
                 .arg(datasetName(dataset), axisOf(geography).show(time)));
    }
    return values;
}

QMap<MDatum, int> frequenciesOf(int dataset, int realization)
{
    // The table of the library is that of all realizations.
    const DatasetProps props = VORN_GetDatasetProperties(dataset);
    if (props.realizationCount <= 1)
        return datasetOf(dataset)->GetDataFrequencies();
    QMap<MDatum, int> counts;
    if (rasterOf(dataset)) {
        const bool numeric = datasetOf(dataset)->IsNumeric();
        for (const Interval &when : dataTimes(dataset, realization)) {
            stopIfCancelled();
            for (const double value : gridValues(dataset, instantOf(when), realization))
                if (!std::isnan(value))
                    ++counts[numeric ? MDatum(value) : MDatum(static_cast<qint64>(value))];
        }
        return counts;
    }
    const int objects = VORN_GetGeographyProperties(VORN_GetGeographyId(dataset)).objectCount;
    for (int object = 0; object < objects; ++object) {
        if (object % 256 == 0)
            stopIfCancelled();
        QVector<Interval> intervals;
        QVector<datum> values;
        VORN_GetObjectDataValues(dataset, realization, static_cast<unsigned>(object), intervals,
                                 values);
        for (const datum &value : qAsConst(values))
            ++counts[props.dataType == StringType    ? MDatum(value.stringValue)
                     : props.dataType == IntegerType ? MDatum(value.integerValue)
                                                     : MDatum(value.decimalValue)];
    }
    return counts;
}

} // namespace meridor
