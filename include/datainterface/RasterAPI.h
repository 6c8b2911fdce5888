// SPDX-License-Identifier: MIT
/// Raster geographies and the cells of their datasets. An unknown id, or one of another kind,
/// returns false or -1.
///
/// Row 0 is at the largest y. Cells are pairs (column, row); the number of a cell is row * columns
/// + column.
#pragma once
#include <QList>
#include <QPair>
#include <QPointF>
#include <QRectF>
#include <QSet>
#include <QString>
#include <QVector>
#include "datainterface/DataType.h"
#include "datainterface/MissingFlag.h"
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/datum.h"
#include "datainterface/export.h"

/// @param bounds  the rectangle of all cells in map units.
/// @return the new geography's id; -1 for a grid without cells, one whose cell numbers do not fit
///         an int, and a rectangle that is not finite or has no area.
DATAINTERFACE_EXPORT int VORN_CreateNewRasterGeography(const QString &name, unsigned int rows,
                                                       unsigned int columns, const QRectF &bounds,
                                                       const Interval &interval, TimeFormat format,
                                                       const QString &history,
                                                       const QString &projection);
/// Adds a dataset without announcing it.
/// @return the id of the dataset; -1 for an invalid combination of type and depth (MRasterBand) and
///         for less than one realization.
DATAINTERFACE_EXPORT int VORN_NewRasterDataset(int geographyId, const QString &name, DataType type,
                                               int realizationCount, int bitDepth,
                                               const QString &path);

// A whole grid over an interval, of the dataset's own type and depth; false for another, and for
// another number of cells. `missing` becomes the dataset's missing flag afterwards.
// @param overwrite    whether the grid takes its whole interval; otherwise it takes the free parts.
// @param recalculate  whether the frequencies are counted again, before the flag is set.
/// Decimals of 64 bits.
DATAINTERFACE_EXPORT bool VORN_AddRasterValues(int id, int realization, const Interval &interval,
                                               const QVector<double> &values, double missing,
                                               bool overwrite, bool recalculate);
/// Decimals of 32 bits.
DATAINTERFACE_EXPORT bool VORN_AddRasterValues(int id, int realization, const Interval &interval,
                                               const QVector<float> &values, float missing,
                                               bool overwrite, bool recalculate);
/// Integers of 32 bits.
DATAINTERFACE_EXPORT bool VORN_AddRasterValues(int id, int realization, const Interval &interval,
                                               const QVector<int> &values, int missing,
                                               bool overwrite, bool recalculate);
/// Unsigned integers of 64 bits.
DATAINTERFACE_EXPORT bool VORN_AddRasterValues(int id, int realization, const Interval &interval,
                                               const QVector<quint64> &values, quint64 missing,
                                               bool overwrite, bool recalculate);
/// Indices into a colour map.
DATAINTERFACE_EXPORT bool VORN_AddRasterValues(int id, int realization, const Interval &interval,
                                               const QVector<unsigned char> &values,
                                               unsigned char missing,
                                               const QVector<unsigned int> &colorMap,
                                               bool overwrite, bool recalculate);

// A pointer to the first cell of the grid whose interval contains `time`, for a dataset of that
// type and width. The caller must have checked the realization out (MDataSource::CheckOutDataset);
// otherwise the cells are not in memory and the result is false. The pointer is valid until the
// last check-in.
// @param flag  set to the missing flag of the dataset.
DATAINTERFACE_EXPORT bool VORN_GetRasterData(int id, int realization, qint64 time,
                                             const double *&data, MissingFlag &flag);
/// @param missing  set to the values that mean no data.
DATAINTERFACE_EXPORT bool VORN_GetRasterData(int id, int realization, qint64 time,
                                             const qint64 *&data, QSet<quint64> &missing,
                                             MissingFlag &flag);
DATAINTERFACE_EXPORT bool VORN_GetRasterData(int id, int realization, qint64 time,
                                             const quint64 *&data, MissingFlag &flag);
DATAINTERFACE_EXPORT bool VORN_GetRasterData(int id, int realization, qint64 time,
                                             const signed char *&data, MissingFlag &flag);
DATAINTERFACE_EXPORT bool VORN_GetRasterData(int id, int realization, qint64 time,
                                             const unsigned char *&data, MissingFlag &flag);
/// All cells as numbers. Missing cells become minus infinity, and `flag` is set to that value.
DATAINTERFACE_EXPORT bool VORN_GetRasterDataAsDecimal(int id, int realization, qint64 time,
                                                      QVector<double> &values, MissingFlag &flag);

/// How the cells behind a pixel become one value.
enum class RasterSampling {
    Nearest, ///< the cell that contains the centre of the pixel
    Mean     ///< the mean of the cells whose centres are in the pixel; Nearest where there is none
};
/// The cells of the grid at a time as a picture of `width` by `height` pixels of a part of the map:
/// row by row, the first one at the largest y. NaN for a missing cell and beyond the grid; a mean is
/// that of the cells with a value. Cells without statistics, such as colours, have no mean: the
/// nearest is taken. The grid is checked out once; a caller that reads it repeatedly keeps the
/// dataset checked out. False without a grid at the time, for a window that has no area or is not
/// finite, and for more pixels than a vector holds.
DATAINTERFACE_EXPORT bool VORN_GetRasterWindow(int id, int realization, qint64 time,
                                               const QRectF &window, int width, int height,
                                               RasterSampling sampling, QVector<double> &values);

// One cell. False, with the value unchanged, for a missing cell, for a cell outside the grid, and
// without a grid at the time.
/// Decimal datasets.
DATAINTERFACE_EXPORT bool VORN_GetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, qint64 time, double &value);
/// The bits of any cell, without conversion.
DATAINTERFACE_EXPORT bool VORN_GetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, qint64 time, quint64 &value);
/// Datasets of signed integers.
DATAINTERFACE_EXPORT bool VORN_GetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, qint64 time, qint64 &value);
/// Any dataset. Only the low 32 bits of an integer are returned, with their sign.
DATAINTERFACE_EXPORT bool VORN_GetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, qint64 time, datum &value);
/// Sets one cell of the grid of exactly that interval. The two forms are for decimal datasets and
/// for signed integers. An interval that overlaps a grid's without being equal raises "Time stamp
/// mismatch".
DATAINTERFACE_EXPORT bool VORN_SetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, const Interval &interval,
                                              double value);
DATAINTERFACE_EXPORT bool VORN_SetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, const Interval &interval,
                                              qint64 value);
/// Whether a cell is missing in realization 0; also true for a cell outside the grid and without a
/// grid.
DATAINTERFACE_EXPORT bool VORN_IsRasterDataMissing(int id, unsigned int column, unsigned int row,
                                                   qint64 time);
/// The numbers of the missing cells.
DATAINTERFACE_EXPORT bool VORN_GetMissingPixels(int id, int realization, qint64 time,
                                                QSet<int> &missing);
/// The intervals of the realization's grids, in order of time.
DATAINTERFACE_EXPORT bool VORN_GetRasterIntervals(int id, int realization,
                                                  QVector<Interval> &intervals);

using RasterPixels = QVector<QPair<unsigned int, unsigned int>>;

// Cells by place. False, with the outputs unchanged, for a rectangle that does not meet the grid.
/// The cells whose centres are in the rectangle: see MRasterDataSource::RectQuery.
DATAINTERFACE_EXPORT bool VORN_GetPixelCentersInRect(int geographyId, const QRectF &rect,
                                                     RasterPixels &pixels);
/// The cells whose centres are in the even-odd set of the rings.
DATAINTERFACE_EXPORT bool VORN_GetPixelCentersInPolygon(int geographyId,
                                                        const QList<QVector<QPointF>> &rings,
                                                        RasterPixels &pixels);
/// The cells whose centres are in the polygon of an object of another geography at `time`.
DATAINTERFACE_EXPORT bool VORN_GetPixelCentersInPolygon(int geographyId, int polygonGeography,
                                                        unsigned int object, qint64 time,
                                                        RasterPixels &pixels);
/// All cells that the rectangle touches, row by row.
/// @param areas  may be null; receives the common areas in squared map units.
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithRect(int geographyId, const QRectF &rect,
                                                   RasterPixels &pixels, QVector<double> *areas);
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithRect(int geographyId, const QRectF &rect,
                                                   unsigned int &firstColumn,
                                                   unsigned int &firstRow, unsigned int &lastColumn,
                                                   unsigned int &lastRow);
/// The cells whose centres are no farther than `radius` from `center`.
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithCircle(int geographyId, const QPointF &center,
                                                     double radius, RasterPixels &pixels);
/// See MRasterDataSource::EllipseQuery.
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithEllipse(int geographyId, const QPointF &center,
                                                      double a, double b, double angle,
                                                      bool sortByDistance, RasterPixels &pixels);
/// All cells that share area with the polygon, column by column. The range of row numbers is that
/// of the polygon's bounding box with row 0 at the largest y, but within that range cells are taken
/// with row 0 at the smallest y, as in MRasterDataSource::GetPixelBounds.
/// @param areas  may be null; receives the common areas in squared map units, none of them 0.
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithPolygon(int geographyId,
                                                      const QList<QVector<QPointF>> &rings,
                                                      RasterPixels &pixels, QVector<double> *areas);
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithPolygon(int geographyId, int polygonGeography,
                                                      unsigned int object, qint64 time,
                                                      RasterPixels &pixels, QVector<double> *areas);
