// SPDX-License-Identifier: MIT
/// Colours of the values of a grid.
#pragma once
#include <QRgb>
#include <QVector>
#include <array>

namespace meridor {

/// A table of 1,024 entries over the range of the values. An entry that lies in one class holds its
/// colour; in one that a class limit divides, the class is searched, so that classes are exact.
class GridColors {
public:
    /// Class i has the values above breaks[i] up to and including breaks[i + 1], class 0 also those
    /// equal to breaks[0]. Values of no class take the colour `outside`, as do missing ones.
    /// @param breaks  ascending, one more than `colors`.
    static GridColors ofClasses(const QVector<double> &breaks, const QVector<QRgb> &colors,
                                QRgb outside);
    /// A continuous scale: the first colour at `low`, the last at `high`, the others at equal steps
    /// between. Values beyond take the colour of the nearer end.
    static GridColors ofRange(double low, double high, const QVector<QRgb> &colors, QRgb outside);
    /// The colour of value i is colors[i], alpha, red, green, blue from the most significant byte
    /// down, as in MRasterBand::GetColorMap; alpha is not used.
    static GridColors ofMap(const QVector<unsigned int> &colors, QRgb outside);

    QRgb of(double value) const
    {
        const double at = (value - mLow) * mPerUnit;
        if (!(at >= 0.0 && at < kEntries)) // NaN, too
            return beyond(value);
        const QRgb color = mTable[static_cast<unsigned>(static_cast<int>(at))];
        return color != kDivided ? color : searched(value);
    }

private:
    static constexpr int kEntries = 1024;
    static constexpr QRgb kDivided = 0; // no opaque colour

    QRgb beyond(double value) const;
    QRgb searched(double value) const;

    double mLow = 0.0;
    double mPerUnit = 0.0; // entries for a unit
    QRgb mOutside = 0xffffffffU;
    QRgb mBelow = 0xffffffffU;
    QRgb mAbove = 0xffffffffU;
    QVector<double> mBreaks;
    QVector<QRgb> mColors;
    std::array<QRgb, kEntries> mTable{};
};

} // namespace meridor
