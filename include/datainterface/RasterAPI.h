// SPDX-License-Identifier: MIT
/// Raster geographies and the cells of their datasets. An id that is unknown or of another kind
/// gives false, or -1.
///
/// Rows count down from the largest y. Cells are pairs (column, row); the number of a cell is row *
/// columns + column.
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
/// @return the new dataset's id, not announced; -1 for a type and depth that no cell has
///         (MRasterBand) and for less than one realization.
DATAINTERFACE_EXPORT int VORN_NewRasterDataset(int geographyId, const QString &name, DataType type,
                                               int realizationCount, int bitDepth,
                                               const QString &path);

// A whole grid over an interval, of the dataset's own type and depth; false for another, and for
// another number of cells. `missing` becomes the dataset's missing flag afterwards.
// @param overwrite    the grid takes its whole interval; otherwise it fills the free parts of it.
// @param recalculate  counts the frequencies of the dataset anew, before the flag is set.
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

// The first cell of the grid that holds `time`, of a dataset of that type and width. The caller
// holds the realization checked out (MDataSource::CheckOutDataset); without that there are no cells
// to point at, and the answer is false.
// @param flag  takes the dataset's missing flag.
DATAINTERFACE_EXPORT bool VORN_GetRasterData(int id, int realization, qint64 time,
                                             const double *&data, MissingFlag &flag);
/// @param missing  takes the values that mean no data.
DATAINTERFACE_EXPORT bool VORN_GetRasterData(int id, int realization, qint64 time,
                                             const qint64 *&data, QSet<quint64> &missing,
                                             MissingFlag &flag);
DATAINTERFACE_EXPORT bool VORN_GetRasterData(int id, int realization, qint64 time,
                                             const quint64 *&data, MissingFlag &flag);
DATAINTERFACE_EXPORT bool VORN_GetRasterData(int id, int realization, qint64 time,
                                             const signed char *&data, MissingFlag &flag);
DATAINTERFACE_EXPORT bool VORN_GetRasterData(int id, int realization, qint64 time,
                                             const unsigned char *&data, MissingFlag &flag);
/// Every cell as a number; missing ones are minus infinity, which `flag` then names.
DATAINTERFACE_EXPORT bool VORN_GetRasterDataAsDecimal(int id, int realization, qint64 time,
                                                      QVector<double> &values, MissingFlag &flag);

// One cell. False, with the value untouched, for a cell that is missing or not there, and without a
// grid at the time.
/// Decimal datasets.
DATAINTERFACE_EXPORT bool VORN_GetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, qint64 time, double &value);
/// The bits of any cell as they stand.
DATAINTERFACE_EXPORT bool VORN_GetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, qint64 time, quint64 &value);
/// Datasets of signed integers.
DATAINTERFACE_EXPORT bool VORN_GetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, qint64 time, qint64 &value);
/// Of any dataset. An integer keeps its low 32 bits, with their sign.
DATAINTERFACE_EXPORT bool VORN_GetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, qint64 time, datum &value);
/// One cell of the grid of exactly that interval; decimal datasets, and those of signed integers.
/// Another interval that meets a grid's raises "Time stamp mismatch".
DATAINTERFACE_EXPORT bool VORN_SetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, const Interval &interval,
                                              double value);
DATAINTERFACE_EXPORT bool VORN_SetRasterValue(int id, int realization, unsigned int column,
                                              unsigned int row, const Interval &interval,
                                              qint64 value);
/// In realization 0; true also where there is no cell and no grid.
DATAINTERFACE_EXPORT bool VORN_IsRasterDataMissing(int id, unsigned int column, unsigned int row,
                                                   qint64 time);
/// The numbers of the missing cells.
DATAINTERFACE_EXPORT bool VORN_GetMissingPixels(int id, int realization, qint64 time,
                                                QSet<int> &missing);
/// The intervals of the realization's grids, in order of time.
DATAINTERFACE_EXPORT bool VORN_GetRasterIntervals(int id, int realization,
                                                  QVector<Interval> &intervals);

using RasterPixels = QVector<QPair<unsigned int, unsigned int>>;

// Cells by place. False for a rectangle that does not meet the grid, with the outputs untouched.
/// The cells whose centres the rectangle holds: see MRasterDataSource::RectQuery.
DATAINTERFACE_EXPORT bool VORN_GetPixelCentersInRect(int geographyId, const QRectF &rect,
                                                     RasterPixels &pixels);
/// The even-odd set of the rings.
DATAINTERFACE_EXPORT bool VORN_GetPixelCentersInPolygon(int geographyId,
                                                        const QList<QVector<QPointF>> &rings,
                                                        RasterPixels &pixels);
/// The polygon that an object of another geography is at `time`.
DATAINTERFACE_EXPORT bool VORN_GetPixelCentersInPolygon(int geographyId, int polygonGeography,
                                                        unsigned int object, qint64 time,
                                                        RasterPixels &pixels);
/// Every cell that the rectangle touches, row after row. @param areas  may be null; takes the
/// common areas in map units.
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithRect(int geographyId, const QRectF &rect,
                                                   RasterPixels &pixels, QVector<double> *areas);
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithRect(int geographyId, const QRectF &rect,
                                                   unsigned int &firstColumn,
                                                   unsigned int &firstRow, unsigned int &lastColumn,
                                                   unsigned int &lastRow);
/// Centres no farther than `radius`.
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithCircle(int geographyId, const QPointF &center,
                                                     double radius, RasterPixels &pixels);
/// See MRasterDataSource::EllipseQuery.
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithEllipse(int geographyId, const QPointF &center,
                                                      double a, double b, double angle,
                                                      bool sortByDistance, RasterPixels &pixels);
/// Every cell that shares area with the polygon, column after column. Rows count up from the
/// smallest y here, as in MRasterDataSource::GetPixelBounds, within the row numbers that the
/// polygon's box has from the top.
/// @param areas  may be null; takes the common areas in map units, none of them 0.
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithPolygon(int geographyId,
                                                      const QList<QVector<QPointF>> &rings,
                                                      RasterPixels &pixels, QVector<double> *areas);
DATAINTERFACE_EXPORT bool VORN_QueryRasterWithPolygon(int geographyId, int polygonGeography,
                                                      unsigned int object, qint64 time,
                                                      RasterPixels &pixels, QVector<double> *areas);
