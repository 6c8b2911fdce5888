#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Moran's I of 81 times by 99,999 permutations with one worker and with two, in turns, and what a task sends.

usage: cluster.py PROJECT [TURNS], with the build tree's python/ in PYTHONPATH. PROJECT is the demo's: geography
states, dataset income, weight set queen.
"""
import pickle
import sys
import time

from distributed import Client, LocalCluster

import datainterface as di


def seconds(workers, path):
    with LocalCluster(n_workers=workers, threads_per_worker=1, processes=True, dashboard_address=None) as cluster:
        with Client(cluster) as client, di.open(path) as project:
            income = project["states"]["income"]
            di.dask.moran(income, "queen", permutations=99, seed=1, client=client)  # opens the project
            begun = time.perf_counter()
            frame = di.dask.moran(income, "queen", permutations=99999, seed=1, client=client)
            return time.perf_counter() - begun, frame


def main():
    path, turns = sys.argv[1], int(sys.argv[2]) if len(sys.argv) > 2 else 3
    best = {}
    frames = []
    for _ in range(turns):
        for workers in (1, 2):
            taken, frame = seconds(workers, path)
            best[workers] = min(taken, best.get(workers, taken))
            frames.append(frame)
    assert all(frame.equals(frames[0]) for frame in frames), "the results depend on the workers"
    with di.open(path) as project:
        income = project["states"]["income"]
        file = di.dask._file_of(income, None)
        task = (file, "states", "income", 0, "queen", "1929-01-01", di.dask.BLOCK, 1, "keep", False)
    calls = 81 * len(di.dask._blocks(99999))
    print(f"two workers: {best[1] / best[2]:.2f} times as fast as one ({best[1]:.1f} s, {best[2]:.1f} s), "
          f"{calls} calls of {len(pickle.dumps((di.dask._moran_block, task)))} bytes, "
          f"{1e3 * best[1] / calls:.1f} ms each")


if __name__ == "__main__":
    main()
