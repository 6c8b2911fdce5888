// SPDX-License-Identifier: MIT
// Queries for cells by place. Each query first finds the window of cells that its bounding
// rectangle meets, and then tests the centres of these cells.
#include "datainterface/MRasterDataSource.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include "Common/detail/failure.h"
#include "fennimark/FMPolygon.h"
#include "fennimark/geometryTypes.h"

using namespace datainterface;

namespace {

/// Truncates a number to the range of int; 0 for NaN.
int truncated(double index)
{
    constexpr double kLimit = std::numeric_limits<int>::max();
    return std::isnan(index) ? 0 : static_cast<int>(std::max(-kLimit, std::min(kLimit, index)));
}

unsigned int indexInGrid(double index, unsigned int count)
{
    return static_cast<unsigned int>(
        std::max(0.0, std::min(static_cast<double>(count - 1), index)));
}

bool isFinite(const QRectF &rect)
{
    return std::isfinite(rect.x()) && std::isfinite(rect.y())
           && std::isfinite(rect.x() + rect.width()) && std::isfinite(rect.y() + rect.height());
}

double squaredDistance(const QPointF &a, const QPointF &b)
{
    const QPointF d = a - b;
    return d.x() * d.x() + d.y() * d.y();
}

} // namespace

FMGrid MRasterDataSource::GetGrid() const
{
    FMGrid grid;
    grid.left = mBounds.x();
    grid.bottom = mBounds.y();
    grid.top = top();
    grid.cellWidth = GetPixelWidth();
    grid.cellHeight = GetPixelHeight();
    return grid;
}

bool MRasterDataSource::GetWindow(const QRectF &rect, bool centersOnly, FMGridWindow &window) const
{
    if (!isFinite(rect) || !rect.intersects(mBounds))
        return false;
    QRectF r = rect.intersected(mBounds);
    const double width = GetPixelWidth();
    const double height = GetPixelHeight();
    if (centersOnly && r.width() > width)
        r.adjust(width / 2, 0.0, -width / 2, 0.0);
    if (centersOnly && r.height() > height)
        r.adjust(0.0, height / 2, 0.0, -height / 2);
    window.firstColumn = indexInGrid((r.x() - mBounds.x()) / width, mColumns);
    window.lastColumn = indexInGrid((r.x() + r.width() - mBounds.x()) / width, mColumns);
    window.firstRow = indexInGrid((top() - (r.y() + r.height())) / height, mRows);
    window.lastRow = indexInGrid((top() - r.y()) / height, mRows);
    return true;
}

bool MRasterDataSource::RectQuery(const QRectF &rect, bool, unsigned int &firstColumn,
                                  unsigned int &firstRow, unsigned int &lastColumn,
                                  unsigned int &lastRow) const
{
    FMGridWindow window;
    if (!GetWindow(rect, false, window))
        return false;
    firstColumn = window.firstColumn;
    firstRow = window.firstRow;
    lastColumn = window.lastColumn;
    lastRow = window.lastRow;
    return true;
}

bool MRasterDataSource::RectQuery(const QRectF &rect, bool centersOnly,
                                  QVector<Pixel> &pixels) const
{
    FMGridWindow window;
    if (!GetWindow(rect, centersOnly, window))
        return false;
    pixels.clear();
    for (unsigned int column = window.firstColumn; column <= window.lastColumn; ++column) {
        for (unsigned int row = window.firstRow; row <= window.lastRow; ++row)
            pixels.append({column, row});
    }
    return true;
}

bool MRasterDataSource::CircleQuery(const QPointF &center, double radius,
                                    QVector<Pixel> &pixels) const
{
    QVector<Pixel> candidates;
    Pixel here;
    const QRectF square(center.x() - radius, center.y() - radius, 2 * radius, 2 * radius);
    if (!(radius >= 0.0))
        return false;
    const bool isPoint = square.right() <= square.left() || square.bottom() <= square.top();
    // A rectangle without extent meets no cell, but a disc of radius 0 contains its centre.
    if (isPoint && PointQuery(center.x(), center.y(), here.first, here.second, true))
        candidates.append(here);
    else if (!RectQuery(square, true, candidates))
        return false;
    pixels.clear();
    for (const Pixel &pixel : qAsConst(candidates)) {
        QPointF point;
        require(GetPixelCenter(pixel.first, pixel.second, point), "Invalid pixel id");
        if (squaredDistance(point, center) <= radius * radius)
            pixels.append(pixel);
    }
    return true;
}

bool MRasterDataSource::PolygonQuery(const void *polygon, QVector<Pixel> &pixels) const
{
    pixels.clear();
    if (!polygon)
        return false;
    const auto &area = *static_cast<const FMPolygon *>(polygon);
    const Rect2D box = const_cast<FMPolygon &>(area).GetObjectBounds(); // does not modify
    FMGridWindow window;
    if (!GetWindow(QRectF(box.xMin, box.yMin, box.xMax - box.xMin, box.yMax - box.yMin), true,
                   window))
        return false;
    area.ContainedCenters(GetGrid(), window, pixels);
    return !pixels.isEmpty();
}

bool MRasterDataSource::GetPixelCenter(unsigned int column, unsigned int row, QPointF &point) const
{
    point = QPointF((column + 0.5) * GetPixelWidth() + mBounds.x(),
                    top() - (row + 0.5) * GetPixelHeight());
    return holds(column, row);
}

bool MRasterDataSource::GetPixelBounds(unsigned int column, unsigned int row, QRectF &rect) const
{
    if (!holds(column, row))
        return false;
    const double width = GetPixelWidth();
    const double height = GetPixelHeight();
    const QPointF low(column * width + mBounds.x(), row * height + mBounds.y());
    const QPointF high((column + 1) * width + mBounds.x(), (row + 1) * height + mBounds.y());
    rect = QRectF(low, high);
    return true;
}

bool MRasterDataSource::PointQuery(double x, double y, unsigned int &column, unsigned int &row,
                                   bool clamp) const
{
    const int columnIndex = truncated((x - mBounds.x()) / GetPixelWidth());
    const int rowIndex = truncated((top() - y) / GetPixelHeight());
    const auto inGrid = [clamp](int index, unsigned int count) {
        return static_cast<unsigned int>(clamp ? qBound(0, index, static_cast<int>(count) - 1)
                                               : index);
    };
    column = inGrid(columnIndex, mColumns);
    row = inGrid(rowIndex, mRows);
    return mBounds.contains(QPointF(x, y));
}

bool MRasterDataSource::PointQuery(double x, double y, unsigned int &id) const
{
    unsigned int column = 0;
    unsigned int row = 0;
    PointQuery(x, y, column, row, false);
    id = IndexFromColRow(column, row);
    return holds(column, row) && !std::isnan(x) && !std::isnan(y);
}

bool MRasterDataSource::ColRowFromIndex(int id, unsigned int &column, unsigned int &row) const
{
    if (mColumns == 0)
        return false;
    column = static_cast<unsigned int>(id) % mColumns;
    row = static_cast<unsigned int>(id) / mColumns;
    return holds(column, row);
}

// The ellipse is the conic A x^2 + B x y + C y^2 = 1 about its centre, where its linear terms
// vanish and nothing cancels. With Q = B^2 - 4 A C its extremes are the roots of Q y^2 + 4 A = 0
// and Q x^2 + 4 C = 0.
bool MRasterDataSource::EllipseQuery(const QPointF &center, double a, double b, double angle,
                                     bool sortByDistance, QVector<Pixel> &pixels) const
{
    if (!(a > 0.0) || !(b > 0.0) || !std::isfinite(a) || !std::isfinite(b) || !std::isfinite(angle))
        return false;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    const double A = c * c / (a * a) + s * s / (b * b);
    const double C = s * s / (a * a) + c * c / (b * b);
    const double B = std::sin(2 * angle) * (1 / (a * a) - 1 / (b * b));
    const double Q = -4 / (a * a * b * b); // B^2 - 4 A C without its cancellation
    require(-16 * Q * A >= 0.0 && -16 * Q * C >= 0.0, "det >= 0");
    const double halfWidth = std::sqrt(-4 * C / Q);
    const double halfHeight = std::sqrt(-4 * A / Q);
    FMGridWindow window;
    if (!GetWindow(
            QRectF(center.x() - halfWidth, center.y() - halfHeight, 2 * halfWidth, 2 * halfHeight),
            false, window))
        return false;

    struct Found {
        Pixel pixel;
        double distance;
    };
    QVector<Found> found;
    for (unsigned int row = window.firstRow; row <= window.lastRow; ++row) {
        for (unsigned int column = window.firstColumn; column <= window.lastColumn; ++column) {
            QPointF point;
            GetPixelCenter(column, row, point);
            const QPointF d = point - center;
            if ((A * d.x() + B * d.y()) * d.x() + C * d.y() * d.y() <= 1.0)
                found.append({{column, row}, squaredDistance(point, center)});
        }
    }
    if (sortByDistance)
        std::stable_sort(found.begin(), found.end(),
                         [](const Found &x, const Found &y) { return x.distance < y.distance; });
    pixels.clear();
    pixels.reserve(found.size());
    for (const Found &cell : qAsConst(found))
        pixels.append(cell.pixel);
    return true;
}
