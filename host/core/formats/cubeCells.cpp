// SPDX-License-Identifier: MIT
#include "core/formats/cubeCells.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include "core/formats/cellText.h"
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

/// The value of floats and doubles that were never written to a NetCDF file.
constexpr double kNeverWritten = 9.9692099683868690e+36;

/// Calls `visit` with a zero of the type of cells; variables have no 16-bit floats.
template <class Visit> void visitCell(DataType type, int bits, Visit visit)
{
    visitCellType(type, bits, [&](auto zero) {
        if constexpr (!std::is_same_v<decltype(zero), half>)
            visit(zero);
    });
}

/// Calls `visit` with zeros of the types of stored cells and of the dataset's. Stored cells are
/// kept as they are, or become decimals.
template <class Visit> void visitCells(const CellRule &rule, Visit visit)
{
    visitCell(rule.rawType, rule.rawBits, [&](auto raw) {
        if (!rule.isScaled)
            visit(raw, raw);
        else if (rule.bits == 32)
            visit(raw, 0.0f);
        else
            visit(raw, 0.0);
    });
}

template <class Raw> Raw fillOf(const CellRule &rule)
{
    Raw fill{};
    if (rule.hasFill)
        std::memcpy(&fill, rule.fill.constData(), sizeof fill);
    return fill;
}

/// The value of missing cells: the file's, unless that is NaN or cells are scaled; then the largest
/// number of the type, or the smallest if the largest is valid.
template <class Raw, class Cell> Cell missingCell(const CellRule &rule)
{
    if constexpr (std::is_same_v<Raw, Cell>) {
        const Raw fill = fillOf<Raw>(rule);
        if (rule.hasFill && !rule.isScaled && fill == fill)
            return fill;
    }
    const bool isLargestValid =
        std::is_integral_v<
            Cell> && rule.most >= static_cast<double>(std::numeric_limits<Cell>::max());
    return isLargestValid ? std::numeric_limits<Cell>::lowest() : std::numeric_limits<Cell>::max();
}

/// Tells whether a stored cell means no data.
template <class Raw> class MissingTest {
public:
    explicit MissingTest(const CellRule &rule)
        : mHasFill(rule.hasFill),
          mHasMore(!rule.alsoEmpty.isEmpty() || std::isfinite(rule.least)
                   || std::isfinite(rule.most)),
          mFill(fillOf<Raw>(rule)),
          mRule(rule)
    {
    }
    bool operator()(Raw cell) const
    {
        return (mHasFill && cell == mFill) || cell != cell
               || (mHasMore && isOutside(static_cast<double>(cell)));
    }

private:
    bool isOutside(double value) const
    {
        return value < mRule.least || value > mRule.most || mRule.alsoEmpty.contains(value);
    }
    bool mHasFill;
    bool mHasMore;
    Raw mFill;
    const CellRule &mRule;
};

/// The limits of valid values, as stored values. Limits that are decimals while cells are stored as
/// integers are those of the scaled values.
void limitRange(const GdalArray &array, CellRule &rule)
{
    const auto limit = [&](const char *name, int index, double &target) {
        const QVector<double> numbers = numberAttribute(array, name);
        const GdalAttribute attribute(GDALMDArrayGetAttribute(array.get(), name));
        if (index >= numbers.size() || !std::isfinite(numbers[index]))
            return;
        const GdalCellType type(GDALAttributeGetDataType(attribute.get()));
        const GDALDataType number = GDALExtendedDataTypeGetNumericDataType(type.get());
        const bool isOfScaled = rule.isScaled && rule.rawType != RasterDecimalType
                                && (number == GDT_Float32 || number == GDT_Float64);
        target = isOfScaled ? (numbers[index] - rule.offset) / rule.scale : numbers[index];
        if (rule.rawType == RasterDecimalType && rule.rawBits == 32)
            target = static_cast<double>(static_cast<float>(target));
    };
    limit("valid_range", 0, rule.least);
    limit("valid_range", 1, rule.most);
    limit("valid_min", 0, rule.least);
    limit("valid_max", 0, rule.most);
    if (rule.least == rule.most) { // a range that was never filled in
        rule.least = -std::numeric_limits<double>::infinity();
        rule.most = -rule.least;
    }
    if (rule.least > rule.most) // by a negative scale
        std::swap(rule.least, rule.most);
    if (rule.rawType != RasterDecimalType) { // limits of scaled values are seldom whole
        rule.least -= 0.5;
        rule.most += 0.5;
    }
}

void takeMissing(const CubeFile &cube, const CubeVariable &variable, CellRule &rule)
{
    const GdalArray &array = variable.array;
    if (const void *fill = GDALMDArrayGetRawNoDataValue(array.get())) {
        rule.fill = QByteArray(static_cast<const char *>(fill), rule.rawBits / 8);
        rule.hasFill = true;
    } else if (cube.isNetCdf && rule.rawType == RasterDecimalType) {
        rule.alsoEmpty.append(kNeverWritten);
    }
    rule.alsoEmpty += numberAttribute(array, "missing_value");
    limitRange(array, rule);
}

/// Whether floats tell all packed values apart.
bool floatsSuffice(const CellRule &rule)
{
    const double largest = std::abs(rule.offset) + 65536 * std::abs(rule.scale);
    return rule.rawType != RasterDecimalType && rule.rawBits <= 16
           && largest * std::pow(2.0, -24) < std::abs(rule.scale) / 4;
}

} // namespace

CellRule cellRule(const CubeFile &cube, const CubeVariable &variable, const CubeOptions &options,
                  const QString &where)
{
    CellRule rule;
    const GdalArray &array = variable.array;
    if (!cellFormOf(numericTypeOf(array), rule.rawType, rule.rawBits))
        fail(where + QStringLiteral(": numbers of two parts have no place in a grid"));
    const QString isUnsigned = textAttribute(array, "_Unsigned").toLower();
    if (rule.rawType == RasterIntegerType && isUnsigned == QLatin1String("true"))
        rule.rawType = RasterUnsignedType;
    int has = 0;
    const double scale = GDALMDArrayGetScale(array.get(), &has);
    rule.scale = has ? scale : 1;
    const double offset = GDALMDArrayGetOffset(array.get(), &has);
    rule.offset = has ? offset : 0;
    rule.isScaled = !options.packed && (rule.scale != 1 || rule.offset != 0);
    if (!(std::isfinite(rule.scale) && std::isfinite(rule.offset)) || rule.scale == 0)
        fail(QStringLiteral("%1: a scale of %2 with the offset %3 leaves no values")
                 .arg(where, exactNumber(rule.scale), exactNumber(rule.offset)));
    rule.type = rule.isScaled ? RasterDecimalType : rule.rawType;
    rule.bits = rule.isScaled ? (floatsSuffice(rule) ? 32 : 64) : rule.rawBits;
    if (options.noData.isEmpty())
        takeMissing(cube, variable, rule);
    visitCells(rule, [&](auto raw, auto cell) {
        if (!options.noData.isEmpty() && options.noData != QLatin1String("none")) {
            rule.hasFill = toCell(options.noData, raw);
            rule.fill = QByteArray(reinterpret_cast<const char *>(&raw), sizeof raw);
            if (!rule.hasFill)
                fail(QStringLiteral("%1: the no-data value %2 fits no cell of %3 bits; another "
                                    "value can be given, or none")
                         .arg(where, options.noData, QString::number(rule.rawBits)),
                     "no-data");
        }
        rule.missing = MissingFlag(missingCell<decltype(raw), decltype(cell)>(rule));
    });
    return rule;
}

qint64 convertCells(const CellRule &rule, const char *raw, const StripForm &strip,
                    const GridForm &grid, char *cells)
{
    qint64 missing = 0;
    visitCells(rule, [&](auto rawZero, auto cellZero) {
        using Raw = decltype(rawZero);
        using Cell = decltype(cellZero);
        const MissingTest<Raw> isMissing(rule);
        const Cell empty = rule.missing.field<Cell>();
        const qint64 gridCells = qint64(grid.rows) * strip.columns;
        const int step = grid.isEastFirst ? -1 : 1;
        for (int time = 0; time < strip.times; ++time) {
            for (int row = 0; row < strip.rows; ++row) {
                const Raw *from = reinterpret_cast<const Raw *>(raw) + time * strip.timeStep
                                  + row * strip.rowStep;
                const int ofFile = grid.firstRow + row;
                const int target = grid.isSouthUp ? grid.rows - 1 - ofFile : ofFile;
                Cell *to = reinterpret_cast<Cell *>(cells) + time * gridCells
                           + qint64(target) * strip.columns
                           + (grid.isEastFirst ? strip.columns - 1 : 0);
                for (int column = 0; column < strip.columns; ++column, to += step) {
                    const Raw value = from[column * strip.columnStep];
                    if (isMissing(value)) {
                        *to = empty;
                        ++missing;
                    } else if constexpr (std::is_same_v<Raw, Cell>) {
                        *to = rule.isScaled ? static_cast<Cell>(
                                  static_cast<double>(value) * rule.scale + rule.offset)
                                            : value;
                    } else {
                        *to = static_cast<Cell>(static_cast<double>(value) * rule.scale
                                                + rule.offset);
                    }
                }
            }
        }
    });
    return missing;
}

} // namespace meridor
