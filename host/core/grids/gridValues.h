// SPDX-License-Identifier: MIT
/// Cells of a raster dataset as numbers, and cells by their texts.
#pragma once
#include <QPair>
#include <QString>
#include <QVector>
#include <functional>
#include <memory>
#include "core/export.h"

class HeldGrid;
class MRasterDataset;
class MRasterObservation;

namespace meridor {

/// All cells of the grid at a time, row by row; NaN for a missing cell. Raises a Failure if the
/// dataset has no grid at that time.
MERIDOR_EXPORT QVector<double> gridValues(int dataset, qint64 time, int realization = 0);

/// Visits the finite values of the cells of the grid at a time, row by row, in place: nothing is
/// copied. Nothing is visited if the dataset has no grid at that time.
MERIDOR_EXPORT void visitCells(int dataset, qint64 time, int realization,
                               const std::function<void(int row, int column, double value)> &visit);

/// Finite values of the grids of some times: about `count` of cells at regular distances, and the
/// least and the largest of all cells. Raises a Failure for a time without a grid.
MERIDOR_EXPORT QVector<double> gridSample(int dataset, const QVector<qint64> &times,
                                          int realization, int count);

/// Reads single cells of a grid at a time. Cells are read in place; after reads of many of them the
/// whole grid is kept in memory, in its own type, as long as this object exists.
class MERIDOR_EXPORT CellReader {
public:
    /// Raises a Failure if the dataset has no grid at that time.
    CellReader(int dataset, qint64 time, int realization = 0);
    ~CellReader();
    /// NaN for a missing cell. The cell must be one of the grid.
    double at(unsigned column, unsigned row);

private:
    const MRasterDataset *mDataset;
    const MRasterObservation *mGrid;
    std::unique_ptr<const HeldGrid> mHold;
    int mReadsUntilHeld;
};

/// The shortest text from which the same cell of the dataset is read.
MERIDOR_EXPORT QString cellText(int dataset, double value);

/// Column and row of a cell given as "COLUMN,ROW", from 0 at the top left, or by its map
/// coordinates as "@X,Y". Raises a Failure if there is no such cell.
MERIDOR_EXPORT QPair<unsigned, unsigned> findCell(int geography, const QString &text);

/// Exactly `count` numbers separated by commas.
/// @param option  named in the Failure if the text does not match.
MERIDOR_EXPORT QVector<double> numbersOf(const QString &text, int count, const QString &option);

} // namespace meridor
