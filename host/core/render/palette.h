// SPDX-License-Identifier: MIT
/// Colours of classes: ramps from light to dark, whose order remains visible in greyscale, diverging
/// palettes, and colours for unordered classes.
#pragma once
#include <QColor>
#include <QStringList>
#include <QVector>
#include "core/export.h"

namespace meridor {

/// The palettes of ordered classes and of unordered ones.
MERIDOR_EXPORT QStringList paletteNames();
MERIDOR_EXPORT QStringList unorderedPaletteNames();
/// Raises a Failure of kind Misused that lists the palettes unless there is one of this name, in
/// letters of either case.
MERIDOR_EXPORT void requirePalette(const QString &name);

/// `count` colours for ordered classes. ColorBrewer's palettes have colours of their own for each
/// number of classes up to 9 or 11; other numbers and palettes are interpolated in perceptually
/// equal steps. An unknown name, and one of an unordered palette, mean the first palette.
MERIDOR_EXPORT QVector<QColor> sequentialColors(const QString &palette, int count);
/// Colours of unordered classes. A palette of ordered classes is used in its order; an unknown name
/// means colours of our own, which repeat after twelve. Those of palettes repeat after their last.
MERIDOR_EXPORT QVector<QColor> categoricalColors(int count, const QString &palette = QString());
/// The number of different colours of unordered classes.
MERIDOR_EXPORT int categoricalColorCount(const QString &palette);

} // namespace meridor
