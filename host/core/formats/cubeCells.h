// SPDX-License-Identifier: MIT
/// How the stored cells of a variable become the cells of a dataset: scale and offset, and what
/// means no data.
#pragma once
#include <QByteArray>
#include <QString>
#include <QVector>
#include <limits>
#include "core/formats/cubeFile.h"
#include "core/formats/cubeReader.h"

namespace meridor {

struct CellRule {
    DataType rawType = RasterDecimalType; ///< of stored cells
    int rawBits = 0;
    DataType type = RasterDecimalType; ///< of the dataset's cells
    int bits = 0;
    bool isScaled = false;
    double scale = 1;
    double offset = 0;
    bool hasFill = false;
    QByteArray fill;                                         ///< one stored cell that means no data
    QVector<double> alsoEmpty;                               ///< further stored values that do
    double least = -std::numeric_limits<double>::infinity(); ///< of valid stored values
    double most = std::numeric_limits<double>::infinity();
    MissingFlag missing; ///< the value of missing cells in the dataset
};

/// Raises a Failure for numbers of two parts and a no-data value that no cell can hold.
CellRule cellRule(const CubeFile &cube, const CubeVariable &variable, const CubeOptions &options,
                  const QString &where);

/// A strip of rows as it was read: the steps from one time, row and column to the next, in cells.
struct StripForm {
    int times = 1;
    int rows = 0;
    int columns = 0;
    qint64 timeStep = 0;
    qint64 rowStep = 0;
    qint64 columnStep = 0;
};

/// The whole grids that a strip becomes a part of.
struct GridForm {
    int rows = 0;
    int firstRow = 0;       ///< of the strip, in the order of the file
    bool isSouthUp = false; ///< the file's first row is the southernmost
    bool isEastFirst = false;
};

/// Converts a strip. @param cells receives the cells of the first grid; the others follow.
/// @return the number of missing cells.
qint64 convertCells(const CellRule &rule, const char *raw, const StripForm &strip,
                    const GridForm &grid, char *cells);

} // namespace meridor
