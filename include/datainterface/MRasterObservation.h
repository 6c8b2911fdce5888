// SPDX-License-Identifier: MIT
/// A grid that lives in the block store while nobody uses it: what a raster dataset keeps for one
/// time.
#pragma once
#include <QDataStream>
#include <memory>
#include "datainterface/MDatum.h"
#include "datainterface/MRasterBand.h"
#include "datainterface/MissingFlag.h"
#include "datainterface/export.h"

class HeldGrid;

/// The header stays in memory; the cells are paged in by a check-out and let go by the last
/// check-in. Check-outs come in pairs; each access below makes one of its own, so loops over cells
/// hold one around them. The one owner of its block.
///
/// Readers give false, with the output untouched, for a cell that is not there or is missing, and
/// for a depth that they do not read. A cell is missing when the flag is set and its value of the
/// cell's width is the cell's; the form of a value is the reader's, by depth alone, unless a type
/// is named. Depth 1 knows no missing cell, and every read of it looks at the bit numbered `columns
/// % 8` of the byte that holds the cell: files hold grids made for that.
class DATAINTERFACE_EXPORT MRasterObservation : public MRasterBand {
public:
    /// Stores the cells of `band` at once.
    explicit MRasterObservation(const MRasterBand &band);
    /// The header as SaveToStream writes it, by dataInterfaceVersionLoading. The block is not
    /// touched.
    explicit MRasterObservation(QDataStream &in);
    /// Independent copies, with blocks of their own.
    MRasterObservation(const MRasterObservation &other);
    MRasterObservation &operator=(const MRasterObservation &other);
    /// Deletes the block. Only the dataset that holds an observation deletes it.
    ~MRasterObservation() override;

    // What these three change does not reach the block: the last check-in drops it. SetValue lasts.
    void SetColorMap(const QVector<unsigned int> &colorMap) override;
    void SetData(unsigned char *data, const QVector<unsigned int> &colorMap) override;
    void SetData(void *data) override;
    /// Writes changed cells back at the last one, before memory is let go; raises "result" when
    /// there is no room.
    virtual bool CheckInObservation() const;
    /// Raises "Can't load raster data block" for a block that cannot be read; the count stays
    /// raised.
    virtual bool CheckOutObservation() const;

    std::unique_ptr<MRasterObservation> clone() const;
    /// Rows, columns, type, depth, colour map and block id; the cells stand in the block store.
    void SaveToStream(QDataStream &out) const;
    int BlockId() const { return mBlockId; }
    int CheckOutCount() const { return mCheckOutCount; }

    /// False for a place outside the grid and for another depth. Depths 16 (rounded to half), 32
    /// and 64.
    bool SetValue(double value, int column, int row);
    /// Depths 1, 8, 16, 32, 64; the value is cut to the width. At depth 1 no bit is ever cleared.
    bool SetValue(quint64 value, int column, int row);
    /// Depths 8, 16, 32, 64.
    bool SetValue(qint64 value, int column, int row);

    bool GetIntegerValue(int column, int row, qint64 &value, const MissingFlag &flag) const;
    bool GetIntegerValue(int index, qint64 &value, const MissingFlag &flag) const;
    bool GetUnsignedIntegerValue(int column, int row, quint64 &value,
                                 const MissingFlag &flag) const;
    bool GetUnsignedIntegerValue(int index, quint64 &value, const MissingFlag &flag) const;
    bool GetDecimalValue(int column, int row, double &value, const MissingFlag &flag) const;
    bool GetDecimalValue(int index, double &value, const MissingFlag &flag) const;
    /// By type; an unknown one raises "Invalid raster data type".
    bool GetValueAsDecimal(int column, int row, double &value, const MissingFlag &flag) const;
    bool GetValueAsDecimal(int index, double &value, const MissingFlag &flag) const;
    /// Empty for a cell that is missing or not there. Raises as GetValueAsDecimal.
    MDatum GetValue(int index, const MissingFlag &flag) const;
    /// Every cell, by type; missing ones become minus infinity, which `out` then names.
    bool GetValuesAsDecimal(QVector<double> &values, const MissingFlag &in, MissingFlag &out) const;
    /// How many cells are equal to a number, missing or not.
    int TallyValue(qint64 value) const;
    int TallyValue(quint64 value) const;
    int TallyValue(double value) const;

    /// Between memory and block. Raise as the check-in and the check-out do.
    void WriteData() const;
    void ReadData() const;

private:
    MRasterObservation(const MRasterObservation &other, const HeldGrid &hold);
    bool holdsCell(int column, int row) const;
    bool holdsIndex(int index) const;
    char *writableCells();

    mutable int mBlockId = -1;
    mutable int mCheckOutCount = 0;
    mutable bool mDirty = false;
    /// What was handed out before a first write; pointers to it stay good.
    mutable QByteArray mReadCells;
};
