# SPDX-License-Identifier: MIT
"""What Python adds: a slice read by Dataset.values against the C++ call, and the import of the package
against that of NumPy. Both run in turns; the best round of each counts.

usage: PYTHONPATH=build/bench/python /usr/bin/python3 bench/python/run.py build/bench/bench/plainSlices
"""

import subprocess
import sys
import tempfile
import time
from pathlib import Path

import numpy as np
import pandas as pd

import datainterface as di

TIMES = 20
ROUNDS = 5
REACH = 1.2


def project_of(path, objects):
    """Decimals at points: TIMES slices, packed in a file."""
    table = path.with_suffix(".csv")
    pd.DataFrame({"id": np.arange(objects), "x": np.arange(objects) % 1000,
                  "y": np.arange(objects) // 1000}).to_csv(table, index=False)
    random = np.random.default_rng(1)
    with di.new() as project:
        points = project.import_map(table, name="points", key="id", x="x", y="y")
        dataset = points.new_dataset("value")
        for step in range(TIMES):
            dataset.add(pd.Series(random.normal(size=objects), index=points.object_keys), at=step)
        project.save(path)


def seconds_of_slices(program, path, calls):
    """The best of interleaved rounds of a call in Python and in C++, in seconds."""
    best = [float("inf"), float("inf")]
    for _ in range(ROUNDS):
        plain, plain_sum = map(float, subprocess.run(
            [program, str(path), "value", str(calls)], check=True, capture_output=True,
            text=True).stdout.split())
        with di.open(path) as project:
            dataset = project["points"]["value"]
            total = sum(dataset.values(step)[-1] for step in range(TIMES))  # unpacks all
            begun = time.perf_counter()
            for call in range(calls):
                total += dataset.values(call % TIMES)[-1]
            taken = (time.perf_counter() - begun) / calls
        if abs(total - plain_sum) > 1e-9 * calls:
            sys.exit("both must read the same values")
        best = [min(best[0], taken), min(best[1], plain * 1e-9)]
    return best


def seconds_of(code):
    begun = time.perf_counter()
    subprocess.run([sys.executable, "-c", code], check=True)
    return time.perf_counter() - begun


def main():
    missed = False
    with tempfile.TemporaryDirectory() as folder:
        for objects, calls in ((48, 20000), (3000, 20000), (30000, 4000), (300000, 400)):
            path = Path(folder) / f"slices_{objects}.vorn"
            project_of(path, objects)
            ours, plain = seconds_of_slices(sys.argv[1], path, calls)
            missed |= ours / plain > REACH
            print(f"a slice of {objects} values: {ours * 1e6:.2f} and {plain * 1e6:.2f} us, ratio "
                  f"{ours / plain:.2f}, reach {REACH}{', missed' if ours / plain > REACH else ''}")
    pairs = [(seconds_of("import datainterface"), seconds_of("import numpy"))
             for _ in range(ROUNDS)]
    ours, numpy = (min(column) for column in zip(*pairs))
    print(f"import: {ours:.3f} and {numpy:.3f} s, ratio {ours / numpy:.2f}")
    sys.exit(missed)


main()
