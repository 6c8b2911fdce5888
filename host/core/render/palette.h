// SPDX-License-Identifier: MIT
/// Colours of classes: ramps from light to dark that stay in order in grey print, and sets of
/// colours for names.
#pragma once
#include <QColor>
#include <QStringList>
#include <QVector>
#include "core/export.h"

namespace meridor {

MERIDOR_EXPORT QStringList paletteNames();
/// `count` colours from light to dark, evenly spaced to the eye. An unknown name is the first
/// palette.
MERIDOR_EXPORT QVector<QColor> sequentialColors(const QString &palette, int count);
/// Colours for up to twelve unordered classes; further ones repeat.
MERIDOR_EXPORT QVector<QColor> categoricalColors(int count);

} // namespace meridor
