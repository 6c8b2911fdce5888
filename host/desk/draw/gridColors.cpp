// SPDX-License-Identifier: MIT
#include "desk/draw/gridColors.h"
#include <algorithm>
#include <cmath>
#include "desk/draw/colorTable.h"

namespace meridor {
namespace {

constexpr QRgb kOpaque = 0xff000000U;

} // namespace

GridColors GridColors::ofClasses(const QVector<double> &breaks, const QVector<QRgb> &colors,
                                 QRgb outside)
{
    GridColors result;
    result.mOutside = result.mBelow = result.mAbove = outside | kOpaque;
    result.mTable.fill(result.mOutside);
    if (colors.isEmpty() || breaks.size() != colors.size() + 1)
        return result;
    result.mBreaks = breaks;
    result.mColors = colors;
    for (QRgb &color : result.mColors)
        color |= kOpaque;
    result.mLow = breaks.first();
    const double range = breaks.last() - breaks.first();
    result.mPerUnit = range > 0.0 ? kEntries / range : 0.0;
    if (!std::isfinite(result.mPerUnit)) // the table is all in one class or is not used
        result.mPerUnit = 0.0;
    result.mTable.fill(kDivided);
    if (!(result.mPerUnit > 0.0))
        return result;
    // The limits that are calculated for an entry are rounded; a margin keeps entries near a break
    // from a wrong colour.
    for (int i = 0; i < kEntries; ++i) {
        const double from = result.mLow + (i - 0.01) / result.mPerUnit;
        const double to = result.mLow + (i + 1.01) / result.mPerUnit;
        const auto above = std::lower_bound(breaks.begin(), breaks.end(), from);
        const auto next = std::lower_bound(breaks.begin(), breaks.end(), to);
        if (above == next && above != breaks.begin() && above != breaks.end())
            result.mTable[static_cast<unsigned>(i)] =
                result.mColors[static_cast<int>(above - breaks.begin()) - 1];
    }
    return result;
}

GridColors GridColors::ofRange(double low, double high, const QVector<QRgb> &colors, QRgb outside)
{
    GridColors result;
    result.mOutside = outside | kOpaque;
    result.mTable.fill(result.mOutside);
    if (colors.isEmpty())
        return result;
    result.mBelow = colors.first() | kOpaque;
    result.mAbove = colors.last() | kOpaque;
    result.mLow = low;
    const double perUnit = kEntries / (high - low);
    result.mPerUnit = std::isfinite(perUnit) && perUnit > 0.0 ? perUnit : 0.0;
    const int steps = colors.size() - 1;
    for (int i = 0; i < kEntries; ++i) {
        const double at = (i + 0.5) / kEntries * steps;
        const int step = std::min(static_cast<int>(at), std::max(0, steps - 1));
        result.mTable[static_cast<unsigned>(i)] =
            kOpaque | mixed(colors[step], colors[std::min(step + 1, steps)], at - step);
    }
    return result;
}

GridColors GridColors::ofMap(const QVector<unsigned int> &colors, QRgb outside)
{
    GridColors result;
    result.mOutside = result.mBelow = result.mAbove = outside | kOpaque;
    result.mTable.fill(result.mOutside);
    result.mPerUnit = 1.0;
    for (int i = 0; i < std::min(colors.size(), kEntries); ++i)
        result.mTable[static_cast<unsigned>(i)] = colors[i] | kOpaque;
    return result;
}

QRgb GridColors::beyond(double value) const
{
    if (!mBreaks.isEmpty())
        return searched(value);
    return value < mLow ? mBelow : value >= mLow ? mAbove : mOutside;
}

QRgb GridColors::searched(double value) const
{
    if (mBreaks.isEmpty() || !(value >= mBreaks.first() && value <= mBreaks.last()))
        return mOutside;
    const auto upper = std::lower_bound(mBreaks.begin() + 1, mBreaks.end(), value);
    return mColors[static_cast<int>(upper - mBreaks.begin()) - 1];
}

} // namespace meridor
