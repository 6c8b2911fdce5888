// SPDX-License-Identifier: MIT
/// Flags of the cells of a grid, one bit each.
#pragma once
#include <QRect>
#include "datainterface/MAttributes.h"

/// Every row of cells starts on a byte: column c of row r is bit c % 8, least significant first, of
/// byte r * ((columns + 7) / 8) + c / 8. The bits after the last column of a row are clear. An
/// object id is row * columns + column.
class DATAINTERFACE_EXPORT MRasterAttributes : public MAttributes {
    Q_OBJECT
public:
    /// A grid whose cell numbers do not fit an int becomes empty.
    MRasterAttributes(int columns, int rows);

    /// Does nothing: a grid is resized by columns and rows.
    void Resize(int objectCount) override;
    /// Does nothing: cells cannot be removed from a grid.
    void RemoveObjects(const QSet<int> &objects) override;
    using MAttributes::GetAttribute;
    using MAttributes::SetAttribute;
    using MAttributes::ToggleAttribute;
    using MAttributes::ToggleAttributeIds;
    void SetAllAttribute(int attribute, bool state) override;
    QVector<unsigned int> GetIdsByState(int attribute, bool state) override;
    int GetStateCount(int attribute, bool state) const override;

    /// Keeps the flags of the cells that both grids have; the flags of new cells are clear. Emits
    /// nothing.
    virtual void Resize(int columns, int rows);
    virtual bool GetAttribute(int attribute, int column, int row) const;
    /// @return the old state.
    virtual bool SetAttribute(int attribute, int column, int row, bool state);
    /// @return the old state.
    virtual bool ToggleAttribute(int attribute, int column, int row);
    /// Inverts the flag once for each occurrence of an id, so an id that occurs twice does not
    /// change.
    virtual void ToggleAttributeIds(int attribute, const QList<unsigned int> &ids);
    /// Sets the flags of all cells in a rectangle of columns and rows. Cells outside the grid are
    /// ignored.
    virtual void SetAttributeRect(int attribute, const QRect &rect, bool state);
    /// Inverts the flags of all cells in a rectangle.
    virtual void ToggleAttributeRect(int attribute, const QRect &rect);
    /// The flags for a display of another size, one bit for each cell in the same layout: ((width +
    /// 7) >> 3) * height bytes, which the caller frees with delete[]. Each display cell takes the
    /// nearest source cell above and to the left. Null for an unknown attribute, an empty grid or
    /// display, and when memory is short.
    virtual unsigned char *GetRescaledAttributeVector(int attribute, int width, int height);

    int GetRows() const { return mRows; }
    int GetColumns() const { return mColumns; }
    /// The size of one attribute in bytes.
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
