# SPDX-License-Identifier: MIT
"""What Python adds: a slice read by Dataset.values against the C++ call, and the import of the package
against NumPy alone.

usage: PYTHONPATH=build/bench/python /usr/bin/python3 bench/python/run.py build/bench/bench/plainSlices
"""

import statistics
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


def ratio_of_slices(program, path, calls):
    """The median over interleaved rounds of Python's time a call to that of C++."""
    ratios, times = [], []
    for _ in range(ROUNDS):
        plain, sum_plain = map(float, subprocess.run(
            [program, str(path), "value", str(calls)], check=True, capture_output=True,
            text=True).stdout.split())
        with di.open(path) as project:
            dataset = project["points"]["value"]
            for step in range(TIMES):
                dataset.values(step)
            total = sum(dataset.values(step)[-1] for step in range(TIMES))
            begun = time.perf_counter()
            for call in range(calls):
                total += dataset.values(call % TIMES)[-1]
            taken = (time.perf_counter() - begun) * 1e9 / calls
        if abs(total - sum_plain) > 1e-6 * abs(total) + 1e-6 and calls % TIMES == 0:
            sys.exit("both must read the same values")
        ratios.append(taken / plain)
        times.append((taken, plain))
    return statistics.median(ratios), times


def ratio_of_import():
    def seconds(code):
        begun = time.perf_counter()
        subprocess.run([sys.executable, "-c", code], check=True)
        return time.perf_counter() - begun

    pairs = [(seconds("import datainterface"), seconds("import numpy")) for _ in range(ROUNDS)]
    return statistics.median(whole for whole, _ in pairs), statistics.median(
        whole / part for whole, part in pairs)


def main():
    program = sys.argv[1]
    with tempfile.TemporaryDirectory() as folder:
        for objects, calls in ((48, 20000), (3000, 20000), (30000, 4000), (300000, 400)):
            path = Path(folder) / f"slices_{objects}.vorn"
            project_of(path, objects)
            ratio, times = ratio_of_slices(program, path, calls)
            print(f"a slice of {objects} values: {ratio:.2f} times the C++ call "
                  f"({statistics.median(t for t, _ in times) / 1e3:.2f} and "
                  f"{statistics.median(p for _, p in times) / 1e3:.2f} microseconds)")
    seconds, ratio = ratio_of_import()
    print(f"import: {seconds:.3f} s, {ratio:.2f} times that of NumPy")


main()
