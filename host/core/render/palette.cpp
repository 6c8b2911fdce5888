// SPDX-License-Identifier: MIT
// Ramps are defined by a few anchor colours and interpolated in OKLab (B. Ottosson 2020, "A
// perceptual color space for image processing"), in which equal distances are perceived as equal.
#include "core/render/palette.h"
#include <QMap>
#include <array>
#include <cmath>

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

using Anchors = std::array<const char *, 4>;

const QVector<QPair<QString, Anchors>> &palettes()
{
    static const QVector<QPair<QString, Anchors>> list{
        {QStringLiteral("lagoon"), {"#ebf2c4", "#9ed3b4", "#2f8fa8", "#173a6b"}},
        {QStringLiteral("ember"), {"#fbedc8", "#f5b971", "#d3572f", "#6e1423"}},
        {QStringLiteral("heather"), {"#efe6ee", "#cdb6d6", "#9166a8", "#431a60"}},
        {QStringLiteral("slate"), {"#e9edef", "#b8c4cc", "#6d8291", "#22303c"}}};
    return list;
}

} // namespace

QStringList paletteNames()
{
    QStringList names;
    for (const auto &palette : palettes())
        names.append(palette.first);
    return names;
}

QVector<QColor> sequentialColors(const QString &palette, int count)
{
    Anchors anchors = palettes().first().second;
    for (const auto &entry : palettes())
        if (entry.first == palette)
            anchors = entry.second;
    QVector<QColor> colors;
    for (int i = 0; i < count; ++i) {
        const double position = count == 1 ? 1.5 : 3.0 * i / (count - 1);
        const auto low = static_cast<size_t>(qMin(2, static_cast<int>(position)));
        const double share = position - static_cast<double>(low);
        const Lab a = toLab(QColor(QLatin1String(anchors[low])));
        const Lab b = toLab(QColor(QLatin1String(anchors[low + 1])));
        colors.append(toColor(
            {a.l + (b.l - a.l) * share, a.a + (b.a - a.a) * share, a.b + (b.b - a.b) * share}));
    }
    return colors;
}

QVector<QColor> categoricalColors(int count)
{
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
