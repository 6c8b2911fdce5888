// SPDX-License-Identifier: MIT
#include "datainterface/GeoPointTree.h"
#include "Common/detail/failure.h"
#include "api/pointTreeSource.h"
#include "api/rotation.h"
#include "datainterface/MRasterDataSource.h"
#include "datainterface/VORN_Progress.h"
#include "fennimark/FMPoint.h"
#include "fennimark/FMPolygon.h"
#include "geography/centroid.h"
#include "geography/shapeFrame.h"

using namespace datainterface;

namespace {

constexpr int kPointsPerPoll = 256; // between two polls for a cancel; the first point polls

/// Collects points with their ids until the user cancels.
class Gathered {
public:
    Gathered(int count, const PT_RotationMatrix &rotation) : mRotation(rotation)
    {
        mPoints.reserve(count);
        mIds.reserve(count);
    }
    /// False when the user has cancelled.
    bool add(const QPointF &point, int id)
    {
        mPoints.append(rotated(point, mRotation));
        mIds.append(id);
        return mPoints.size() % kPointsPerPoll != 1 || VORN_Progress::CheckForCancel(0, nullptr);
    }
    bool giveTo(FM_PointTree &tree) const
    {
        return tree.SetPoints(mPoints, mIds, VORN_Progress::CheckForCancel, 0, 100);
    }

private:
    const PT_RotationMatrix mRotation;
    QVector<QPointF> mPoints;
    QVector<int> mIds;
};

QPointF placeOf(const TreeObject *object, bool isPoint)
{
    const auto *shape = dynamic_cast<const FMObject *>(object);
    require(shape != nullptr, "Invalid object type");
    if (isPoint) {
        const Rect2D box = shape->GetBounds();
        require(box.xMin == box.xMax && box.yMin == box.yMax, "Invalid point bounds");
        return {box.xMin, box.yMin};
    }
    require(dynamic_cast<const FMPolygon *>(shape) != nullptr, "Invalid object type");
    return centroidOf(*shape);
}

bool setObjects(FM_PointTree &tree, const MVectorData &geography, qint64 time,
                const PT_RotationMatrix &rotation)
{
    Fennims &fennims = *geography.GetFennims();
    if (fennims.GetGeographyType() == Fennims::LineGeography)
        return false;
    const bool arePoints = fennims.GetGeographyType() == Fennims::PointGeography;
    const QVector<int> records = fennims.GetObservationsAtTime(time);
    Gathered gathered(records.size(), rotation);
    for (const int record : records) {
        const HeldObject held(*fennims.mTree, record, false);
        if (!gathered.add(placeOf(held.get(), arePoints), geography.GetObjectId(held.chainId())))
            return false;
    }
    return gathered.giveTo(tree);
}

void showPercentage(int percent)
{
    if (!VORN_Progress::UsingProgressBar())
        return;
    const QString text = QStringLiteral("Building point tree (%1%)...").arg(percent);
    VORN_Progress::SetProgressText(text.toUtf8().constData());
}

bool setCells(FM_PointTree &tree, const MRasterDataSource &grid, const PT_RotationMatrix &rotation)
{
    unsigned int columns = 0;
    unsigned int rows = 0;
    grid.GetRasterDims(columns, rows);
    Gathered gathered(static_cast<int>(grid.GetObjectCount()), rotation);
    int shown = -1;
    for (unsigned int row = 0; row < rows; ++row) {
        const auto percent = static_cast<int>(quint64(row) * 100 / rows);
        if (percent != shown)
            showPercentage(shown = percent);
        for (unsigned int column = 0; column < columns; ++column) {
            QPointF center;
            grid.GetPixelCenter(column, row, center);
            if (!gathered.add(center, static_cast<int>(grid.IndexFromColRow(column, row))))
                return false;
        }
    }
    return gathered.giveTo(tree);
}

} // namespace

bool GeoPointTree::SetPoints(const QVector<QPair<QPointF, int>> &points,
                             const PT_RotationMatrix &rotation)
{
    if (points.isEmpty())
        return true;
    Gathered gathered(points.size(), rotation);
    for (const auto &point : points) {
        if (!gathered.add(point.first, point.second))
            return false;
    }
    return gathered.giveTo(*this);
}

namespace datainterface {

bool setPointTree(FM_PointTree &tree, MGeoData &geography, qint64 time,
                  const PT_RotationMatrix &rotation)
{
    if (const auto *vectors = dynamic_cast<const MVectorData *>(&geography))
        return setObjects(tree, *vectors, time, rotation);
    const auto *grid = dynamic_cast<const MRasterDataSource *>(geography.GetDataSource());
    return grid && setCells(tree, *grid, rotation);
}

} // namespace datainterface
