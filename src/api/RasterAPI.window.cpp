// SPDX-License-Identifier: MIT
// Grids as pictures. Columns and rows are handled apart: each pixel column has a range of cell
// columns, each pixel row a range of cell rows, and the cells of a pixel are the product of both.
// Means are summed down the rows first, over all columns of the window at a time, so that the cells
// are read in the order of their memory.
#include "datainterface/RasterAPI.h"
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>
#include "api/callFrame.h"
#include "cells/cellForms.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MRasterDataSource.h"
#ifdef __SSE2__
#include <emmintrin.h>
#endif

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

#ifdef __SSE2__
/// Adds floats that are neither NaN nor `flag` to the sums and counts of their columns, four at a
/// time, which a compiler does not find by itself.
/// @param flag  NaN without a flag.
/// @return the number of columns; those that are left are fewer than four.
int addFloats(const float *cells, int width, float flag, double *sums, float *counts)
{
    const __m128 missing = _mm_set1_ps(flag);
    const __m128 one = _mm_set1_ps(1.0F);
    int i = 0;
    for (; i + 4 <= width; i += 4) {
        const __m128 four = _mm_loadu_ps(cells + i);
        const __m128 counted = _mm_and_ps(_mm_cmpord_ps(four, four), _mm_cmpneq_ps(four, missing));
        const __m128 values = _mm_and_ps(four, counted);
        const __m128d low = _mm_cvtps_pd(values);
        const __m128d high = _mm_cvtps_pd(_mm_movehl_ps(values, values));
        _mm_storeu_pd(sums + i, _mm_add_pd(_mm_loadu_pd(sums + i), low));
        _mm_storeu_pd(sums + i + 2, _mm_add_pd(_mm_loadu_pd(sums + i + 2), high));
        _mm_storeu_ps(counts + i, _mm_add_ps(_mm_loadu_ps(counts + i), _mm_and_ps(counted, one)));
    }
    return i;
}
#endif

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
        CellRange used;
        for (const CellRange &range : columns)
            used = hullOf(used, range);
        addRows(rows, used);
        for (const CellRange &range : columns)
            *out++ = meanOf(range, used.first);
    }

private:
    double valueOf(T value) const
    {
        return mTest.isSet() && mTest.equals(value) ? kNone : cellToDouble(value);
    }

    void addRows(const CellRange &rows, const CellRange &used)
    {
        const auto width = static_cast<std::size_t>(used.end - used.first);
        mSums.assign(width, 0.0);
        mCounts.assign(width, 0.0F);
        for (int row = rows.first; row < rows.end; ++row) {
            const int start = row * mColumns + used.first;
            const CellTest<Cells> test = mTest;
            if (test.isSet())
                addRow(start, [test](T value) { return !test.equals(value); });
            else
                addRow(start, [](T) { return true; });
        }
    }
    template <class Test> void addRow(int start, Test hasValue)
    {
        double *sums = mSums.data();
        float *counts = mCounts.data(); // exact below 2^24 rows
        const Cells cells = mCells;
        const int width = static_cast<int>(mSums.size());
        int i = 0;
#ifdef __SSE2__
        if constexpr (std::is_same_v<Cells, const float *>) {
            const float flag =
                mTest.isSet() ? mTest.value() : std::numeric_limits<float>::quiet_NaN();
            i = addFloats(cells + start, width, flag, sums, counts);
        }
#endif
        for (; i < width; ++i) {
            const T cell = cells[start + i];
            bool counted = hasValue(cell);
            if constexpr (std::is_floating_point_v<T>) {
                counted = counted && cell == cell;
                sums[i] += static_cast<double>(counted ? cell : T(0));
            } else {
                const double value = cellToDouble(cell);
                counted = counted && value == value;
                sums[i] += counted ? value : 0.0;
            }
            counts[i] += counted ? 1.0F : 0.0F;
        }
    }
    double meanOf(const CellRange &columns, int first) const
    {
        double sum = 0.0;
        double count = 0.0;
        for (int column = columns.first; column < columns.end; ++column) {
            sum += mSums[static_cast<std::size_t>(column - first)];
            count += static_cast<double>(mCounts[static_cast<std::size_t>(column - first)]);
        }
        return count > 0.0 ? sum / count : kNone;
    }

    static CellRange hullOf(const CellRange &a, const CellRange &b)
    {
        if (a.first == a.end || b.first == b.end)
            return a.first == a.end ? b : a;
        return {std::min(a.first, b.first), std::max(a.end, b.end)};
    }

    const Cells &mCells;
    const int mColumns;
    const CellTest<Cells> &mTest;
    std::vector<double> mSums; // of each column of the window
    std::vector<float> mCounts;
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
        QVector<double> found;
        if (values.size() == width * height && values.isDetached())
            found.swap(values); // its memory is used again
        else
            found = QVector<double>(width * height);
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
        values.swap(found);
        return isKnown;
    });
}
