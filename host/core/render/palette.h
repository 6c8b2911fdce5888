// SPDX-License-Identifier: MIT
/// Colours of classes: ramps from light to dark, whose order remains visible in greyscale, and
/// colours for unordered classes.
#pragma once
#include <QColor>
#include <QStringList>
#include <QVector>
#include "core/export.h"

namespace meridor {

MERIDOR_EXPORT QStringList paletteNames();
/// `count` colours from light to dark in perceptually equal steps. An unknown name means the first
/// palette.
MERIDOR_EXPORT QVector<QColor> sequentialColors(const QString &palette, int count);
/// Colours of unordered classes; they repeat after twelve.
MERIDOR_EXPORT QVector<QColor> categoricalColors(int count);

} // namespace meridor
