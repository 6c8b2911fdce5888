// SPDX-License-Identifier: MIT
#include "datainterface/RasterAPI.h"
#include <algorithm>
#include <memory>
#include "api/shapeCalls.h"
#include "datainterface/MRasterData.h"
#include "datainterface/MRasterDataSource.h"
#include "fennimark/FMPolygon.h"

using namespace datainterface;

namespace {

template <class Call> bool onGrid(int geographyId, Call call)
{
    return onGeographySource<MRasterDataSource>(geographyId, false, call);
}

std::unique_ptr<FMPolygon> polygonOf(const QList<QVector<QPointF>> &rings)
{
    QList<QPolygonF> polygons;
    for (const QVector<QPointF> &ring : rings)
        polygons.append(QPolygonF(ring));
    return std::make_unique<FMPolygon>(polygons, 0);
}

/// The simple pieces of a polygon. The pieces are owned, unless the polygon is simple and its own
/// only piece.
class SimplePieces {
public:
    explicit SimplePieces(const FMPolygon &polygon)
    {
        if (polygon.IsSimple()) {
            mPieces.append(&polygon);
            return;
        }
        mOwns = true;
        mIsWhole = polygon.Decompose(mPieces);
    }
    ~SimplePieces()
    {
        if (mOwns)
            qDeleteAll(mPieces);
    }
    Q_DISABLE_COPY(SimplePieces)
    bool isWhole() const { return mIsWhole; }
    const QVector<const FMPolygon *> &list() const { return mPieces; }

private:
    QVector<const FMPolygon *> mPieces;
    bool mOwns = false;
    bool mIsWhole = true;
};

bool isBefore(const FMCellArea &a, const FMCellArea &b)
{
    return a.column != b.column ? a.column < b.column : a.row < b.row;
}

/// Sorts the cells of several pieces and merges those that several pieces share, adding their
/// areas. The cells of one piece are sorted and different already.
void mergeCells(QVector<FMCellArea> &cells)
{
    if (!std::is_sorted(cells.begin(), cells.end(), isBefore))
        std::stable_sort(cells.begin(), cells.end(), isBefore); // stable: sums follow the pieces
    auto last = cells.begin();
    for (auto cell = cells.begin(); cell != cells.end(); ++cell) {
        if (cell == last)
            continue;
        if (isBefore(*last, *cell))
            *++last = *cell;
        else
            last->area += cell->area;
    }
    if (!cells.isEmpty())
        cells.erase(last + 1, cells.end());
}

bool queryPolygon(int geographyId, const FMPolygon &polygon, RasterPixels &pixels,
                  QVector<double> *areas)
{
    return onGrid(geographyId, [&](const MRasterDataSource &source) {
        const SimplePieces pieces(polygon);
        if (!pieces.isWhole())
            return false;
        QVector<FMCellArea> shared;
        bool meetsGrid = false;
        for (const FMPolygon *piece : pieces.list()) {
            // GetObjectBounds is not const, but does not change the polygon.
            const Rect2D box = const_cast<FMPolygon *>(piece)->GetObjectBounds();
            FMGridWindow window;
            if (!source.GetWindow(
                    QRectF(box.xMin, box.yMin, box.xMax - box.xMin, box.yMax - box.yMin), false,
                    window))
                continue;
            meetsGrid = true;
            QVector<FMCellArea> cells;
            piece->CellAreas(source.GetGrid(), window, cells);
            shared = shared.isEmpty() ? cells : shared + cells;
        }
        if (!meetsGrid)
            return false;
        mergeCells(shared);
        pixels.resize(shared.size());
        std::transform(shared.cbegin(), shared.cend(), pixels.begin(),
                       [](const FMCellArea &cell) { return qMakePair(cell.column, cell.row); });
        if (!areas)
            return true;
        areas->resize(shared.size());
        std::transform(shared.cbegin(), shared.cend(), areas->begin(),
                       [](const FMCellArea &cell) { return cell.area; });
        return true;
    });
}

/// The length of the overlap of two spans.
double overlap(double low, double high, double otherLow, double otherHigh)
{
    return std::max(0.0, std::min(high, otherHigh) - std::max(low, otherLow));
}

} // namespace

bool VORN_GetPixelCentersInRect(int geographyId, const QRectF &rect, RasterPixels &pixels)
{
    return onGrid(geographyId, [&](const MRasterDataSource &source) {
        return source.RectQuery(rect, true, pixels);
    });
}

bool VORN_GetPixelCentersInPolygon(int geographyId, const QList<QVector<QPointF>> &rings,
                                   RasterPixels &pixels)
{
    return onGrid(geographyId, [&](const MRasterDataSource &source) {
        try {
            return source.PolygonQuery(polygonOf(rings).get(), pixels);
        } catch (...) { // a vertex list of any size can run out of memory
            return false;
        }
    });
}

bool VORN_GetPixelCentersInPolygon(int geographyId, int polygonGeography, unsigned int object,
                                   qint64 time, RasterPixels &pixels)
{
    return onGrid(geographyId, [&](const MRasterDataSource &source) {
        return onShape<FMPolygon>(polygonGeography, object, time, [&](const FMPolygon &polygon) {
            return source.PolygonQuery(&polygon, pixels);
        });
    });
}

bool VORN_QueryRasterWithRect(int geographyId, const QRectF &rect, RasterPixels &pixels,
                              QVector<double> *areas)
{
    return onGrid(geographyId, [&](const MRasterDataSource &source) {
        FMGridWindow window;
        if (!source.GetWindow(rect, false, window))
            return false;
        const FMGrid grid = source.GetGrid();
        unsigned int columns = 0;
        unsigned int rows = 0;
        source.GetRasterDims(columns, rows);
        const double whole = grid.cellWidth * grid.cellHeight;
        const QRectF r = rect.normalized();
        RasterPixels found;
        QVector<double> foundAreas;
        for (unsigned int row = window.firstRow; row <= window.lastRow; ++row) {
            for (unsigned int column = window.firstColumn; column <= window.lastColumn; ++column) {
                found.append({column, row});
                if (!areas)
                    continue;
                const bool isInside = row > window.firstRow && row < window.lastRow
                                      && column > window.firstColumn && column < window.lastColumn;
                const double x = column * grid.cellWidth + grid.left;
                const double y = (rows - row - 1) * grid.cellHeight + grid.bottom;
                foundAreas.append(isInside
                                      ? whole
                                      : overlap(x, x + grid.cellWidth, r.left(), r.right())
                                            * overlap(y, y + grid.cellHeight, r.top(), r.bottom()));
            }
        }
        pixels = found;
        if (areas)
            *areas = foundAreas;
        return true;
    });
}

bool VORN_QueryRasterWithRect(int geographyId, const QRectF &rect, unsigned int &firstColumn,
                              unsigned int &firstRow, unsigned int &lastColumn,
                              unsigned int &lastRow)
{
    return onGrid(geographyId, [&](const MRasterDataSource &source) {
        return source.RectQuery(rect, false, firstColumn, firstRow, lastColumn, lastRow);
    });
}

bool VORN_QueryRasterWithCircle(int geographyId, const QPointF &center, double radius,
                                RasterPixels &pixels)
{
    return onGrid(geographyId, [&](const MRasterDataSource &source) {
        return source.CircleQuery(center, radius, pixels);
    });
}

bool VORN_QueryRasterWithEllipse(int geographyId, const QPointF &center, double a, double b,
                                 double angle, bool sortByDistance, RasterPixels &pixels)
{
    return onGrid(geographyId, [&](const MRasterDataSource &source) {
        return source.EllipseQuery(center, a, b, angle, sortByDistance, pixels);
    });
}

bool VORN_QueryRasterWithPolygon(int geographyId, const QList<QVector<QPointF>> &rings,
                                 RasterPixels &pixels, QVector<double> *areas)
{
    try {
        return queryPolygon(geographyId, *polygonOf(rings), pixels, areas);
    } catch (...) { // a vertex list of any size can run out of memory
        return false;
    }
}

bool VORN_QueryRasterWithPolygon(int geographyId, int polygonGeography, unsigned int object,
                                 qint64 time, RasterPixels &pixels, QVector<double> *areas)
{
    return onShape<FMPolygon>(polygonGeography, object, time, [&](const FMPolygon &polygon) {
        try {
            return queryPolygon(geographyId, polygon, pixels, areas);
        } catch (...) {
            return false;
        }
    });
}
