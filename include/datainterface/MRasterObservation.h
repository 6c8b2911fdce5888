// SPDX-License-Identifier: MIT
/// A grid whose cells are in the block store while they are not in use. A raster dataset has one
/// for each interval.
#pragma once
#include <QDataStream>
#include <memory>
#include "datainterface/MDatum.h"
#include "datainterface/MRasterBand.h"
#include "datainterface/MissingFlag.h"
#include "datainterface/export.h"

class HeldGrid;

/// The header stays in memory. A check-out reads the cells into memory and the last check-in
/// releases them. Each check-out must be paired with a check-in. Every access below makes a
/// check-out of its own, so a loop over cells should hold one (HeldGrid). The observation is the
/// only owner of its block.
///
/// Readers return false, with the output unchanged, for a cell outside the grid, for a missing
/// cell, and for a depth that they do not read. A cell is missing when the flag is set and its
/// value in the width of the cell equals the cell. Unless a type is named, a reader interprets the
/// bytes of a cell by depth alone.
///
/// Cells of 1 bit are never missing. They are stored eight to a byte, but every read tests bit
/// number `columns % 8` of the byte that holds the cell, so all cells of a byte read alike. The bit
/// depends only on the grid: grids in existing files were written for readers that work in this
/// way, and a reader that used the position of the cell would return other values.
class DATAINTERFACE_EXPORT MRasterObservation : public MRasterBand {
public:
    /// Stores the cells of `band` at once.
    explicit MRasterObservation(const MRasterBand &band);
    /// Reads the header that SaveToStream writes, in the form of dataInterfaceVersionLoading. The
    /// block is not read.
    explicit MRasterObservation(QDataStream &in);
    /// Copies have blocks of their own.
    MRasterObservation(const MRasterObservation &other);
    MRasterObservation &operator=(const MRasterObservation &other);
    /// Deletes the block. Only the dataset that holds an observation deletes it.
    ~MRasterObservation() override;

    // The last check-in discards the cells that these three set, and with them the changes that
    // SetValue made before in the same check-out. Other changes by SetValue are written to the
    // block.
    void SetColorMap(const QVector<unsigned int> &colorMap) override;
    void SetData(unsigned char *data, const QVector<unsigned int> &colorMap) override;
    void SetData(void *data) override;
    /// Ends a check-out. The last check-in writes changed cells back and then releases the memory;
    /// it raises "result" when there is no room.
    virtual bool CheckInObservation() const;
    /// Reads the cells into memory. Raises "Can't load raster data block" for a block that cannot
    /// be read; the check-out still counts and needs its check-in.
    virtual bool CheckOutObservation() const;

    std::unique_ptr<MRasterObservation> clone() const;
    /// Writes rows, columns, type, depth, colour map and block id. The cells are in the block
    /// store.
    void SaveToStream(QDataStream &out) const;
    int BlockId() const { return mBlockId; }
    int CheckOutCount() const { return mCheckOutCount; }

    /// Sets a decimal cell of depth 16 (rounded to a half), 32 or 64. False for another depth and
    /// for a cell outside the grid.
    bool SetValue(double value, int column, int row);
    /// Depths 1, 8, 16, 32 and 64; the value is truncated to the width. At depth 1 bits are only
    /// set, never cleared: with i the number of the cell, the low byte of the value is shifted left
    /// by i - i / 8, masked with 7 and ORed into byte i / 8.
    bool SetValue(quint64 value, int column, int row);
    /// Depths 8, 16, 32 and 64.
    bool SetValue(qint64 value, int column, int row);

    bool GetIntegerValue(int column, int row, qint64 &value, const MissingFlag &flag) const;
    bool GetIntegerValue(int index, qint64 &value, const MissingFlag &flag) const;
    bool GetUnsignedIntegerValue(int column, int row, quint64 &value,
                                 const MissingFlag &flag) const;
    bool GetUnsignedIntegerValue(int index, quint64 &value, const MissingFlag &flag) const;
    bool GetDecimalValue(int column, int row, double &value, const MissingFlag &flag) const;
    bool GetDecimalValue(int index, double &value, const MissingFlag &flag) const;
    /// Interprets the cell by its type. An unknown type raises "Invalid raster data type".
    bool GetValueAsDecimal(int column, int row, double &value, const MissingFlag &flag) const;
    bool GetValueAsDecimal(int index, double &value, const MissingFlag &flag) const;
    /// Returns an empty value for a missing cell and for one outside the grid. Raises as
    /// GetValueAsDecimal does.
    MDatum GetValue(int index, const MissingFlag &flag) const;
    /// All cells, interpreted by type. Missing cells become minus infinity, and `out` is set to
    /// that value.
    bool GetValuesAsDecimal(QVector<double> &values, const MissingFlag &in, MissingFlag &out) const;
    /// The number of cells that are equal to a number, including missing cells.
    int TallyValue(qint64 value) const;
    int TallyValue(quint64 value) const;
    int TallyValue(double value) const;

    /// Copy the cells from memory to the block and from the block to memory. They raise as the
    /// check-in and the check-out do.
    void WriteData() const;
    void ReadData() const;

private:
    template <class... Types, class Visit> bool visitPeeked(int index, Visit visit) const;
    template <class... Widths, class Integer>
    bool readInteger(int index, Integer &value, const MissingFlag &flag) const;
    MRasterObservation(const MRasterObservation &other, const HeldGrid &hold);
    bool holdsCell(int column, int row) const;
    bool holdsIndex(int index) const;
    char *writableCells();

    mutable int mBlockId = -1;
    mutable int mCheckOutCount = 0;
    mutable bool mDirty = false;
    /// The cells as they were before the first write of a check-out, so that pointers that were
    /// returned before it stay valid.
    mutable QByteArray mReadCells;
};
