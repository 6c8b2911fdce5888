// SPDX-License-Identifier: MIT
/// The data source of a raster geography. Holds the geometry of the grid and the raster datasets.
#pragma once
#include <QPair>
#include <QPointF>
#include <QRectF>
#include <QVector>
#include "datainterface/MDataSource.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/export.h"

struct FMGrid;
struct FMGridWindow;
struct RectInT;

/// An axis-aligned grid of equal cells on a rectangle of the map. Row 0 is at the largest y, except
/// in GetPixelBounds, and column 0 at the smallest x. Cells are given as (column, row) and numbered
/// row * columns + column. A query that finds nothing returns false; a query for an unknown dataset
/// returns false, 0 or an empty value.
class DATAINTERFACE_EXPORT MRasterDataSource : public MDataSource {
    Q_OBJECT
public:
    using Pixel = QPair<unsigned int, unsigned int>;

    /// For loading.
    explicit MRasterDataSource(const QString &directory);
    MRasterDataSource(const QString &directory, unsigned int columns, unsigned int rows,
                      const QRectF &bounds, int idSeed);

    /// Whether a grid can have these numbers: at least one cell, cell numbers that fit an int, a
    /// finite rectangle with an area.
    static bool IsGrid(qint64 columns, qint64 rows, const QRectF &bounds);

    bool SaveToStream(QDataStream &out) override;
    bool RestoreFromStream(QDataStream &in) override;
    unsigned int GetObjectCount() const override { return mColumns * mRows; }
    bool IsDatasetIdValid(int id) const override;
    /// Advances to the next shown cell, row by row, in steps of the display.
    void IncDisplayIndex(double &index, double &row, double &column) const override;
    bool GetCommonTimeStamp(int id, int realization, qint64 t, TimeStamp &stamp) const override;
    QList<double> GetIntervalBreaks(int id, int realization, int count,
                                    MDataset::ClassificationType type, bool flag) override;
    QMap<MDatum, int> GetDataFrequencies(int id) override;
    int GetUniqueValueCount(int id) const override;
    bool SetHierarchyPath(int id, const QString &path) override;
    bool SetHierarchyPath(int id, const QList<MDataset::pathLevel> &path) override;
    bool GetHierarchyPath(int id, QList<MDataset::pathLevel> &path) const override;
    bool GetHierarchyPathAsString(int id, QString &path) const override;
    bool GetTimeBounds(int id, TimeStamp &bounds) const override;
    TimeStamp GetTimeBounds() override;
    bool GetMean(int id, int realization, qint64 t, double &mean) override;
    bool GetStddev(int id, int realization, qint64 t, double &deviation) override;
    bool GetMax(int id, int realization, qint64 t, MDatum &value) override;
    bool GetMin(int id, int realization, qint64 t, MDatum &value) override;
    bool GetGlobalMin(int id, int realization, MDatum &value) override;
    bool GetGlobalMax(int id, int realization, MDatum &value) override;
    bool IsNumeric(int id) const override;

    virtual int GetRasterBitDepth(int id) const;
    /// The first and last columns and rows of the cells that `rect` touches. `centersOnly` is not
    /// used.
    virtual bool RectQuery(const QRectF &rect, bool centersOnly, unsigned int &firstColumn,
                           unsigned int &firstRow, unsigned int &lastColumn,
                           unsigned int &lastRow) const;
    /// The cells that `rect` touches or, with `centersOnly`, those whose centres it contains,
    /// column by column. With `centersOnly` a rectangle that is no wider than a cell gives the
    /// column that contains it, and likewise for rows; centres exactly on its left or upper side
    /// are not contained.
    virtual bool RectQuery(const QRectF &rect, bool centersOnly, QVector<Pixel> &pixels) const;
    /// The cells, among those that RectQuery finds for the bounding square, whose centres are no
    /// farther than `radius` from `center`, column by column.
    virtual bool CircleQuery(const QPointF &center, double radius, QVector<Pixel> &pixels) const;
    /// The cells whose centres are in an FMPolygon, column by column. False when there is none.
    virtual bool PolygonQuery(const void *polygon, QVector<Pixel> &pixels) const;
    /// Writes the point even for a cell outside the grid, for which the result is false.
    virtual bool GetPixelCenter(unsigned int column, unsigned int row, QPointF &point) const;
    /// Here row 0 is at the smallest y, the opposite of all other operations. Hosts rely on it.
    virtual bool GetPixelBounds(unsigned int column, unsigned int row, QRectF &rect) const;
    /// The cell at a place.
    /// @param clamp  whether a place outside gives the nearest column and row of the grid.
    /// @return whether the rectangle of the grid contains the place.
    virtual bool PointQuery(double x, double y, unsigned int &column, unsigned int &row,
                            bool clamp) const;
    /// The number of the cell at a place, which is written even when there is no such cell.
    /// Coordinates are truncated toward zero, so a place less than one cell to the left of the grid
    /// is in its first column.
    virtual bool PointQuery(double x, double y, unsigned int &id) const;
    /// The cells whose centres are in an ellipse, row by row or ordered by distance from its
    /// centre.
    /// @param a, b  semi-axes along `angle` and across it, both above 0.
    /// @param angle  radians, counter-clockwise from the x axis.
    virtual bool EllipseQuery(const QPointF &center, double a, double b, double angle,
                              bool sortByDistance, QVector<Pixel> &pixels) const;
    /// Adds a dataset without announcing it.
    /// @return the id of the dataset; -1 for an invalid combination of type and depth and without
    ///         realizations.
    virtual int NewRasterDataset(const QString &name, DataType type, int realizationCount,
                                 int bitDepth, const QString &path);
    virtual RectInT GetBoundingRect();
    virtual void GetRasterDims(unsigned int &columns, unsigned int &rows) const;
    virtual void GetDisplayDims(unsigned int &width, unsigned int &height) const;
    /// See MRasterDataset::AddRasterValues.
    virtual bool AddRasterValues(int id, int realization, const TimeStamp &stamp,
                                 const MRasterBand &band, bool overwrite, bool recalculate);
    /// The frequencies of MRasterDataset; null for an unknown dataset.
    virtual const QMap<quint8, int> *GetInt8Frequencies(int id) const;
    virtual const QMap<quint16, int> *GetInt16Frequencies(int id) const;
    virtual const QMap<quint32, int> *GetInt32Frequencies(int id) const;
    virtual const QMap<quint64, int> *GetInt64Frequencies(int id) const;
    virtual const QMap<double, int> *GetDoubleFrequencies(int id) const;
    virtual const QMap<float, int> *GetFloatFrequencies(int id) const;
    virtual const QMap<quint16, int> *GetHalfFloatFrequencies(int id) const;
    virtual QList<TimeStamp> GetRasterIntervals(int id, int realization);
    virtual bool GetContainingTimeStamp(int id, int realization, qint64 time,
                                        TimeStamp &stamp) const;
    virtual bool HasMissingValues(int id) const;
    virtual bool IsMissing(int id, int realization, unsigned int column, unsigned int row,
                           qint64 time);
    /// Whether a value equals the missing flag of the dataset in the width of its cells. True for
    /// an unknown dataset, false without a flag.
    virtual bool IsMissingFlag(int id, quint64 value) const;
    virtual bool IsMissingFlag(int id, double value) const;

    MRasterDataset *GetRasterDataset(int id);
    const MRasterDataset *GetRasterDataset(int id) const;
    bool GetRasterValue(int id, int realization, unsigned int column, unsigned int row, qint64 time,
                        double &value) const;
    bool GetRasterValue(int id, int realization, unsigned int column, unsigned int row, qint64 time,
                        qint64 &value) const;
    bool GetRasterValue(int id, int realization, unsigned int column, unsigned int row, qint64 time,
                        quint64 &value) const;
    /// False for a missing cell and for a cell outside the grid.
    bool GetRasterValue(int id, int realization, unsigned int column, unsigned int row, qint64 time,
                        MDatum &value) const;
    bool SetRasterValue(int id, int realization, unsigned int column, unsigned int row,
                        const TimeStamp &stamp, double value);
    bool SetRasterValue(int id, int realization, unsigned int column, unsigned int row,
                        const TimeStamp &stamp, qint64 value);
    bool SetRasterValue(int id, int realization, unsigned int column, unsigned int row,
                        const TimeStamp &stamp, quint64 value);
    MRasterObservation *GetRasterInfo(int id, int realization, const TimeStamp &stamp);
    const MRasterObservation *GetRasterInfo(int id, int realization, qint64 time) const;
    /// Announces a change of the dataset if it has a grid at `first`.
    bool RasterChanged(int id, int realization, qint64 first, qint64 second);

    const QRectF &GetBounds() const { return mBounds; }
    double GetPixelWidth() const { return mBounds.width() / mColumns; }
    double GetPixelHeight() const { return mBounds.height() / mRows; }
    /// The number of a cell. The arguments are not checked.
    unsigned int IndexFromColRow(unsigned int column, unsigned int row) const
    {
        return row * mColumns + column;
    }
    /// The column and row of a cell number; false for a number outside the grid.
    bool ColRowFromIndex(int id, unsigned int &column, unsigned int &row) const;
    /// The grid, and the window of `RectQuery`, as types of the geometry library.
    FMGrid GetGrid() const;
    bool GetWindow(const QRectF &rect, bool centersOnly, FMGridWindow &window) const;

protected:
    bool Restore(QDataStream &in, datainterface::LoadContext &context) override;
    MDataset *NewEmptyDataset(int kind) override;

private:
    double top() const { return mBounds.y() + mBounds.height(); }
    bool holds(unsigned int column, unsigned int row) const
    {
        return column < mColumns && row < mRows;
    }

    QRectF mBounds;
    unsigned int mColumns = 0;
    unsigned int mRows = 0;
    double mDisplayStep = 1.0; ///< source cells per shown cell
    int mMaxDisplaySize = 2000;
};
