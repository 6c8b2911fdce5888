// SPDX-License-Identifier: MIT
/// A dataset whose values are grids: one grid per interval of each realization.
#pragma once
#include <QMap>
#include <QVector>
#include <tuple>
#include <type_traits>
#include <vector>
#include "datainterface/MDataset.h"
#include "datainterface/MRasterObservation.h"
#include "datainterface/MissingFlag.h"
#include "datainterface/OrderedDouble.h"
#include "datainterface/export.h"

namespace datainterface {
struct ValueRun;
}

/// How often each cell value occurs, over all realizations and times. Only the map of the dataset's
/// cell type is used. Signed integers and halves are counted under their bit pattern as an unsigned
/// number, and cells of 1 bit as 0 and 1 in the map of 8 bits.
struct DATAINTERFACE_EXPORT RealizationRasterDataFrequencies {
    std::tuple<QMap<quint8, int>, QMap<quint16, int>, QMap<quint32, int>, QMap<quint64, int>,
               QMap<OrderedDouble, int>, QMap<OrderedFloat, int>, QMap<quint16, int>>
        maps;

    /// The position of the map of a cell type.
    template <class T> static constexpr std::size_t indexOf()
    {
        if constexpr (std::is_same_v<T, double>)
            return 4;
        else if constexpr (std::is_same_v<T, float>)
            return 5;
        else if constexpr (std::is_same_v<T, half>)
            return 6;
        else
            return sizeof(T) == 1 ? 0 : sizeof(T) == 2 ? 1 : sizeof(T) == 4 ? 2 : 3;
    }
    /// The map of a cell type.
    template <class T> auto &mapOf() { return std::get<indexOf<T>()>(maps); }
    template <class T> const auto &mapOf() const { return std::get<indexOf<T>()>(maps); }
};
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out,
                                             const RealizationRasterDataFrequencies &frequencies);
/// Reads the form of dataInterfaceVersionLoading. Files before 180083 hold a table for each
/// realization; the tables are merged until one of the maps has more than 10,000 keys.
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in,
                                             RealizationRasterDataFrequencies &frequencies);

/// Grids have the dimensions of the geography and are in the block store except while they are
/// checked out. Intervals of one realization never overlap. Cells are numbered row * columns +
/// column. For an unknown realization, and a time without a grid, an operation returns null, false,
/// 0 or an empty value unless its comment says otherwise.
class DATAINTERFACE_EXPORT MRasterDataset : public MDataset {
    Q_OBJECT
public:
    /// For loading. Both constructors raise "Invalid data source type" for a source of another
    /// kind.
    MRasterDataset(MDataSource *source, const QString &directory);
    MRasterDataset(MDataSource *source, int realizationCount, DataType type, const QString &name,
                   const QString &path, int id, int bitDepth);
    /// Deletes the grids and their blocks.
    ~MRasterDataset() override;

    int GetRasterBitDepth() const { return mBitDepth; }
    void GetRasterDims(unsigned int &columns, unsigned int &rows) const;
    const MissingFlag &GetMissingFlag() const { return mMissingFlag; }
    /// Sets the missing flag. A flag of another width applies if the cells can hold its value. The
    /// frequencies are not counted again.
    void SetMissingFlag(const MissingFlag &flag);
    /// The flag in the width of the cells, for readers of cells. It is not set when no cell can
    /// hold its value.
    const MissingFlag &GetCellFlag() const { return mCellFlag; }

    bool SaveToStream(QDataStream &out) override;
    /// Refuses files before 180005, which hold the cells in this place.
    bool RestoreFromStream(QDataStream &in) override;
    DatasetProps GetProperties(const MGeoData *geography) override;
    void AppendBlockIds(QVector<int> &ids) const override;
    void DropValues() override;
    bool CheckInRealization(int realization,
                            int arg) const override; ///< raises "Invalid realization index"
    bool CheckOutRealization(int realization, int arg) const override;
    /// Announces a change of the dataset through its source if there is a grid at `first`.
    bool ObjectValueChanged(int realization, int id, qint64 first, qint64 second) override;
    /// The limits for all realizations together. Raises "Invalid dataset type" for colours.
    QList<double> GetIntervalBreaks(int realization, int breakCount,
                                    MDataset::ClassificationType classification,
                                    bool showProgress) override;
    /// False after a cancel; the table then holds what was counted so far.
    bool RecalculateFrequencies() override;
    QMap<MDatum, int> GetDataFrequencies() override;
    int UniqueValueCount(bool *capped) const override; ///< never capped
    int GetDatumFrequency(const MDatum &value) const override;
    int GetDataCount(int realization, qint64 time) const override;
    QList<TimeStamp> GetCommonTimeStamps(int realization) override;
    QList<TimeStamp> GetDataIntervals(int realization, int id) override;
    bool IsNormalScoreDataset(qint64 time, int realization) const override;
    bool IsNumeric() const override { return (mDataType & 0x703) != 0; }
    bool IsDecimal() const override { return (mDataType & 0x101) != 0; }
    bool IsInteger() const override { return (mDataType & 0x202) != 0; }
    /// True if the dataset has a grid and the frequency table has a finite value.
    bool IsValid() const override;
    /// Whether the value of the missing flag is in the frequency table.
    bool HasMissing(int realization) const override;
    /// Every realization keeps only its first grid.
    void SetStatic(bool isStatic) override;
    /// Calculate statistics of decimals, integers and unsigned integers of at least 8 bits, from
    /// the cells that are finite and not missing. Both raise "Invalid bit depth" for another depth;
    /// the form for all times raises "Invalid raster data type" for another type.
    bool CalcMinMaxMean(int realization) const override;
    bool CalcMinMaxMean(int realization, qint64 time) const override;
    bool GetStdDev(int realization, qint64 time,
                   double &result) const override; ///< raises "Invalid raster type"
    /// Raises "Raster interpolation not yet implemented" if `interpolate` is set. Returns a null
    /// text when there is no grid.
    MDatum GetValue(int index, qint64 time, bool interpolate, int realization) override;
    MDatum GetValue(int index, qint64 time, int realization) override;
    /// Adds a grid from a container, whose elements must have the type and depth of the cells.
    /// Missing cells are stored as a reserved value, which becomes the missing flag of the dataset.
    /// Colours are stored as they are given.
    bool AddTimeSliceValues(int realization, const TimeStamp &stamp, VORN_DataContainer &values,
                            bool overwrite, bool updateFrequencies) override;
    virtual bool GetContainingTimeStamp(int realization, qint64 time, TimeStamp &stamp) const;
    /// Also true for a cell outside the grid and when there is no grid.
    virtual bool IsPixelMissing(int realization, int column, int row, qint64 time) const;
    /// The counts of cells of one width; empty if the dataset has cells of another. The maps of
    /// double and float leave out NaN, whose count is GetDatumFrequency(MDatum(NaN)).
    virtual const QMap<quint8, int> *GetInt8Frequencies() const;
    virtual const QMap<quint16, int> *GetInt16Frequencies() const;
    virtual const QMap<quint32, int> *GetInt32Frequencies() const;
    virtual const QMap<quint64, int> *GetInt64Frequencies() const;
    virtual const QMap<double, int> *GetDoubleFrequencies() const;
    virtual const QMap<float, int> *GetFloatFrequencies() const;
    virtual const QMap<quint16, int> *GetHalfFloatFrequencies() const;
    // Add or remove one occurrence of a value. A value whose count becomes 0 is removed from the
    // map.
    /// Cells of 8 bits. In the four forms for integers a signed value is given as its unsigned bit
    /// pattern.
    virtual void UpdateInt8Frequencies(quint8 value, bool add);
    /// Cells of 16 bits.
    virtual void UpdateInt16Frequencies(quint16 value, bool add);
    /// Cells of 32 bits.
    virtual void UpdateInt32Frequencies(quint32 value, bool add);
    /// Cells of 64 bits.
    virtual void UpdateInt64Frequencies(quint64 value, bool add);
    /// Decimals of 64 bits.
    virtual void UpdateDoubleFrequencies(double value, bool add);
    /// Decimals of 32 bits.
    virtual void UpdateFloatFrequencies(float value, bool add);
    /// Decimals of 16 bits, by their bit pattern.
    virtual void UpdateHalfFloatFrequencies(quint16 value, bool add);

    /// Adds a grid. False, with nothing changed, for a grid of another size, type or depth, an
    /// unknown realization, an interval that contains no instant and, without `overwrite`, an
    /// interval without a free part.
    /// @param overwrite  whether the new grid takes its whole interval; otherwise it takes the free
    ///                   parts.
    /// @param recalculate  whether the frequencies are counted again.
    bool AddRasterValues(int realization, const TimeStamp &stamp, const MRasterBand &band,
                         bool overwrite, bool recalculate);
    /// The grid of exactly that interval, for changes. A grid of another interval that overlaps it
    /// raises "Time stamp mismatch".
    MRasterObservation *GetRasterInfo(int realization, const TimeStamp &stamp);
    /// The grid whose interval contains `time`.
    const MRasterObservation *GetConstRasterInfo(int realization, qint64 time) const;
    QList<TimeStamp> GetRasterIntervals(int realization) const;

    /// Set one cell of the grid of exactly that interval. False for a dataset of another type: the
    /// form for doubles needs decimals, the integer forms need signed integers.
    bool SetValue(int realization, double value, int column, int row, const TimeStamp &stamp);
    bool SetValue(int realization, qint64 value, int column, int row, const TimeStamp &stamp);
    bool SetValue(int realization, quint64 value, int column, int row, const TimeStamp &stamp);
    bool GetValue(int realization, int column, int row, qint64 time, quint64 &value) const;
    bool GetValue(int realization, int column, int row, qint64 time, qint64 &value) const;
    bool GetValue(int realization, int column, int row, qint64 time, double &value) const;
    bool GetValueAsDecimal(int index, int realization, qint64 time, double &value) const;
    bool GetValueAsDecimal(int column, int row, int realization, qint64 time, double &value) const;
    /// All cells as numbers. Missing cells become minus infinity, and `missing` is set to that
    /// value.
    bool GetValuesAsDecimal(int realization, qint64 time, QVector<double> &values,
                            MissingFlag &missing) const;

    /// Whether cells of this type have a mean and extremes. Colours do not.
    bool HasStatisticsForm() const;

    /// Whether a value of this width equals the missing flag; false without a flag.
    bool IsMissing(double value) const { return mCellFlag.matches(value); }
    bool IsMissing(float value) const { return mCellFlag.matches(value); }
    bool IsMissing(quint8 value) const { return mCellFlag.matches(value); }
    bool IsMissing(quint16 value) const { return mCellFlag.matches(value); }
    bool IsMissing(quint32 value) const { return mCellFlag.matches(value); }
    bool IsMissing(quint64 value) const { return mCellFlag.matches(value); }
    bool IsMissing(qint8 value) const { return mCellFlag.matches(value); }
    bool IsMissing(qint16 value) const { return mCellFlag.matches(value); }
    bool IsMissing(qint32 value) const { return mCellFlag.matches(value); }
    bool IsMissing(qint64 value) const { return mCellFlag.matches(value); }

protected:
    bool Restore(QDataStream &in, datainterface::LoadContext &context) override;

private:
    using ObservationMap = QMap<TimeStamp, MRasterObservation *>;

    TimeStamp stampOf(const TimeStamp &stamp) const;
    void dropStatistics(int realization);
    void dataChanged(int realization);
    void overwriteGrids(ObservationMap &grids, const TimeStamp &stamp, const MRasterBand &band);
    bool fillFreeTime(ObservationMap &grids, const TimeStamp &stamp, const MRasterBand &band);
    template <class Value>
    bool setCell(int realization, Value value, int column, int row, const TimeStamp &stamp);
    template <class T> void updateFrequency(T value, bool add);
    void countCell(const MRasterObservation &grid, int column, int row);
    std::vector<datainterface::ValueRun> sortedValues() const;
    bool restoreFlag(QDataStream &in, const datainterface::LoadContext &context);
    void restoreStatistics();
    bool restoreRealizations(QDataStream &in);
    bool restoreObservations(QDataStream &in, ObservationMap &grids);

    int mBitDepth = 0;
    unsigned int mRows = 0;
    unsigned int mColumns = 0;
    MissingFlag mMissingFlag;
    MissingFlag mCellFlag;
    RealizationRasterDataFrequencies mFrequencies;
    mutable datainterface::PlainCounts<double> mDoubleCounts; ///< the map that was returned last
    mutable datainterface::PlainCounts<float> mFloatCounts;
    QMap<int, ObservationMap> mRealizations; ///< owned
    MDataSource *mSource = nullptr;          ///< the owner
};
