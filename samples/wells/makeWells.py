#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Makes the sample: a field of groundwater levels that is known everywhere, and wells that measure it.

The field is a Gaussian random function over 60 by 40 cells of 50 m: a regional slope and a sum of
plane waves whose directions and phases are drawn at random and whose wave numbers follow the
spectrum of an exponential covariance. Wells are cells of the field, denser in the west.

usage: makeWells.py [DIRECTORY]
"""
import csv
import math
import random
import sys
from pathlib import Path

COLUMNS, ROWS, CELL = 60, 40, 50.0
RANGE, DEVIATION, WAVES = 900.0, 2.0, 400
WELLS, SEED = 120, 20


def field(seed):
    """Level in metres by (row, column), row 0 in the north."""
    draw = random.Random(seed)
    waves = []
    for _ in range(WAVES):
        # The spectral density of exp(-3 h / RANGE) in the plane has this radial distribution.
        share = draw.random()
        number = 3 / RANGE * math.sqrt(1 / (1 - share) ** 2 - 1)
        angle = draw.uniform(0, 2 * math.pi)
        waves.append((number * math.cos(angle), number * math.sin(angle),
                      draw.uniform(0, 2 * math.pi)))
    scale = DEVIATION * math.sqrt(2 / WAVES)
    levels = {}
    for row in range(ROWS):
        for column in range(COLUMNS):
            x, y = (column + 0.5) * CELL, (ROWS - row - 0.5) * CELL
            wave = scale * sum(math.cos(a * x + b * y + phase) for a, b, phase in waves)
            levels[row, column] = 40 - 0.001 * x + wave
    return levels


def wells(levels, seed):
    """Rows of the table: name, x, y, level."""
    draw = random.Random(seed)
    chosen = set()
    while len(chosen) < WELLS:
        column = int(COLUMNS * draw.random() ** 1.5)
        chosen.add((draw.randrange(ROWS), column))
    for number, (row, column) in enumerate(sorted(chosen), 1):
        yield [f"W{number:03d}", (column + 0.5) * CELL, (ROWS - row - 0.5) * CELL,
               f"{levels[row, column]:.2f}"]


def main():
    directory = Path(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).parent)
    levels = field(SEED)
    with open(directory / "wells.csv", "w", newline="", encoding="utf-8") as file:
        table = csv.writer(file, lineterminator="\n")
        table.writerow(["well", "x", "y", "level"])
        table.writerows(wells(levels, SEED))
    with open(directory / "truth.asc", "w", encoding="utf-8") as file:
        file.write(f"ncols {COLUMNS}\nnrows {ROWS}\nxllcorner 0\nyllcorner 0\ncellsize {CELL:g}\n")
        for row in range(ROWS):
            file.write(" ".join(f"{levels[row, column]:.2f}" for column in range(COLUMNS)) + "\n")


if __name__ == "__main__":
    main()
