// SPDX-License-Identifier: MIT
#include "datainterface/MRasterAttributes.h"
#include <QtAlgorithms>
#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include "attributeChange.h"

namespace {

constexpr std::size_t rowBytes(int columns)
{
    return (static_cast<std::size_t>(columns) + 7) / 8;
}

/// The mask of the bits that a row of this many columns uses in its last byte.
constexpr unsigned char lastByteMask(int columns)
{
    return static_cast<unsigned char>(columns % 8 == 0 ? 0xFF : (1 << columns % 8) - 1);
}

bool testBit(const unsigned char *row, int column)
{
    return (row[column / 8] >> column % 8 & 1) != 0;
}

void setBit(unsigned char *row, int column)
{
    row[column / 8] = static_cast<unsigned char>(row[column / 8] | 1 << column % 8);
}

} // namespace

MRasterAttributes::MRasterAttributes(int columns, int rows) : MAttributes(0)
{
    setSize(columns, rows);
}

void MRasterAttributes::setSize(int columns, int rows)
{
    const bool isGrid =
        columns > 0 && rows > 0 && qint64(columns) * rows <= std::numeric_limits<int>::max();
    mColumns = isGrid ? columns : 0;
    mRows = isGrid ? rows : 0;
    mByteCount = mColumns * mRows;
    mRasterByteCount = static_cast<int>(arrayBytes());
}

void MRasterAttributes::Resize(int)
{
}

void MRasterAttributes::RemoveObjects(const QSet<int> &)
{
}

void MRasterAttributes::Resize(int columns, int rows)
{
    MRasterAttributes resized(columns, rows);
    const int commonColumns = std::min(mColumns, resized.mColumns);
    const int commonRows = std::min(mRows, resized.mRows);
    const std::size_t commonBytes = rowBytes(commonColumns);
    for (const auto &flags : mAttributeVectors) {
        auto copy = std::make_unique<unsigned char[]>(resized.arrayBytes());
        for (std::size_t row = 0; commonBytes > 0 && row < static_cast<std::size_t>(commonRows);
             ++row) {
            unsigned char *to = copy.get() + row * rowBytes(resized.mColumns);
            std::memcpy(to, flags.get() + row * rowBytes(mColumns), commonBytes);
            to[commonBytes - 1] = to[commonBytes - 1] & lastByteMask(commonColumns);
        }
        resized.mAttributeVectors.push_back(std::move(copy));
    }
    mAttributeVectors.swap(resized.mAttributeVectors);
    setSize(columns, rows);
}

// A grid can have very many cells, so they are set by bytes if no listener needs the changed ids.
void MRasterAttributes::SetAllAttribute(int attribute, bool state)
{
    unsigned char *flags = flagsOf(attribute);
    if (!flags || isObserved())
        return MAttributes::SetAllAttribute(attribute, state);
    std::memset(flags, state ? 0xFF : 0, arrayBytes());
    const std::size_t perRow = rowBytes(mColumns);
    for (std::size_t end = perRow; state && end <= arrayBytes() && perRow > 0; end += perRow)
        flags[end - 1] = lastByteMask(mColumns);
}

QVector<unsigned int> MRasterAttributes::GetIdsByState(int attribute, bool state)
{
    QVector<unsigned int> ids;
    const unsigned char *row = flagsOf(attribute);
    if (!row)
        return ids;
    ids.reserve(GetStateCount(attribute, state));
    const unsigned char empty = state ? 0 : 0xFF;
    for (int rowNumber = 0; rowNumber < mRows; ++rowNumber, row += rowBytes(mColumns)) {
        const auto first =
            static_cast<unsigned int>(rowNumber) * static_cast<unsigned int>(mColumns);
        for (int column = 0; column < mColumns; ++column) {
            if (column % 8 == 0 && row[column / 8] == empty)
                column += 7; // skip these eight
            else if (testBit(row, column) == state)
                ids.append(first + static_cast<unsigned int>(column));
        }
    }
    return ids;
}

int MRasterAttributes::GetStateCount(int attribute, bool state) const
{
    const unsigned char *flags = flagsOf(attribute);
    if (!flags)
        return 0;
    int set = 0;
    std::size_t at = 0;
    for (quint64 word = 0; at + sizeof word <= arrayBytes(); at += sizeof word) {
        std::memcpy(&word, flags + at, sizeof word);
        set += static_cast<int>(qPopulationCount(word));
    }
    for (; at < arrayBytes(); ++at)
        set += static_cast<int>(qPopulationCount(flags[at]));
    return state ? set : mByteCount - set;
}

bool MRasterAttributes::GetAttribute(int attribute, int column, int row) const
{
    return isCell(column, row)
           && GetAttribute(attribute, static_cast<unsigned int>(mColumns * row + column));
}

bool MRasterAttributes::SetAttribute(int attribute, int column, int row, bool state)
{
    return isCell(column, row)
           && SetAttribute(attribute, static_cast<unsigned int>(mColumns * row + column), state);
}

bool MRasterAttributes::ToggleAttribute(int attribute, int column, int row)
{
    return isCell(column, row)
           && ToggleAttribute(attribute, static_cast<unsigned int>(mColumns * row + column));
}

void MRasterAttributes::ToggleAttributeIds(int attribute, const QList<unsigned int> &ids)
{
    Change change(*this, attribute);
    for (unsigned int id : ids)
        change.toggle(id);
    change.announce();
}

void MRasterAttributes::SetAttributeRect(int attribute, const QRect &rect, bool state)
{
    Change change(*this, attribute);
    visitCells(rect, [&](unsigned int id) { change.set(id, state); });
    change.announce();
}

void MRasterAttributes::ToggleAttributeRect(int attribute, const QRect &rect)
{
    Change change(*this, attribute);
    visitCells(rect, [&](unsigned int id) { change.toggle(id); });
    change.announce();
}

template <class Visit> void MRasterAttributes::visitCells(const QRect &rect, Visit visit) const
{
    const QRect cells = rect.intersected(QRect(0, 0, mColumns, mRows));
    for (int row = cells.top(); row <= cells.bottom(); ++row)
        for (int column = cells.left(); column <= cells.right(); ++column)
            visit(static_cast<unsigned int>(mColumns * row + column));
}

// Steps through the grid as displays do, so that both show the same cells.
unsigned char *MRasterAttributes::GetRescaledAttributeVector(int attribute, int width, int height)
{
    const unsigned char *flags = flagsOf(attribute);
    if (!flags || width <= 0 || height <= 0 || mByteCount == 0)
        return nullptr;
    const std::size_t toBytes = rowBytes(width);
    std::unique_ptr<unsigned char[]> scaled(
        new (std::nothrow) unsigned char[toBytes * static_cast<std::size_t>(height)]());
    if (!scaled)
        return nullptr;
    const double columnStep = static_cast<double>(mColumns) / width;
    const double rowStep = static_cast<double>(mRows) / height;
    double y = 0.0;
    for (unsigned char *to = scaled.get(); height > 0; --height, to += toBytes, y += rowStep) {
        const auto row = static_cast<std::size_t>(std::min(static_cast<int>(y), mRows - 1));
        const unsigned char *from = flags + row * rowBytes(mColumns);
        double x = 0.0;
        for (int column = 0; column < width; ++column, x += columnStep)
            if (testBit(from, std::min(static_cast<int>(x), mColumns - 1)))
                setBit(to, column);
    }
    return scaled.release();
}

std::size_t MRasterAttributes::arrayBytes() const
{
    return rowBytes(mColumns) * static_cast<std::size_t>(mRows);
}

bool MRasterAttributes::readFlag(const unsigned char *flags, unsigned int id) const
{
    const auto columns = static_cast<unsigned int>(mColumns);
    return testBit(flags + id / columns * rowBytes(mColumns), static_cast<int>(id % columns));
}

void MRasterAttributes::writeFlag(unsigned char *flags, unsigned int id, bool state) const
{
    const auto columns = static_cast<unsigned int>(mColumns);
    unsigned char &byte = flags[id / columns * rowBytes(mColumns) + id % columns / 8];
    const unsigned int bit = 1u << id % columns % 8;
    byte = static_cast<unsigned char>(state ? byte | bit : byte & ~bit);
}

bool MRasterAttributes::isCell(int column, int row) const
{
    return column >= 0 && column < mColumns && row >= 0 && row < mRows;
}
