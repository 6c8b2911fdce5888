// SPDX-License-Identifier: MIT
/// The picture of a grid in a window.
#pragma once
#include <QImage>
#include <QRgb>
#include <QVector>
#include "datainterface/RasterAPI.h"
#include "desk/draw/viewTransform.h"

class MRasterAttributes;

namespace meridor {

class GridColors;

/// The values behind the pixels of a view, kept so that classes, palette and selection only colour
/// them again. The view that owns this keeps the dataset checked out, since otherwise each load
/// reads the whole grid from the block store.
class GridImage {
public:
    /// Reads a raster dataset at a time: the nearest cells while the view moves, means at rest.
    /// False, with nothing changed, for an unknown dataset and without a grid at the time.
    bool load(int dataset, int realization, qint64 time, const ViewTransform &view,
              RasterSampling sampling);
    /// Colours an image of the view's size whose format is QImage::Format_RGB32; false for another.
    /// Pixels beyond the grid keep what the image holds.
    bool paint(const GridColors &colors, QImage &image, int threads = 2) const;
    /// Colours the pixels whose nearest cell has the flag; to be called after paint.
    bool paintSelected(MRasterAttributes &attributes, int attribute, QRgb color, QImage &image,
                       int threads = 2) const;

    const ViewTransform &view() const { return mView; }
    /// The value behind a pixel of the view; NaN for a missing cell and beyond the grid.
    double valueAt(int x, int y) const { return mValues[y * mView.size().width() + x]; }
    /// The cell at a pixel, row * columns + column; -1 beyond the grid.
    int cellAt(int x, int y) const;

private:
    bool fits(const QImage &image) const;

    ViewTransform mView;
    QVector<double> mValues;
    QVector<int> mColumns; // of each pixel column, -1 beyond the grid
    QVector<int> mRows;
    int mGridColumns = 0;
};

} // namespace meridor
