// SPDX-License-Identifier: MIT
// Ramps of our own are defined by four anchor colours. Colours are interpolated in OKLab (B.
// Ottosson 2020, "A perceptual color space for image processing"), in which equal distances are
// perceived as equal.
#include "core/render/palette.h"
#include <algorithm>
#include <cmath>
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/namedPalettes.h"

namespace meridor {
namespace {

struct Lab {
    double l, a, b;
};

double linear(double channel)
{
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double gamma(double channel)
{
    const double value = qBound(0.0, channel, 1.0);
    return value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1 / 2.4) - 0.055;
}

Lab toLab(const QColor &color)
{
    const double r = linear(color.redF());
    const double g = linear(color.greenF());
    const double b = linear(color.blueF());
    const double l = std::cbrt(0.4122214708 * r + 0.5363325363 * g + 0.0514459929 * b);
    const double m = std::cbrt(0.2119034982 * r + 0.6806995451 * g + 0.1073969566 * b);
    const double s = std::cbrt(0.0883024619 * r + 0.2817188376 * g + 0.6299787005 * b);
    return {0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
            1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
            0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s};
}

QColor toColor(const Lab &lab)
{
    const double l = std::pow(lab.l + 0.3963377774 * lab.a + 0.2158037573 * lab.b, 3);
    const double m = std::pow(lab.l - 0.1055613458 * lab.a - 0.0638541728 * lab.b, 3);
    const double s = std::pow(lab.l - 0.0894841775 * lab.a - 1.2914855480 * lab.b, 3);
    return QColor::fromRgbF(gamma(4.0767416621 * l - 3.3077115913 * m + 0.2309699292 * s),
                            gamma(-1.2684380046 * l + 2.6097574011 * m - 0.3413193965 * s),
                            gamma(-0.0041960863 * l - 0.7034186147 * m + 1.7076147010 * s));
}

using Colors = QVector<QColor>;

/// `count` colours at equal distances along the anchors.
Colors interpolated(const Colors &anchors, int count)
{
    Colors colors;
    const int last = anchors.size() - 1;
    for (int i = 0; i < count; ++i) {
        const double position = count == 1 ? last / 2.0 : double(last) * i / (count - 1);
        const int low = std::min(last - 1, static_cast<int>(position));
        const double share = position - low;
        const Lab a = toLab(anchors[low]);
        const Lab b = toLab(anchors[low + 1]);
        colors.append(toColor(
            {a.l + (b.l - a.l) * share, a.a + (b.a - a.a) * share, a.b + (b.b - a.b) * share}));
    }
    return colors;
}

struct Ramp {
    const char *name;
    const char *anchors; ///< as rrggbb, one after the other
};
constexpr Ramp kRamps[] = {{"lagoon", "ebf2c49ed3b42f8fa8173a6b"},
                           {"ember", "fbedc8f5b971d3572f6e1423"},
                           {"heather", "efe6eecdb6d69166a8431a60"},
                           {"slate", "e9edefb8c4cc6d829122303c"}};

Colors unpacked(const char *packed, int first, int count)
{
    const QString text = QLatin1String(packed);
    Colors colors;
    for (int i = first; i < first + count; ++i)
        colors.append(QColor(QLatin1Char('#') + text.mid(6 * i, 6)));
    return colors;
}

bool isCalled(const char *name, const QString &text)
{
    return text.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
}

const NamedPalette *findNamed(const QString &name)
{
    for (const NamedPalette &palette : namedPalettes())
        if (isCalled(palette.name, name))
            return &palette;
    return nullptr;
}

Colors colorsOf(const NamedPalette &palette, int count)
{
    if (palette.kind == PaletteKind::Ramp)
        return interpolated(unpacked(palette.colors, 0, palette.most), count);
    // The set of n colours follows those of 3 to n - 1 colours.
    const int chosen = qBound(3, count, palette.most);
    const Colors set = unpacked(palette.colors, (chosen * (chosen - 1) - 6) / 2, chosen);
    if (count == 2)
        return {set.first(), set.last()};
    return count == chosen ? set : interpolated(set, count);
}

} // namespace

QStringList paletteNames()
{
    QStringList names;
    for (const Ramp &ramp : kRamps)
        names.append(QLatin1String(ramp.name));
    for (const NamedPalette &palette : namedPalettes())
        if (palette.kind != PaletteKind::Qualitative)
            names.append(QLatin1String(palette.name));
    return names;
}

QStringList unorderedPaletteNames()
{
    QStringList names;
    for (const NamedPalette &palette : namedPalettes())
        if (palette.kind == PaletteKind::Qualitative)
            names.append(QLatin1String(palette.name));
    return names;
}

void requirePalette(const QString &name)
{
    const QStringList names = paletteNames() + unorderedPaletteNames();
    if (!names.contains(name, Qt::CaseInsensitive))
        failUsage(QStringLiteral("no palette %1; there are: %2").arg(name, someOf(names, 99)));
}

QVector<QColor> sequentialColors(const QString &palette, int count)
{
    if (count < 1)
        return {};
    const NamedPalette *named = findNamed(palette);
    if (named && named->kind != PaletteKind::Qualitative)
        return colorsOf(*named, count);
    const char *anchors = kRamps[0].anchors;
    for (const Ramp &ramp : kRamps)
        if (isCalled(ramp.name, palette))
            anchors = ramp.anchors;
    return interpolated(unpacked(anchors, 0, 4), count);
}

int categoricalColorCount(const QString &palette)
{
    const NamedPalette *named = findNamed(palette);
    return named && named->kind == PaletteKind::Qualitative ? named->most : 12;
}

QVector<QColor> categoricalColors(int count, const QString &palette)
{
    const NamedPalette *named = findNamed(palette);
    if (named && named->kind == PaletteKind::Qualitative) {
        const Colors set = unpacked(named->colors, 0, named->most);
        Colors repeated;
        for (int i = 0; i < count; ++i)
            repeated.append(set[i % set.size()]);
        return repeated;
    }
    if (!palette.isEmpty() && paletteNames().contains(palette, Qt::CaseInsensitive))
        return sequentialColors(palette, count);
    constexpr double kPi = 3.14159265358979323846;
    QVector<QColor> colors;
    for (int i = 0; i < count; ++i) {
        // Twelve hues in two lightnesses; consecutive colours have distant hues.
        const double angle = 2 * kPi * (i * 5 % 12) / 12 + 0.6;
        const double lightness = i % 2 == 0 ? 0.74 : 0.60;
        colors.append(toColor({lightness, 0.105 * std::cos(angle), 0.105 * std::sin(angle)}));
    }
    return colors;
}

} // namespace meridor
