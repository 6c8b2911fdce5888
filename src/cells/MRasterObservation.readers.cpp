// SPDX-License-Identifier: MIT
// Each reader is one generic lambda over cells; the dispatch by type and depth is outside of it.
#include "datainterface/MRasterObservation.h"
#include <cmath>
#include <cstring>
#include <limits>
#include "Common/DataManager.h"
#include "Common/detail/failure.h"
#include "cells/cellForms.h"
#include "datainterface/HeldGrid.h"

using namespace datainterface;

namespace {

/// Reads one cell into `value`, converted by `convert`; false for a missing cell.
template <class Cells, class Value, class Convert>
bool readCell(const Cells &cells, int index, const MissingFlag &flag, Value &value, Convert convert)
{
    const auto cell = cells[index];
    if (CellTest<std::decay_t<Cells>>(flag).isMissing(cell))
        return false;
    value = convert(cell);
    return true;
}

/// Stands for the cells of a grid of which one was read.
template <class T> struct OneCell {
    T cell;
    T operator[](int) const { return cell; }
};

/// Whether a cell equals a number. Integers are compared exactly, whatever their signedness; if
/// either one is a decimal, both are compared as doubles, which merges integers beyond 2^53.
template <class T, class Number> bool equalsNumber(T cell, Number number)
{
    if constexpr (std::is_same_v<T, half>)
        return equalsNumber(static_cast<float>(cell), number);
    else if constexpr (std::is_integral_v<T> && std::is_integral_v<Number>)
        return (std::is_signed_v<T> && cell < T(0))
                   == (std::is_signed_v<Number> && number < Number(0))
               && static_cast<quint64>(cell) == static_cast<quint64>(number);
    else
        return static_cast<double>(cell) == static_cast<double>(number);
}

/// Converts the number to a cell; false when no cell of the type is equal to it.
template <class T, class Number> bool asCell(Number number, T &cell)
{
    if constexpr (std::is_same_v<T, half>) {
        cell = half(static_cast<float>(number));
    } else if constexpr (std::is_integral_v<T> && std::is_floating_point_v<Number>) {
        constexpr double kEnd =
            2.0 * static_cast<double>(T(1) << (8 * sizeof(T) - 1 - std::is_signed_v<T>));
        if (!(number >= (std::is_signed_v<T> ? -kEnd : 0.0) && number < kEnd))
            return false;
        cell = static_cast<T>(number);
    } else {
        cell = static_cast<T>(number);
    }
    return equalsNumber(cell, number);
}

template <class Number> int tally(const MRasterObservation &grid, Number number)
{
    const HeldGrid hold(grid);
    const int count = grid.CellCount();
    int found = 0;
    visitCells(grid, [&](const auto &cells) {
        using T = ValueOf<std::decay_t<decltype(cells)>>;
        T wanted{};
        if (!asCell(number, wanted))
            return;
        for (int i = 0; i < count; ++i) {
            if constexpr (std::is_same_v<T, half>)
                found += static_cast<float>(cells[i]) == static_cast<float>(wanted);
            else
                found += cells[i] == wanted;
        }
    });
    return found;
}

} // namespace

// Reads one cell in place, as its block is, if the cells are not in memory: a grid need not be read
// for it. `visit` receives an array of which only the element `index` may be read. False when the
// cell is to be read from the whole grid.
template <class... Types, class Visit>
bool MRasterObservation::visitPeeked(int index, Visit visit) const
{
    if (mCheckOutCount > 0 || mBlockId < 0 || (mDirty && !mData.isEmpty()))
        return false;
    const BlockReading store;
    const int size = store.sizeOf(mBlockId);
    if (size < GetByteLength() || GetByteLength() <= 0)
        return false;
    const auto tryWidth = [&](auto cell) {
        using T = decltype(cell);
        constexpr int kBytes = sizeof(T);
        if (mBitDepth != 8 * kBytes)
            return false;
        if (const char *cells = store.inPlace(mBlockId, size))
            std::memcpy(&cell, cells + qint64(index) * kBytes, kBytes);
        else if (!store.readPiece(mBlockId, size, index * kBytes, reinterpret_cast<char *>(&cell),
                                  kBytes))
            return false;
        visit(OneCell<T>{cell});
        return true;
    };
    return (tryWidth(Types{}) || ...);
}

/// Reads one cell as an integer: the bit of a grid of 1 bit, else the cell of the width that is among
/// `Widths`.
template <class... Widths, class Integer>
bool MRasterObservation::readInteger(int index, Integer &value, const MissingFlag &flag) const
{
    if (!holdsIndex(index))
        return false;
    bool isRead = false;
    const auto read = [&](const auto &cells) {
        isRead = readCell(cells, index, flag, value,
                          [](auto cell) { return static_cast<Integer>(cell); });
    };
    if (visitPeeked<Widths...>(index, read))
        return isRead;
    const HeldGrid hold(*this);
    if (mBitDepth == 1)
        read(BitCells(*this));
    else
        visitWidth<Widths...>(*this, read);
    return isRead;
}

bool MRasterObservation::GetIntegerValue(int column, int row, qint64 &value,
                                         const MissingFlag &flag) const
{
    return holdsCell(column, row) && GetIntegerValue(row * mColumns + column, value, flag);
}

bool MRasterObservation::GetIntegerValue(int index, qint64 &value, const MissingFlag &flag) const
{
    return readInteger<qint8, qint16, qint32, qint64>(index, value, flag);
}

bool MRasterObservation::GetUnsignedIntegerValue(int column, int row, quint64 &value,
                                                 const MissingFlag &flag) const
{
    return holdsCell(column, row) && GetUnsignedIntegerValue(row * mColumns + column, value, flag);
}

bool MRasterObservation::GetUnsignedIntegerValue(int index, quint64 &value,
                                                 const MissingFlag &flag) const
{
    return readInteger<quint8, quint16, quint32, quint64>(index, value, flag);
}

bool MRasterObservation::GetDecimalValue(int column, int row, double &value,
                                         const MissingFlag &flag) const
{
    return holdsCell(column, row) && GetDecimalValue(row * mColumns + column, value, flag);
}

bool MRasterObservation::GetDecimalValue(int index, double &value, const MissingFlag &flag) const
{
    if (!holdsIndex(index))
        return false;
    bool isRead = false;
    const auto read = [&](const auto &cells) {
        isRead = readCell(cells, index, flag, value, [](auto cell) { return cellToDouble(cell); });
    };
    if (visitPeeked<half, float, double>(index, read))
        return isRead;
    const HeldGrid hold(*this);
    visitDecimalWidth(*this, read);
    return isRead;
}

bool MRasterObservation::GetValueAsDecimal(int column, int row, double &value,
                                           const MissingFlag &flag) const
{
    return holdsCell(column, row) && GetValueAsDecimal(row * mColumns + column, value, flag);
}

bool MRasterObservation::GetValueAsDecimal(int index, double &value, const MissingFlag &flag) const
{
    const MDatum found = GetValue(index, flag);
    if (found.isEmpty())
        return false;
    value = found.toDouble();
    return true;
}

MDatum MRasterObservation::GetValue(int index, const MissingFlag &flag) const
{
    double decimal = 0.0;
    qint64 integer = 0;
    quint64 whole = 0;
    switch (mType) {
    case RasterDecimalType:
        return GetDecimalValue(index, decimal, flag) ? MDatum(decimal) : MDatum();
    case RasterIntegerType:
        return GetIntegerValue(index, integer, flag) ? MDatum(integer) : MDatum();
    case RasterUnsignedType:
    case RasterCellType:
    case RasterColorType:
        return GetUnsignedIntegerValue(index, whole, flag) ? MDatum(whole) : MDatum();
    default:
        fail("Invalid raster data type");
    }
}

bool MRasterObservation::GetValuesAsDecimal(QVector<double> &values, const MissingFlag &in,
                                            MissingFlag &out) const
{
    const HeldGrid hold(*this);
    const int count = CellCount();
    constexpr double kMissing = -std::numeric_limits<double>::infinity();
    values.resize(count);
    out = MissingFlag(kMissing);
    double *to = values.data();
    return visitCells(*this, [&](const auto &cells) {
        const CellTest<std::decay_t<decltype(cells)>> test(in);
        if (test.isSet()) {
            for (int i = 0; i < count; ++i) {
                const auto cell = cells[i];
                to[i] = test.equals(cell) ? kMissing : cellToDouble(cell);
            }
        } else {
            for (int i = 0; i < count; ++i)
                to[i] = cellToDouble(cells[i]);
        }
    });
}

int MRasterObservation::TallyValue(qint64 value) const
{
    return tally(*this, value);
}

int MRasterObservation::TallyValue(quint64 value) const
{
    return tally(*this, value);
}

int MRasterObservation::TallyValue(double value) const
{
    return tally(*this, value);
}
