// SPDX-License-Identifier: MIT
#include "desk/draw/gridImage.h"
#include <cmath>
#include "datainterface/DataAPI.h"
#include "datainterface/DataId.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterAttributes.h"
#include "desk/draw/bands.h"
#include "desk/draw/gridColors.h"

namespace meridor {
namespace {

/// The cell of each pixel along an axis, by the centres of the pixels.
/// @param start  the edge of the first pixel in cells from the edge of the grid.
QVector<int> cellsOf(double start, double step, int pixels, int cells)
{
    QVector<int> all(pixels);
    for (int i = 0; i < pixels; ++i) {
        const double at = std::floor(start + (i + 0.5) * step);
        all[i] = at >= 0.0 && at < cells ? static_cast<int>(at) : -1;
    }
    return all;
}

QRgb *rowOf(uchar *bytes, int stride, int y)
{
    return reinterpret_cast<QRgb *>(bytes + qptrdiff(y) * stride);
}

} // namespace

bool GridImage::load(int dataset, int realization, qint64 time, const ViewTransform &view,
                     RasterSampling sampling)
{
    const QSize size = view.size();
    const QRectF window = view.visible();
    if (!VORN_GetRasterWindow(dataset, realization, time, window, size.width(), size.height(),
                              sampling, mValues))
        return false;
    const GeoProps grid = VORN_GetGeographyProperties(DataId(dataset).GeoId());
    mView = view;
    mGridColumns = grid.columns;
    // The same expressions as in VORN_GetRasterWindow, so that a pixel has the cell of its value.
    const double cellWidth = grid.bounds.width() / grid.columns;
    const double cellHeight = grid.bounds.height() / grid.rows;
    mColumns = cellsOf((window.left() - grid.bounds.left()) / cellWidth,
                       window.width() / size.width() / cellWidth, size.width(), grid.columns);
    mRows = cellsOf((grid.bounds.bottom() - window.bottom()) / cellHeight,
                    window.height() / size.height() / cellHeight, size.height(), grid.rows);
    return true;
}

int GridImage::cellAt(int x, int y) const
{
    if (x < 0 || x >= mColumns.size() || y < 0 || y >= mRows.size() || mColumns[x] < 0
        || mRows[y] < 0)
        return -1;
    return mRows[y] * mGridColumns + mColumns[x];
}

bool GridImage::fits(const QImage &image) const
{
    return image.format() == QImage::Format_RGB32
           && image.size() == QSize(mColumns.size(), mRows.size());
}

bool GridImage::paint(const GridColors &colors, QImage &image, int threads) const
{
    if (!fits(image))
        return false;
    uchar *const bytes = image.bits();
    const int stride = image.bytesPerLine();
    // The columns of the grid are one stretch of the window.
    const int width = mColumns.size();
    int first = 0;
    while (first < width && mColumns[first] < 0)
        ++first;
    int end = width;
    while (end > first && mColumns[end - 1] < 0)
        --end;
    inBands(0, mRows.size(), threads, 1, [&](int top, int bottom) {
        for (int y = top; y < bottom; ++y) {
            if (mRows[y] < 0)
                continue;
            QRgb *out = rowOf(bytes, stride, y);
            const double *values = mValues.constData() + qptrdiff(y) * width;
            for (int x = first; x < end; ++x)
                out[x] = colors.of(values[x]);
        }
    });
    return true;
}

bool GridImage::paintSelected(MRasterAttributes &attributes, int attribute, QRgb color,
                              QImage &image, int threads) const
{
    const unsigned char *flags = attributes.GetAttributeVector(attribute);
    if (!fits(image) || !flags || attributes.GetColumns() != mGridColumns)
        return false;
    const int bytesPerRow = (mGridColumns + 7) / 8;
    const int rows = attributes.GetRows();
    uchar *const bytes = image.bits();
    const int stride = image.bytesPerLine();
    inBands(0, mRows.size(), threads, 1, [&](int top, int bottom) {
        for (int y = top; y < bottom; ++y) {
            if (mRows[y] < 0 || mRows[y] >= rows)
                continue;
            const unsigned char *row = flags + qptrdiff(mRows[y]) * bytesPerRow;
            QRgb *out = rowOf(bytes, stride, y);
            for (int x = 0; x < mColumns.size(); ++x) {
                const int column = mColumns[x];
                if (column >= 0 && (row[column / 8] >> (column % 8) & 1))
                    out[x] = color | 0xff000000U;
            }
        }
    });
    return true;
}

} // namespace meridor
