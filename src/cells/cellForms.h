// SPDX-License-Identifier: MIT
/// The forms of raster cells: the C++ type for each type code and bit depth. Readers, tallies,
/// statistics and frequencies are generic lambdas over it, with the dispatch outside their loops.
#pragma once
#include <QtGlobal>
#include <tuple>
#include <type_traits>
#include "datainterface/MDatum.h"
#include "datainterface/MRasterBand.h"
#include "datainterface/MissingFlag.h"
#include "datainterface/half.h"

namespace datainterface {

constexpr int kUnsignedCells = RasterUnsignedType | RasterCellType;

/// @tparam Codes  the type codes of this form, one bit each.
template <int Codes, int Bits, class T> struct CellForm {
    using type = T;
    static constexpr bool holds(int code, int bits)
    {
        return (code & Codes) != 0 && (code & ~Codes) == 0 && bits == Bits;
    }
};
using CellForms =
    std::tuple<CellForm<RasterDecimalType, 16, half>, CellForm<RasterDecimalType, 32, float>,
               CellForm<RasterDecimalType, 64, double>, CellForm<RasterIntegerType, 8, qint8>,
               CellForm<RasterIntegerType, 16, qint16>, CellForm<RasterIntegerType, 32, qint32>,
               CellForm<RasterIntegerType, 64, qint64>,
               CellForm<kUnsignedCells | RasterColorType, 8, quint8>,
               CellForm<kUnsignedCells, 16, quint16>, CellForm<kUnsignedCells, 32, quint32>,
               CellForm<kUnsignedCells, 64, quint64>>;
using BitForm = CellForm<kUnsignedCells, 1, bool>;
template <class Form> using CellOf = typename std::decay_t<Form>::type;

/// Calls `visit` with the form of a type and depth, BitForm aside; false when there is none.
template <class Visit> bool visitCellForm(int code, int bits, Visit visit)
{
    const auto tryForm = [&](auto form) { return form.holds(code, bits) && (visit(form), true); };
    return std::apply([&](auto... form) { return (tryForm(form) || ...); }, CellForms{});
}
inline bool isCellForm(int code, int bits)
{
    return BitForm::holds(code, bits) || visitCellForm(code, bits, [](auto) {});
}

/// Cells of one bit. Cell i is bit `Columns() % 8` of byte i / 8, the same bit for all cells of a
/// grid, so that eight consecutive cells share a value. Files hold grids that were made for this
/// reader.
class BitCells {
public:
    explicit BitCells(const MRasterBand &band)
        : mBytes(band.cells<quint8>()), mBit(band.Columns() % 8)
    {
    }
    quint8 operator[](int index) const
    {
        return static_cast<quint8>((mBytes[index >> 3] >> mBit) & 1);
    }

private:
    const quint8 *mBytes;
    const int mBit;
};
template <class Cells> using ValueOf = std::decay_t<decltype(std::declval<const Cells &>()[0])>;

/// Calls `visit` with the cells of a grid that has them in memory, as the type that follows from
/// type code and depth. @return false when there is no such form.
template <class Visit> bool visitCells(const MRasterBand &band, Visit visit)
{
    if (BitForm::holds(band.Type(), band.BitDepth())) {
        visit(BitCells(band));
        return true;
    }
    return visitCellForm(band.Type(), band.BitDepth(),
                         [&](auto form) { visit(band.cells<CellOf<decltype(form)>>()); });
}

/// Calls `visit` with the cells as the first of `Types` whose width is the depth; the type code is
/// not looked at. @return false when no type has this width.
template <class... Types, class Visit> bool visitWidth(const MRasterBand &band, Visit visit)
{
    const auto tryWidth = [&](auto cell) {
        using T = decltype(cell);
        return band.BitDepth() == static_cast<int>(8 * sizeof(T)) && (visit(band.cells<T>()), true);
    };
    return (tryWidth(Types{}) || ...);
}
template <class Visit> bool visitSignedWidth(const MRasterBand &band, Visit visit)
{
    return visitWidth<qint8, qint16, qint32, qint64>(band, visit);
}
template <class Visit> bool visitUnsignedWidth(const MRasterBand &band, Visit visit)
{
    return visitWidth<quint8, quint16, quint32, quint64>(band, visit);
}
template <class Visit> bool visitDecimalWidth(const MRasterBand &band, Visit visit)
{
    return visitWidth<half, float, double>(band, visit);
}

/// Tests cells of one form against a missing flag. Cells of one bit are never missing.
template <class Cells> class CellTest {
    using T = ValueOf<Cells>;

public:
    explicit CellTest(const MissingFlag &flag)
        : mIsSet(!std::is_same_v<Cells, BitCells> && flag.type != MissingFlag::None)
    {
        if (mIsSet)
            mValue = flag.field<T>();
    }
    /// False when no cell can be missing; loops then run without the test.
    bool isSet() const { return mIsSet; }
    /// Whether the value is the flag's. Only if isSet().
    bool equals(T value) const
    {
        if constexpr (std::is_same_v<T, half>)
            return value.bits == mValue.bits;
        else
            return value == mValue;
    }
    bool isMissing(T value) const { return mIsSet && equals(value); }
    /// The value of missing cells. Only if isSet().
    T value() const { return mValue; }

private:
    const bool mIsSet;
    T mValue{};
};

/// Calls `visit(index)` for each missing cell of the first `count`, in ascending order.
template <class Cells, class Visit>
void visitMissing(const Cells &cells, int count, const CellTest<Cells> &test, Visit visit)
{
    for (int i = 0; test.isSet() && i < count; ++i) {
        if (test.equals(cells[i]))
            visit(i);
    }
}
/// The same for a grid that has its cells in memory. @return false when there is no such form.
template <class Visit>
bool visitMissingCells(const MRasterBand &band, const MissingFlag &flag, Visit visit)
{
    return visitCells(band, [&](const auto &cells) {
        visitMissing(cells, band.CellCount(), CellTest<std::decay_t<decltype(cells)>>(flag), visit);
    });
}

template <class T> double cellToDouble(T value)
{
    if constexpr (std::is_same_v<T, half>)
        return static_cast<double>(static_cast<float>(value));
    else
        return static_cast<double>(value);
}

template <class T> MDatum cellToDatum(T value)
{
    if constexpr (std::is_floating_point_v<T> || std::is_same_v<T, half>)
        return MDatum(cellToDouble(value));
    else if constexpr (std::is_signed_v<T>)
        return MDatum(static_cast<qint64>(value));
    else
        return MDatum(static_cast<quint64>(value));
}

} // namespace datainterface
