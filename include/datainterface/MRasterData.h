// SPDX-License-Identifier: MIT
/// A geography that is a regular grid: its objects are the cells.
#pragma once
#include <QRectF>
#include "datainterface/MGeoData.h"
#include "datainterface/export.h"

class MRasterDataSource;

/// The data source holds the geometry of the grid.
class DATAINTERFACE_EXPORT MRasterData : public MGeoData {
    Q_OBJECT
public:
    /// @param stamp  the time over which the geography exists whatever its datasets hold.
    MRasterData(const QString &name, const TimeStamp &stamp, TimeFormat format,
                const QString &filePath);

    bool SaveToStream(QDataStream &out) override;
    bool RestoreFromStream(QDataStream &in) override;
    bool IsValid() const override;
    GeoProps GetProperties() override;
    /// The number of cells, which is the same at all times.
    unsigned int GetObjectCount() const override;
    /// The hull of the geography's own time and that of its datasets.
    TimeStamp GetTimeBounds() override;
    using MGeoData::GetBoundingRect;
    RectInT GetBoundingRect() override;
    bool HasObjectsWithMissingData(int dataset) const override;
    void SelectObjectsByValue(int dataset, int realization, qint64 time, const QSet<MDatum> &values,
                              int attribute) override;
    void SelectObjectsByRange(int dataset, int realization, qint64 time, double low, double high,
                              int attribute) override;
    /// Creates the data source. Called once. False for numbers that MRasterDataSource::IsGrid
    /// refuses.
    virtual bool Initialize(int rows, int columns, const QRectF &bounds);

    MRasterDataSource *GetRasterDataSource() const { return mRasterDataSource; }
    /// The time over which the geography exists whatever its datasets hold.
    const TimeStamp &GetTimeStamp() const { return mTimeStamp; }
    /// See MRasterDataSource::GetPixelBounds.
    bool GetPixelBounds(unsigned int column, unsigned int row, QRectF &rect) const;
    /// The value of the tag "Projection".
    QString GetProjectionName() const;

protected:
    bool Restore(QDataStream &in, datainterface::LoadContext &context) override;

private:
    MRasterDataSource *mRasterDataSource = nullptr; ///< mDataSource with its type
    TimeStamp mTimeStamp;
};
