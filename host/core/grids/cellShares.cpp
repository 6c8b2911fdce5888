// SPDX-License-Identifier: MIT
// The library's polygon query counts the rows of its cells upwards from the smallest y, but takes
// their range from the rows of the polygon's bounding box counted from the top. Both ranges agree
// if the box is vertically centred in the grid. The polygon is therefore shifted by whole rows to
// the centre of an auxiliary grid, which has one row more than the grid if the box could not be
// centred otherwise.
#include "core/grids/cellShares.h"
#include <QPolygonF>
#include <algorithm>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/RasterAPI.h"

namespace meridor {
namespace {

QRectF boxOf(const QList<QVector<QPointF>> &rings)
{
    QRectF box;
    for (const QVector<QPointF> &ring : rings)
        box |= QPolygonF(ring).boundingRect();
    return box;
}

/// The places first + (i + 0.5) * step of `count` cells that are from `low` to `high`: first and last
/// index, empty if the last one is smaller.
std::pair<int, int> centersBetween(double first, double step, int count, double low, double high)
{
    const auto center = [&](int i) { return first + (i + 0.5) * step; };
    const auto index = [&](double place) {
        return static_cast<int>(std::clamp((place - first) / step - 0.5, -1.0, count + 0.0));
    };
    int from = std::max(0, index(low) - 1);
    int to = std::min(count - 1, index(high) + 1);
    while (from < count && center(from) < low)
        ++from;
    while (to >= 0 && center(to) > high)
        --to;
    return {from, to};
}

} // namespace

QVector<CellShare> sharesWithRect(int geography, const QRectF &rect)
{
    RasterPixels pixels;
    QVector<double> areas;
    VORN_QueryRasterWithRect(geography, rect, pixels, &areas);
    QVector<CellShare> shares;
    for (int i = 0; i < pixels.size(); ++i)
        if (areas[i] > 0)
            shares.append({pixels[i].first, pixels[i].second, areas[i]});
    return shares;
}

RasterPixels centersInRect(int geography, const QRectF &rect)
{
    const GeoProps props = VORN_GetGeographyProperties(geography);
    const double top = props.bounds.y() + props.bounds.height();
    const auto [left, right] = centersBetween(props.bounds.x(), props.pixelWidth, props.columns,
                                              rect.left(), rect.x() + rect.width());
    // Rows count downwards, so the distances from the top ascend.
    const auto [first, last] = centersBetween(0, props.pixelHeight, props.rows,
                                              top - (rect.y() + rect.height()), top - rect.y());
    RasterPixels pixels;
    for (int row = first; row <= last; ++row)
        for (int column = left; column <= right; ++column)
            pixels.append({static_cast<unsigned>(column), static_cast<unsigned>(row)});
    return pixels;
}

CellShares::CellShares(int geography) : mGeography(geography)
{
    const GeoProps props = VORN_GetGeographyProperties(geography);
    mRows = props.rows;
    mColumns = props.columns;
    mBounds = props.bounds;
    mPixelHeight = props.pixelHeight;
}

CellShares::~CellShares()
{
    for (const int grid : mGrids)
        if (grid >= 0)
            controller().RemoveGeography(grid);
}

/// The auxiliary grid in which `rows` rows can be centred: it has mRows or mRows + 1 rows.
int CellShares::gridFor(int rows)
{
    const int more = (mRows - rows) % 2;
    if (mGrids[more] < 0) {
        QRectF bounds = mBounds;
        bounds.setHeight((mRows + more) * mPixelHeight);
        mGrids[more] = VORN_CreateNewRasterGeography(
            QStringLiteral("scratch"), static_cast<unsigned>(mRows + more),
            static_cast<unsigned>(mColumns), bounds, Interval{0, 0, true, true}, TF_Integer,
            QString(), QString());
    }
    if (mGrids[more] < 0)
        fail(QStringLiteral("%1: no room for a second grid").arg(geographyName(mGeography)));
    return mGrids[more];
}

QVector<CellShare> CellShares::of(const QList<QVector<QPointF>> &rings)
{
    unsigned firstColumn = 0;
    unsigned firstRow = 0;
    unsigned lastColumn = 0;
    unsigned lastRow = 0;
    if (!VORN_QueryRasterWithRect(mGeography, boxOf(rings), firstColumn, firstRow, lastColumn,
                                  lastRow))
        return {};
    const int rows = static_cast<int>(lastRow - firstRow) + 1;
    const int grid = gridFor(rows);
    const int gridRows = mRows + (mRows - rows) % 2;
    const int margin = (gridRows - rows) / 2;
    // Rows count from the top, and the lower edges of both grids coincide.
    const int rowsUp = (gridRows - mRows) + static_cast<int>(firstRow) - margin;
    QList<QVector<QPointF>> moved = rings;
    for (QVector<QPointF> &ring : moved)
        for (QPointF &vertex : ring)
            vertex.ry() += rowsUp * mPixelHeight;
    RasterPixels pixels;
    QVector<double> areas;
    if (!VORN_QueryRasterWithPolygon(grid, moved, pixels, &areas))
        fail(QStringLiteral("a shape is no polygon with an area"));
    QVector<CellShare> shares;
    for (int i = 0; i < pixels.size(); ++i) {
        const int fromTop = gridRows - 1 - static_cast<int>(pixels[i].second);
        const int row = fromTop - margin + static_cast<int>(firstRow);
        if (row >= 0 && row < mRows) // not in the row that was added
            shares.append({pixels[i].first, static_cast<unsigned>(row), areas[i]});
    }
    return shares;
}

} // namespace meridor
