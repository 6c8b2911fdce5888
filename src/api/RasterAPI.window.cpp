// SPDX-License-Identifier: MIT
// Grids as pictures. Columns and rows are handled apart: each pixel column has a range of cell
// columns, each pixel row a range of cell rows, and the cells of a pixel are the product of both.
// Means are summed down the rows first, over all columns of the window at a time, so that the cells
// are read in the order of their memory.
#include "datainterface/RasterAPI.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>
#include "api/callFrame.h"
#include "cells/cellForms.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MRasterDataSource.h"

using namespace datainterface;

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

/// The cells of a pixel along one axis; empty beyond the grid.
struct CellRange {
    int first = 0;
    int end = 0;
};

/// One axis of a window over a grid. Positions are in cells from the edge of the first cell.
class Axis {
public:
    /// @param start  the position of the edge of the first pixel.
    /// @param step   cells per pixel.
    Axis(double start, double step, int cells) : mStart(start), mStep(step), mCells(cells) {}

    CellRange nearest(int pixel) const
    {
        const double at = std::floor(mStart + (pixel + 0.5) * mStep);
        if (!(at >= 0.0 && at < mCells))
            return {};
        const int cell = static_cast<int>(at);
        return {cell, cell + 1};
    }
    /// The cells whose centres are in the pixel, else the nearest one.
    CellRange within(int pixel) const
    {
        const CellRange range{firstFrom(pixel), firstFrom(pixel + 1)};
        return range.first < range.end ? range : nearest(pixel);
    }
    std::vector<CellRange> ranges(int pixels, RasterSampling sampling) const
    {
        std::vector<CellRange> all;
        all.reserve(static_cast<std::size_t>(pixels));
        for (int i = 0; i < pixels; ++i)
            all.push_back(sampling == RasterSampling::Mean ? within(i) : nearest(i));
        return all;
    }

private:
    /// The first cell whose centre is not before the edge of the pixel.
    int firstFrom(int pixel) const
    {
        const double at = std::ceil(mStart + pixel * mStep - 0.5);
        return at > 0.0 ? static_cast<int>(std::min(at, static_cast<double>(mCells))) : 0;
    }

    double mStart;
    double mStep;
    int mCells;
};

template <class Cells> class WindowReader {
    using T = ValueOf<Cells>;

public:
    WindowReader(const Cells &cells, int columns, const CellTest<Cells> &test)
        : mCells(cells), mColumns(columns), mTest(test)
    {
    }

    void readNearest(int row, const std::vector<CellRange> &columns, double *out) const
    {
        const int start = row * mColumns;
        for (const CellRange &range : columns)
            *out++ = range.first < range.end ? valueOf(mCells[start + range.first]) : kNone;
    }

    void readMeans(const CellRange &rows, const std::vector<CellRange> &columns, double *out)
    {
        const CellRange used = hullOf(columns);
        const auto width = static_cast<std::size_t>(used.end - used.first);
        mSums.assign(width, 0.0);
        mCounts.assign(width, 0.0);
        for (int row = rows.first; row < rows.end; ++row) {
            const int start = row * mColumns + used.first;
            if (mTest.isSet())
                addRow(start, [this](T value) { return !mTest.equals(value); });
            else
                addRow(start, [](T) { return true; });
        }
        for (const CellRange &range : columns) {
            double sum = 0.0;
            double count = 0.0;
            for (int column = range.first; column < range.end; ++column) {
                sum += mSums[static_cast<std::size_t>(column - used.first)];
                count += mCounts[static_cast<std::size_t>(column - used.first)];
            }
            *out++ = count > 0.0 ? sum / count : kNone;
        }
    }

private:
    double valueOf(T value) const
    {
        return mTest.isSet() && mTest.equals(value) ? kNone : cellToDouble(value);
    }

    template <class Test> void addRow(int start, Test hasValue)
    {
        double *sums = mSums.data();
        double *counts = mCounts.data();
        const int width = static_cast<int>(mSums.size());
        for (int i = 0; i < width; ++i) {
            const T cell = mCells[start + i];
            const double value = cellToDouble(cell);
            const bool counted = hasValue(cell) && value == value;
            sums[i] += counted ? value : 0.0;
            counts[i] += counted ? 1.0 : 0.0;
        }
    }

    static CellRange hullOf(const std::vector<CellRange> &ranges)
    {
        CellRange hull;
        for (const CellRange &range : ranges) {
            if (range.first == range.end)
                continue;
            hull = hull.first == hull.end ? range
                                          : CellRange{std::min(hull.first, range.first),
                                                      std::max(hull.end, range.end)};
        }
        return hull;
    }

    const Cells &mCells;
    const int mColumns;
    const CellTest<Cells> &mTest;
    std::vector<double> mSums; // of each column of the window
    std::vector<double> mCounts;
};

bool isWindow(const QRectF &window, int width, int height)
{
    return width > 0 && height > 0
           && qint64(width) * height <= std::numeric_limits<int>::max() / qint64(sizeof(double))
           && window.width() > 0.0 && window.height() > 0.0 && std::isfinite(window.left())
           && std::isfinite(window.right()) && std::isfinite(window.top())
           && std::isfinite(window.bottom());
}

} // namespace

bool VORN_GetRasterWindow(int id, int realization, qint64 time, const QRectF &window, int width,
                          int height, RasterSampling sampling, QVector<double> &values)
{
    return onSource<MRasterDataSource>(id, false, [&](const MRasterDataSource &source) {
        const MRasterDataset *dataset = source.GetRasterDataset(id);
        const MRasterObservation *grid =
            dataset ? dataset->GetConstRasterInfo(realization, time) : nullptr;
        if (!grid || !isWindow(window, width, height))
            return false;
        if (!dataset->HasStatisticsForm())
            sampling = RasterSampling::Nearest;
        const QRectF &bounds = source.GetBounds();
        const double cellWidth = source.GetPixelWidth();
        const double cellHeight = source.GetPixelHeight();
        const Axis across((window.left() - bounds.left()) / cellWidth,
                          window.width() / width / cellWidth, grid->Columns());
        const Axis down((bounds.bottom() - window.bottom()) / cellHeight,
                        window.height() / height / cellHeight, grid->Rows());
        const std::vector<CellRange> columns = across.ranges(width, sampling);
        const HeldGrid hold(*grid);
        QVector<double> found(width * height);
        const bool isKnown = visitCells(*grid, [&](const auto &cells) {
            using Cells = std::decay_t<decltype(cells)>;
            const CellTest<Cells> test(dataset->GetCellFlag());
            WindowReader<Cells> reader(cells, grid->Columns(), test);
            double *out = found.data();
            for (int y = 0; y < height; ++y, out += width) {
                const CellRange rows =
                    sampling == RasterSampling::Mean ? down.within(y) : down.nearest(y);
                if (rows.first == rows.end)
                    std::fill(out, out + width, kNone);
                else if (sampling == RasterSampling::Mean)
                    reader.readMeans(rows, columns, out);
                else
                    reader.readNearest(rows.first, columns, out);
            }
        });
        if (isKnown)
            values = found;
        return isKnown;
    });
}
