// SPDX-License-Identifier: MIT
/// Flags of the cells of a grid, one bit each.
#pragma once
#include <QRect>
#include "datainterface/MAttributes.h"

/// Every row of cells starts on a byte: column c of row r is bit c % 8, least significant first, of
/// byte r * ((columns + 7) / 8) + c / 8. The bits behind a row's last column are clear. An object
/// id is row * columns + column.
class DATAINTERFACE_EXPORT MRasterAttributes : public MAttributes {
    Q_OBJECT
public:
    /// A grid whose cell numbers do not fit an int is empty.
    MRasterAttributes(int columns, int rows);

    /// Nothing happens: a grid changes by columns and rows.
    void Resize(int objectCount) override;
    /// Nothing happens: a grid keeps its cells.
    void RemoveObjects(const QSet<int> &objects) override;
    using MAttributes::GetAttribute;
    using MAttributes::SetAttribute;
    using MAttributes::ToggleAttribute;
    using MAttributes::ToggleAttributeIds;
    void SetAllAttribute(int attribute, bool state) override;
    QVector<unsigned int> GetIdsByState(int attribute, bool state) override;
    int GetStateCount(int attribute, bool state) const override;

    /// The flags of the cells that both grids have stay, new ones are clear. Emits nothing.
    virtual void Resize(int columns, int rows);
    virtual bool GetAttribute(int attribute, int column, int row) const;
    /// @return the old state.
    virtual bool SetAttribute(int attribute, int column, int row, bool state);
    /// @return the old state.
    virtual bool ToggleAttribute(int attribute, int column, int row);
    /// An id that comes twice is as it was.
    virtual void ToggleAttributeIds(int attribute, const QList<unsigned int> &ids);
    /// All cells of a rectangle of columns and rows; what lies outside the grid is left out.
    virtual void SetAttributeRect(int attribute, const QRect &rect, bool state);
    /// Turns the flags of all cells of a rectangle.
    virtual void ToggleAttributeRect(int attribute, const QRect &rect);
    /// The flags for a display of another size, a bit a cell in the same layout: ((width + 7) >> 3)
    /// * height bytes that the caller frees with delete[]. Each takes the nearest source cell up
    /// and left. Null for an unknown attribute, an empty grid or display, and when memory is short.
    virtual unsigned char *GetRescaledAttributeVector(int attribute, int width, int height);

    int GetRows() const { return mRows; }
    int GetColumns() const { return mColumns; }
    /// Bytes of one attribute.
    int GetByteCount() const { return mRasterByteCount; }

protected:
    std::size_t arrayBytes() const override;
    bool readFlag(const unsigned char *flags, unsigned int id) const override;
    void writeFlag(unsigned char *flags, unsigned int id, bool state) const override;

private:
    void setSize(int columns, int rows);
    bool isCell(int column, int row) const;
    template <class Visit> void visitCells(const QRect &rect, Visit visit) const;

    int mRows = 0;
    int mColumns = 0;
    int mRasterByteCount = 0;
};
