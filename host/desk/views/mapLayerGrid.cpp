// SPDX-License-Identifier: MIT
#include "desk/views/mapLayerGrid.h"
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <limits>
#include "core/grids/cellShares.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterAttributes.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/RasterAPI.h"
#include "desk/views/region.h"
#include "desk/views/viewWindow.h"

namespace meridor {
namespace {

constexpr qint64 kMostCounted = 25'000'000; ///< cells; more are not counted for the legend
constexpr int kCellsPerSlice = 1'000'000;
constexpr int kMostSampled = 400; ///< rows and columns of a sample
constexpr int kHatchStep = 6;     ///< as in the colour pass of objects

/// Colours of unique integers: a class around each, and the class of the others between.
GridColors uniqueColors(const Classification &classes, const QVector<QRgb> &colors, QRgb missing)
{
    QVector<double> limits{-std::numeric_limits<double>::max()};
    QVector<QRgb> between;
    const int others = classes.of(QStringLiteral("no number"));
    const QRgb rest = others >= 0 ? colors[others] : missing;
    for (int i = 0; i < classes.entries().size(); ++i) {
        bool isNumber = false;
        const double value = classes.entries()[i].text.toDouble(&isNumber);
        if (!isNumber)
            continue;
        if (value - 0.5 > limits.last()) {
            limits.append(value - 0.5);
            between.append(rest);
        }
        limits.append(value + 0.5);
        between.append(colors[i]);
    }
    limits.append(std::numeric_limits<double>::max());
    between.append(rest);
    return GridColors::ofClasses(limits, between, missing);
}

} // namespace

GridLayerView::GridLayerView(Workspace &workspace, int geography, int dataset, QWidget &canvas)
    : MapLayerView(workspace, geography, dataset, canvas),
      mGrid(VORN_GetGeographyProperties(geography))
{
}

void GridLayerView::readValues()
{
    mHasImage = false;
    mCountedRows = mGrid.rows; // nothing is counted without a grid
    mIsCounted = false;
    if (!rasterOf(dataset())->GetConstRasterInfo(realizationOf(dataset()), time()))
        fail(tr("%1 has no grid at %2.")
                 .arg(datasetName(dataset()), axisOf(geography()).show(time())));
    if (static_cast<qint64>(mGrid.rows) * mGrid.columns <= kMostCounted)
        mCountedRows = 0;
}

void GridLayerView::colorsChanged()
{
    mAreColorsStale = true;
}

template <class Visit> bool GridLayerView::visitRows(int first, int end, Visit visit) const
{
    const double height = mGrid.bounds.height() / mGrid.rows;
    const double top = mGrid.bounds.bottom() - first * height; // bottom() is the largest y
    const QRectF window(QPointF(mGrid.bounds.left(), top - (end - first) * height),
                        QPointF(mGrid.bounds.right(), top));
    QVector<double> values;
    if (!VORN_GetRasterWindow(dataset(), realizationOf(dataset()), time(), window, mGrid.columns,
                              end - first, RasterSampling::Nearest, values))
        return false;
    for (int i = 0; i < values.size(); ++i)
        visit(first * mGrid.columns + i, values[i]);
    return true;
}

/// Counts the classes of further rows. @return whether all are counted.
bool GridLayerView::countRows()
{
    if (mCountedRows >= mGrid.rows || !classes() || workspace().isBusy())
        return true;
    const int end =
        std::min(mGrid.rows, mCountedRows + std::max(1, kCellsPerSlice / mGrid.columns));
    const Classification &classes = *this->classes();
    workspace().look([&] {
        visitRows(mCountedRows, end, [&](int, double value) {
            const int index = classes.of(value);
            ++(index < 0 ? mMissing : mCounts[index]);
        });
    });
    mCountedRows = end;
    mIsCounted = end == mGrid.rows;
    if (mIsCounted)
        Q_EMIT legendChanged();
    return mIsCounted;
}

bool GridLayerView::load(const ViewTransform &view, RasterSampling sampling)
{
    if (mHasImage && mImage.view() == view
        && (mSampling == sampling || mSampling == RasterSampling::Mean))
        return true;
    if (dataset() < 0 || workspace().isBusy() || !classes())
        return false;
    // A mean of class numbers is no class.
    if (classes()->limits().isEmpty())
        sampling = RasterSampling::Nearest;
    bool isLoaded = false;
    workspace().look([&] {
        isLoaded = mImage.load(dataset(), realizationOf(dataset()), time(), view, sampling);
    });
    mHasImage = isLoaded;
    mSampling = sampling;
    setStale();
    return isLoaded;
}

void GridLayerView::drawQuick(const ViewTransform &view)
{
    load(view, RasterSampling::Nearest);
}

bool GridLayerView::drawSharp(const ViewTransform &view)
{
    load(view, RasterSampling::Mean);
    return countRows();
}

bool GridLayerView::isSharp(const ViewTransform &view) const
{
    const bool isNominal = !classes() || classes()->limits().isEmpty();
    return !mHasImage // no values at the time
           || (mImage.view() == view && (isNominal || mSampling == RasterSampling::Mean)
               && mCountedRows >= mGrid.rows);
}

void GridLayerView::paint(const ViewTransform &view, const MapColors &colors, bool, QImage &image)
{
    if (!mHasImage || mImage.view() != view || !classes())
        return;
    const QRgb missing = missingColor(colors).rgb();
    if (mAreColorsStale || mMissingColor != missing) {
        QVector<QRgb> ofClass;
        for (const QColor &color : classColors())
            ofClass.append(color.rgb());
        mColors = classes()->limits().isEmpty()
                      ? uniqueColors(*classes(), ofClass, missing)
                      : GridColors::ofClasses(classes()->limits(), ofClass, missing);
        mAreColorsStale = false;
        mMissingColor = missing;
    }
    mImage.paint(mColors, image);
    for (int y = 0; y < image.height(); ++y) {
        auto *const out = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = (kHatchStep - y % kHatchStep) % kHatchStep; x < image.width(); x += kHatchStep)
            if (std::isnan(mImage.valueAt(x, y)) && mImage.cellAt(x, y) >= 0)
                out[x] = colors.hatch;
    }
    if (auto *const flags =
            qobject_cast<MRasterAttributes *>(workspace().selection().attributes(geography())))
        mImage.paintSelected(*flags, attribute::kSelected, colors.selected, image);
}

int GridLayerView::nextObject(int object, int step) const
{
    const int cells = mGrid.rows * mGrid.columns;
    if (cells == 0)
        return -1;
    return object < 0 ? (step < 0 ? cells - 1 : 0) : (object + step + cells) % cells;
}

QRectF GridLayerView::cellBox(unsigned int cell) const
{
    const double width = mGrid.bounds.width() / mGrid.columns;
    const double height = mGrid.bounds.height() / mGrid.rows;
    const int row = static_cast<int>(cell) / mGrid.columns;
    const int column = static_cast<int>(cell) % mGrid.columns;
    return {mGrid.bounds.left() + column * width, mGrid.bounds.bottom() - (row + 1) * height, width,
            height};
}

QRectF GridLayerView::extentOf(const QVector<unsigned int> &objects) const
{
    QRectF hull;
    for (const unsigned int cell : objects)
        hull = hull.united(cellBox(cell));
    return hull;
}

QPainterPath GridLayerView::shapeOf(unsigned int object, const ViewTransform &view) const
{
    const QRectF box = cellBox(object);
    const QPointF topLeft = view.toPixel(QPointF(box.left(), box.bottom()));
    const QPointF bottomRight = view.toPixel(QPointF(box.right(), box.top()));
    QPainterPath path;
    path.addRect(QRectF(topLeft, bottomRight).intersected(QRectF(-1e6, -1e6, 2e6, 2e6)));
    return path;
}

QVector<unsigned int> GridLayerView::objectsIn(const QPainterPath &region)
{
    const Region shape(region, widget()->devicePixelRatioF());
    const ViewTransform &view = mImage.view();
    if (shape.kind() == Region::Click) {
        const int cell = objectAt(shape.pixel());
        return cell < 0 ? QVector<unsigned int>() : QVector<unsigned int>{unsigned(cell)};
    }
    const QRectF box = view.toMap(shape.box()).intersected(mGrid.bounds);
    const double covered = box.width() / mGrid.bounds.width() * box.height() / mGrid.bounds.height()
                           * mGrid.columns * mGrid.rows;
    if (covered > kMostSelected)
        fail(tr("The region has more than %1 cells; select a smaller one.").arg(kMostSelected));
    RasterPixels pixels;
    if (shape.kind() == Region::Rectangle)
        pixels = centersInRect(geography(), view.toMap(shape.box()));
    else if (shape.kind() == Region::Circle && view.xScale() == view.yScale())
        VORN_QueryRasterWithCircle(geography(), view.toMap(shape.center()),
                                   shape.radius() / view.xScale(), pixels);
    else
        VORN_GetPixelCentersInPolygon(geography(), shape.rings(view), pixels);
    QVector<unsigned int> cells;
    cells.reserve(pixels.size());
    for (const auto &pixel : std::as_const(pixels))
        cells.append(pixel.second * static_cast<unsigned int>(mGrid.columns) + pixel.first);
    return cells;
}

QVector<unsigned int> GridLayerView::objectsOfClass(int classIndex)
{
    QVector<unsigned int> cells;
    if (!classes())
        return cells;
    const int rows = std::max(1, kCellsPerSlice / mGrid.columns);
    for (int row = 0; row < mGrid.rows; row += rows) {
        stopIfCancelled();
        visitRows(row, std::min(mGrid.rows, row + rows), [&](int cell, double value) {
            if (classes()->of(value) == classIndex)
                cells.append(static_cast<unsigned int>(cell));
        });
        if (cells.size() > kMostSelected)
            fail(tr("The class has more than %1 cells.").arg(kMostSelected));
    }
    return cells;
}

QVector<double> GridLayerView::valueSample()
{
    QVector<double> values;
    QVector<double> sample;
    if (dataset() >= 0)
        VORN_GetRasterWindow(dataset(), realizationOf(dataset()), time(), mGrid.bounds,
                             std::min(mGrid.columns, kMostSampled),
                             std::min(mGrid.rows, kMostSampled), RasterSampling::Nearest, values);
    for (const double value : std::as_const(values))
        if (std::isfinite(value))
            sample.append(value);
    return sample;
}

MapLayer GridLayerView::pictureLayer(const ViewTransform &view)
{
    MapLayer layer;
    layer.colors = classColors();
    const QRectF window = view.visible().intersected(mGrid.bounds);
    if (window.isEmpty() || !classes())
        return layer;
    // As many cells as the picture has pixels, but no more than the grid.
    MapGrid &grid = layer.grid;
    grid.bounds = window;
    grid.columns = std::clamp(static_cast<int>(window.width() * view.xScale()), 1,
                              4 * std::max(1, view.size().width()));
    grid.rows = std::clamp(static_cast<int>(window.height() * view.yScale()), 1,
                           4 * std::max(1, view.size().height()));
    grid.classes.fill(MapGrid::kMissing, grid.rows * grid.columns);
    QVector<double> values;
    if (!VORN_GetRasterWindow(dataset(), realizationOf(dataset()), time(), window, grid.columns,
                              grid.rows, RasterSampling::Nearest, values))
        fail(tr("%1 cannot be read.").arg(datasetName(dataset())));
    const auto *const flags =
        qobject_cast<MRasterAttributes *>(workspace().selection().attributes(geography()));
    const bool isAnySelected = flags && flags->GetStateCount(attribute::kSelected, true) > 0;
    for (int i = 0; i < values.size(); ++i) {
        if (i % 65536 == 0)
            stopIfCancelled();
        const int index = classes()->of(values[i]);
        if (index >= 0)
            grid.classes[i] = static_cast<quint8>(index);
        if (!isAnySelected)
            continue;
        const double x = window.left() + (i % grid.columns + 0.5) * window.width() / grid.columns;
        const double y = window.bottom() - (i / grid.columns + 0.5) * window.height() / grid.rows;
        const int column =
            std::min(mGrid.columns - 1, static_cast<int>((x - mGrid.bounds.left())
                                                         / mGrid.bounds.width() * mGrid.columns));
        const int row =
            std::min(mGrid.rows - 1, static_cast<int>((mGrid.bounds.bottom() - y)
                                                      / mGrid.bounds.height() * mGrid.rows));
        if (flags->GetAttribute(attribute::kSelected, column, row))
            grid.classes[i] = MapGrid::kMarked;
    }
    return layer;
}

} // namespace meridor
