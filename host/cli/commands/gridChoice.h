// SPDX-License-Identifier: MIT
/// The options that choose the geography of predictions: an existing one or a new grid.
#pragma once
#include "cli/commands/command.h"
#include "cli/console.h"

namespace meridor {

struct GridChoice {
    QString to;   ///< an existing geography
    QString name; ///< a new grid
    double cell = 0;
    QVector<double> bounds; ///< left, bottom, right, top; empty: those of the dataset

    /// Adds --to, --grid, --cell and --bounds.
    void declare(const Command &command);
    /// The geography; makes the grid. Raises a Failure unless exactly one is chosen.
    /// @param dataset  whose extent, times and projection a new grid has.
    int find(int dataset) const;
};

/// Of predictions and simulations none of which is among the values.
constexpr const char *kApart = "all places are beyond the values; places and values need the same "
                               "projection";

/// Notes that distances are in degrees, if they are.
void noteDegrees(int geography, const Console &console);

} // namespace meridor
