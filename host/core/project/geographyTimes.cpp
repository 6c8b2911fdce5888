// SPDX-License-Identifier: MIT
#include "core/project/geographyTimes.h"
#include "core/project/catalog.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "datainterface/MRasterData.h"

namespace meridor {

TimeStamp timeBoundsOf(int geography)
{
    MGeoData &data = *geographyOf(geography);
    const auto *const raster = dynamic_cast<const MRasterData *>(&data);
    if (!raster && !data.IsStatic())
        return data.GetTimeBounds();
    TimeStamp bounds = raster && !data.IsStatic() ? raster->GetTimeStamp() : TimeStamp::Invalid;
    for (const int id : datasetIds(geography)) {
        TimeStamp own;
        if (datasetOf(id)->IsStatic() || !datasetOf(id)->GetTimeBounds(own))
            continue;
        bounds = bounds.isValid() ? bounds + own : own;
    }
    return bounds.isValid() ? bounds : data.GetTimeBounds();
}

QVector<Interval> objectTimes(int geography)
{
    QVector<Interval> times;
    if (dynamic_cast<const MRasterData *>(geographyOf(geography)))
        return {Interval(timeBoundsOf(geography))};
    VORN_GetAllObjectTimes(geography, times);
    return times;
}

} // namespace meridor
