// SPDX-License-Identifier: MIT
/// The colours of palettes that are known by name in cartography.
#pragma once
#include <vector>

namespace meridor {

enum class PaletteKind { Sequential, Diverging, Qualitative, Ramp };

struct NamedPalette {
    const char *name;
    PaletteKind kind;
    int most; ///< the largest number of colours
    /// Colours as rrggbb: for sequential and diverging palettes sets of 3, 4 and so on up to `most`
    /// colours, one after the other; else one set of `most` colours.
    const char *colors;
};

const std::vector<NamedPalette> &namedPalettes();

} // namespace meridor
