// SPDX-License-Identifier: MIT
/// Colours of classes: ramps from light to dark that stay in order in grey print, and sets of
/// colours for names.
#pragma once
#include <QColor>
#include <QStringList>
#include <QVector>

namespace meridor {

QStringList paletteNames();
/// `count` colours from light to dark, evenly spaced to the eye. An unknown name is the first
/// palette.
QVector<QColor> sequentialColors(const QString &palette, int count);
/// Colours for up to twelve unordered classes; further ones repeat.
QVector<QColor> categoricalColors(int count);

} // namespace meridor
