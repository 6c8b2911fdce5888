// SPDX-License-Identifier: MIT
#include "core/grids/zones.h"
#include <cmath>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "core/project/shapeAccess.h"
#include "fennimark/Fennims.h"

namespace meridor {

// Two passes, the mean and then the deviations from it: a sum of squares would lose digits by
// cancellation.
ZoneStatistics statisticsOf(const QVector<CellShare> &shares, const QVector<double> &values,
                            int columns)
{
    ZoneStatistics result;
    const auto valueOf = [&](const CellShare &share) {
        return values[static_cast<int>(share.row) * columns + static_cast<int>(share.column)];
    };
    for (const CellShare &share : shares) {
        const double value = valueOf(share);
        if (!std::isfinite(value))
            continue;
        result.minimum = result.cells == 0 ? value : qMin(result.minimum, value);
        result.maximum = result.cells == 0 ? value : qMax(result.maximum, value);
        result.sum += value * share.area;
        result.area += share.area;
        ++result.cells;
    }
    if (result.cells == 0)
        return result;
    result.mean = result.sum / result.area;
    double squares = 0;
    for (const CellShare &share : shares) {
        const double deviation = valueOf(share) - result.mean;
        if (std::isfinite(deviation))
            squares += deviation * deviation * share.area;
    }
    result.deviation = std::sqrt(squares / result.area);
    return result;
}

Zones::Zones(int grid, int polygons) : mPolygons(polygons), mShares(grid)
{
    if (!dynamic_cast<const MVectorData *>(geographyOf(polygons)))
        fail(QStringLiteral("%1 has no polygons").arg(geographyName(polygons)));
}

const QVector<QVector<CellShare>> &Zones::at(qint64 time, const Progress &progress)
{
    const auto &geography = *dynamic_cast<const MVectorData *>(geographyOf(mPolygons));
    const Fennims &shapes = *geography.GetFennims();
    mNow = QVector<QVector<CellShare>>(static_cast<int>(geography.GetObjectCount()));
    const qint64 when = shapeTime(mPolygons, time);
    for (const int object : objectsAt(mPolygons, when)) {
        const int record =
            shapes.GetChainById(geography.GetFennimId(static_cast<unsigned>(object)))
                ->GetObservation(when)
                .second;
        auto known = mOfRecord.find(record);
        if (known == mOfRecord.end()) {
            known = mOfRecord.insert(record, mShares.of(ringsOf(geography, object, when)));
            progress.report(100 * object / mNow.size(), "Cutting cells...");
        }
        mNow[object] = *known;
    }
    return mNow;
}

} // namespace meridor
