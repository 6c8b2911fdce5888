// SPDX-License-Identifier: MIT
#include "desk/draw/colorTable.h"
#include <algorithm>
#include <cstring>

namespace meridor {
namespace {

constexpr double kFaded = 0.75; // of the way to the ground

QRgb withAlpha(QRgb color, ColorTable::Alpha alpha)
{
    return (color & 0x00ffffffU) | (static_cast<unsigned>(alpha) << 24);
}

/// The colours of all classes in one state. Entry 0 is for objects without a class.
std::vector<QRgb> colorsOfState(const ColorRule &rule, bool hasClasses, bool selected, bool faded)
{
    std::vector<QRgb> colors;
    const auto add = [&](QRgb color, bool isMissing) {
        if (selected && !rule.fadeOthers)
            color = rule.selected;
        else if (faded)
            color = mixed(color, rule.ground, kFaded);
        const bool plain = !isMissing || (selected && !rule.fadeOthers);
        colors.push_back(withAlpha(color, plain ? ColorTable::Plain : ColorTable::Hatched));
    };
    add(hasClasses ? rule.missing : rule.plain, hasClasses);
    for (const QRgb color : rule.classes)
        add(color, false);
    return colors;
}

} // namespace

QRgb mixed(QRgb from, QRgb to, double share)
{
    const auto channel = [share](int a, int b) {
        return static_cast<int>(a + (b - a) * share + 0.5);
    };
    return qRgb(channel(qRed(from), qRed(to)), channel(qGreen(from), qGreen(to)),
                channel(qBlue(from), qBlue(to)));
}

void ColorTable::build(int count, const ColorRule &rule, const int *classes,
                       const unsigned char *shown, const unsigned char *selected)
{
    const auto objects = static_cast<std::size_t>(std::max(0, count));
    const bool isAnySelected =
        selected
        && std::any_of(selected, selected + objects, [](unsigned char flag) { return flag != 0; });
    // One row of colours for each state: neither, selected.
    const auto classCount = static_cast<unsigned>(rule.classes.size());
    std::vector<QRgb> colors =
        colorsOfState(rule, classes, false, rule.fadeOthers && isAnySelected);
    const std::vector<QRgb> ofSelected = colorsOfState(rule, classes, true, false);
    const std::size_t rowSize = colors.size();
    colors.insert(colors.end(), ofSelected.begin(), ofSelected.end());

    const QRgb none = rule.fillGround ? withAlpha(rule.ground, Ground) : Transparent;
    mColors.resize(objects + 1);
    mColors[0] = none;
    QRgb *out = mColors.data() + 1;
    for (std::size_t i = 0; i < objects; ++i) {
        const auto number = classes ? static_cast<unsigned>(classes[i]) : classCount;
        const std::size_t column =
            number < classCount ? number + 1 : 0; // -1 becomes a large number
        out[i] = colors[(isAnySelected && selected[i] ? rowSize : 0) + column];
    }
    if (shown) {
        for (std::size_t i = 0; i < objects; ++i)
            out[i] = shown[i] ? out[i] : none;
    }
    QRgb common = 0xffffffffU;
    QRgb least = none;
    for (std::size_t i = 0; i < objects; ++i) {
        common &= out[i];
        least = std::min(least, out[i]);
    }
    mShowsAll = isObject(common);
    mIsPlain = alphaOf(common & none) >= Ground;
    mIsOpaque = alphaOf(least) != Transparent;
}

} // namespace meridor
