#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""How smoothly a report's slider moves: frames of 3,000 objects and 80 times beside those of an empty page.

usage: reportFrames.py PROGRAM
"""
import json
import math
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "tests" / "report"))
from browser import opened  # noqa: E402

COLUMNS, ROWS, TIMES = 60, 50, 80
# Times between frames while the slider goes through all its positions, or while nothing happens.
FRAMES = """
const done = arguments[0];
const range = document.querySelector('input[type=range]');
const gaps = [];
let last = performance.now(), position = 0;
requestAnimationFrame(function frame(now) {
    gaps.push(now - last);
    last = now;
    if (range) {
        range.value = position % (Number(range.max) + 1);
        range.dispatchEvent(new Event('input', {bubbles: true}));
    }
    if (++position < 160) requestAnimationFrame(frame);
    else done(gaps.slice(5));
});"""


def bent(x, y):
    """A vertex of the mesh, moved a little, the same for all faces around it."""
    return [round(x + 0.04 * math.sin(12.9 * x + 78.2 * y), 4), round(y + 0.04 * math.sin(39.3 * x + 11.1 * y), 4)]


def face(column, row, steps=6):
    corners = [(0, 0, 1, 0), (1, 0, 0, 1), (1, 1, -1, 0), (0, 1, 0, -1)]
    ring = [bent(column + x + dx * i / steps, row + y + dy * i / steps) for x, y, dx, dy in corners for i in range(steps)]
    return ring + ring[:1]


def project(program, folder):
    features = []
    for number in range(COLUMNS * ROWS):
        column, row = number % COLUMNS, number // COLUMNS
        properties = {"k": f"o{number}", **{f"v{1900 + t}": round(math.sin(column / 9 + t / 7) * math.cos(row / 8) * 50 + t, 2)
                                            for t in range(TIMES)}}
        features.append({"type": "Feature", "properties": properties,
                         "geometry": {"type": "Polygon", "coordinates": [face(column, row)]}})
    map_file = os.path.join(folder, "mesh.geojson")
    pathlib.Path(map_file).write_text(json.dumps({"type": "FeatureCollection", "features": features}), encoding="utf-8")
    vorn, page = os.path.join(folder, "mesh.vorn"), os.path.join(folder, "mesh.html")
    for words in (["import", map_file, vorn, "--key", "k", "--series", f"v=v1900..v{1899 + TIMES}"],
                  ["weights", "create", vorn, "queen"], ["report", vorn, page, "--permutations", "99"]):
        subprocess.run([program, "--quiet", "--scratch", folder, *words], check=True)
    return page


def gaps_of(page):
    return page.driver.execute_async_script(FRAMES)


with tempfile.TemporaryDirectory() as work:
    report = project(sys.argv[1], work)
    empty = os.path.join(work, "empty.html")
    pathlib.Path(empty).write_text("<!DOCTYPE html><title>empty</title>", encoding="utf-8")
    print(f"{os.path.getsize(report) / 1e6:.1f} MB, {COLUMNS * ROWS} objects, {TIMES} times")
    with opened(empty) as page:
        still = gaps_of(page)
    with opened(report) as page:
        opening = page.run("const t = performance.getEntriesByType('navigation')[0]; return t.loadEventEnd")
        moving = gaps_of(page)
    for name, gaps in (("empty page", still), ("slider moving", moving)):
        print(f"{name}: median {statistics.median(gaps):.1f} ms, 95 of 100 below {sorted(gaps)[int(0.95 * len(gaps))]:.1f} ms")
    print(f"opened in {opening:.0f} ms; frames, ratio of medians {statistics.median(moving) / statistics.median(still):.2f}")
