// SPDX-License-Identifier: MIT
#include "core/grids/zones.h"
#include <cmath>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "core/project/shapeAccess.h"
#include "fennimark/Fennims.h"

namespace meridor {
namespace {

constexpr qint64 kMostKeptCells = 4 << 20; // 64 MiB of shares

} // namespace

// Two passes, the mean and then the deviations from it: a sum of squares would lose digits by
// cancellation.
ZoneStatistics statisticsOf(const QVector<CellShare> &shares, const QVector<double> &values)
{
    ZoneStatistics result;
    for (int i = 0; i < shares.size(); ++i) {
        const CellShare &share = shares[i];
        const double value = values[i];
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
    for (int i = 0; i < shares.size(); ++i) {
        const double deviation = values[i] - result.mean;
        if (std::isfinite(deviation))
            squares += deviation * deviation * shares[i].area;
    }
    result.deviation = std::sqrt(squares / result.area);
    return result;
}

Zones::Zones(int grid, int polygons) : mPolygons(polygons), mShares(grid)
{
    const auto *geography = dynamic_cast<const MVectorData *>(geographyOf(polygons));
    if (!geography)
        fail(QStringLiteral("%1 has no polygons").arg(geographyName(polygons)));
    mCount = static_cast<int>(geography->GetObjectCount());
}

void Zones::each(qint64 time, const Progress &progress,
                 const std::function<void(int, const QVector<CellShare> &)> &visit)
{
    const auto &geography = *dynamic_cast<const MVectorData *>(geographyOf(mPolygons));
    const qint64 when = shapeTime(mPolygons, time);
    for (const int object : objectsAt(mPolygons, when)) {
        visit(object, sharesOf(geography, object, when));
        progress.report(static_cast<int>(qint64(100) * object / mCount), "Cutting cells...");
    }
}

/// Valid until the next call.
const QVector<CellShare> &Zones::sharesOf(const MVectorData &geography, int object, qint64 when)
{
    const int record = geography.GetFennims()
                           ->GetChainById(geography.GetFennimId(static_cast<unsigned>(object)))
                           ->GetObservation(when)
                           .second;
    if (const auto known = mKept.constFind(record); known != mKept.constEnd())
        return *known;
    mLast = mShares.of(ringsOf(geography, object, when));
    if (mKeptCells + mLast.size() > kMostKeptCells)
        return mLast;
    mKeptCells += mLast.size();
    return *mKept.insert(record, mLast);
}

} // namespace meridor
