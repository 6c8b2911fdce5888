#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""meridor beside GDAL's programs: whole processes, from their start to their end.

usage: run.py MERIDOR PLAIN_ZONAL [--rows PATTERN] [--rounds N] [--keep DIRECTORY]

Makes its inputs (numpy and GDAL's Python module). Ours and the peer run in turns; the best round of each counts. A row
shows the ratios ours / peer of elapsed and of processor time, the largest resident memory of both, and how much ours
read from files. The exit code is 1 if a row misses its reach in elapsed time or in memory.
"""
import argparse
import json
import pathlib
import re
import subprocess
import sys
import tempfile

import numpy
from osgeo import gdal, ogr

gdal.UseExceptions()
ogr.UseExceptions()
SIDE = 10000  # cells of the grid in each direction, of 100 m
BAND = SIDE * SIDE * 4 / 1e6


def make_grid(path, side, bands=1):
    """Terrain with noise: floats with one decimal."""
    random = numpy.random.default_rng(1)
    file = gdal.GetDriverByName("GTiff").Create(
        str(path), side, side, bands, gdal.GDT_Float32, ["COMPRESS=DEFLATE", "INTERLEAVE=BAND", "BIGTIFF=YES"])
    file.SetGeoTransform((0, 100, 0, side * 100, 0, -100))
    x = numpy.arange(side)[None, :] / 300
    for band in range(1, bands + 1):
        for start in range(0, side, 500):
            y = numpy.arange(start, min(start + 500, side))[:, None] / 400
            heights = 800 + 300 * numpy.sin(x + band) * numpy.cos(y) + 50 * numpy.sin(7 * x + 3 * y)
            noise = random.normal(0, 2, (y.size, side))
            file.GetRasterBand(band).WriteArray((heights + noise).round(1).astype("float32"), 0, start)
    file = None


def make_zones(path, count, width, vertices=4):
    """A mesh of polygons, of which each side has a quarter of the vertices."""
    source = ogr.GetDriverByName("GPKG").CreateDataSource(str(path))
    layer = source.CreateLayer("zones", None, ogr.wkbPolygon)
    for field, kind in (("id", ogr.OFTInteger), ("a", ogr.OFTReal), ("b", ogr.OFTReal), ("t", ogr.OFTString)):
        layer.CreateField(ogr.FieldDefn(field, kind))
    across = int(count**0.5)
    side = width / across
    corners = [(0.1, 0), (1, 0.1), (0.9, 1), (0, 0.9)]
    outline = []
    for (x0, y0), (x1, y1) in zip(corners, corners[1:] + corners[:1]):
        parts = vertices // 4
        outline += [(x0 + (x1 - x0) * i / parts, y0 + (y1 - y0) * i / parts) for i in range(parts)]
    outline.append(outline[0])
    layer.StartTransaction()
    for i in range(across * across):
        row, column = divmod(i, across)
        points = ",".join(f"{(column + x) * side:.3f} {(row + y) * side:.3f}" for x, y in outline)
        feature = ogr.Feature(layer.GetLayerDefn())
        feature.SetGeometry(ogr.CreateGeometryFromWkt(f"POLYGON(({points}))"))
        for field, value in (("id", i), ("a", i / 7), ("b", i % 1000), ("t", f"zone {i % 500}")):
            feature[field] = value
        layer.CreateFeature(feature)
    layer.CommitTransaction()


def make_circles(path, count, width, radius):
    """Zones that overlap, of 32 vertices each."""
    random = numpy.random.default_rng(3)
    source = ogr.GetDriverByName("GPKG").CreateDataSource(str(path))
    layer = source.CreateLayer("circles", None, ogr.wkbPolygon)
    layer.CreateField(ogr.FieldDefn("id", ogr.OFTInteger))
    angles = numpy.linspace(0, 2 * numpy.pi, 33)
    layer.StartTransaction()
    for i, (x, y) in enumerate(random.uniform(radius, width - radius, (count, 2))):
        corners = zip(x + radius * numpy.cos(angles), y + radius * numpy.sin(angles))
        points = [f"{a:.3f} {b:.3f}" for a, b in corners]
        points[-1] = points[0]
        feature = ogr.Feature(layer.GetLayerDefn())
        feature.SetGeometry(ogr.CreateGeometryFromWkt(f"POLYGON(({','.join(points)}))"))
        feature["id"] = i
        layer.CreateFeature(feature)
    layer.CommitTransaction()


def make_points(path, count):
    random = numpy.random.default_rng(2)
    x, y, value = random.uniform(0, 1e6, count), random.uniform(0, 1e6, count), random.normal(0, 9, count)
    with open(path, "w", encoding="ascii") as file:
        file.write("id,x,y,value\n")
        for i in range(count):
            file.write(f"{i},{x[i]:.2f},{y[i]:.2f},{value[i]:.4f}\n")


def measured(words):
    """Elapsed and processor seconds, megabytes of memory, megabytes read; the output is thrown away."""
    launcher = pathlib.Path(__file__).with_name("measure.py")
    told = subprocess.run([sys.executable, "-I", "-S", launcher, *words], stdout=subprocess.PIPE, check=False)
    if told.returncode != 0:
        sys.exit(f"{' '.join(str(word) for word in words)}: ended with {told.returncode}")
    return [float(number) for number in told.stdout.split()]


def best(rounds):
    return [min(column) for column in zip(*rounds)]


class Bench:
    def __init__(self, options):
        self.options = options
        self.missed = 0
        self.inputs = set()

    def made(self, name, make):
        """The path of an input, which is made at its first use."""
        path = self.options.keep / name
        if not path.exists():
            make(path)
        return path

    def ours(self, *words):
        return [self.options.meridor, "-q", "--scratch", self.options.keep, *words]

    def project(self, name, *words):
        return self.made(name, lambda path: measured(self.ours("import", *words[:1], path, *words[1:])))

    def row(self, job, ours, peer, ratio, memory, fresh=()):
        words = self.options.rows
        if not re.search(words, job):
            return
        ours, peer = ours(), peer()
        rounds = []
        for _ in range(self.options.rounds):
            turn = []
            for command in (ours, peer):
                for path in fresh:
                    (self.options.keep / path).unlink(missing_ok=True)
                turn.append(measured(command))
            rounds.append(turn)
        a, b = best(turn[0] for turn in rounds), best(turn[1] for turn in rounds)
        is_reached = a[0] <= ratio * b[0] and a[2] <= memory
        self.missed += not is_reached
        print(f"| {job} | {a[0]:.2f} s | {b[0]:.2f} s | {a[0] / b[0]:.2f} | {a[1] / b[1]:.2f} | {ratio:.2g} | {a[2]:.0f} MB | "
              f"{b[2]:.0f} MB | {memory:.0f} MB | {a[3]:.0f} MB |" + ("" if is_reached else " missed"), flush=True)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("meridor")
    parser.add_argument("plain_zonal")
    parser.add_argument("--rows", default="", help="a regular expression of the jobs to run")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--keep", type=pathlib.Path, help="a directory for the inputs, which stay there")
    options = parser.parse_args()
    temporary = tempfile.TemporaryDirectory()
    options.keep = options.keep or pathlib.Path(temporary.name)
    options.keep.mkdir(exist_ok=True)
    bench = Bench(options)

    def grid():
        return bench.made("grid.tif", lambda path: make_grid(path, SIDE))

    def project():
        return bench.project("grid.vorn", grid())

    def zones(name, driver):
        base = bench.made("zones.gpkg", lambda path: make_zones(path, 100000, 200000, 16))
        return base if driver == "GPKG" else bench.made(
            name, lambda path: gdal.VectorTranslate(str(path), str(base), format=driver))

    print("| Job | Ours | Peer's | Ratio | Processor | Reach | Memory | Peer's | Reach | Read |\n|" + "---|" * 10)
    bench.row("info of 10,000 x 10,000 floats", lambda: bench.ours("info", project()), lambda: ["gdalinfo", grid()],
              1.5, 80)
    bench.row("stats of it", lambda: bench.ours("stats", project(), "grid"), lambda: ["gdalinfo", "-stats", grid()],
              1.2, BAND + 100, ["grid.tif.aux.xml"])
    bench.row("one cell", lambda: bench.ours("query", project(), "grid", "--circle", "500050,500050,10"),
              lambda: ["gdallocationinfo", "-geoloc", grid(), "500050", "500050"], 4, BAND + 100)
    bench.row("cells of a circle of 500 m",
              lambda: bench.ours("query", project(), "grid", "--circle", "500050,500050,500"),
              lambda: ["gdallocationinfo", "-geoloc", grid(), "500050", "500050"], 4, BAND + 100)
    bench.row("import of the grid",
              lambda: bench.ours("import", grid(), options.keep / "out.vorn"),
              lambda: ["gdal_translate", "-q", "-co", "COMPRESS=DEFLATE", grid(), options.keep / "out.tif"],
              1.5, BAND + 150, ["out.vorn", "out.tif"])
    for name, driver in (("zones.gpkg", "GPKG"), ("zones.shp", "ESRI Shapefile"), ("zones.geojson", "GeoJSON")):
        bench.row(f"import of 100,000 polygons, {driver}",
                  lambda: bench.ours("import", zones(name, driver), options.keep / "out.vorn"),
                  lambda: ["ogr2ogr", "-f", "GPKG", options.keep / "out.gpkg", zones(name, driver)],
                  1.0, 150, ["out.vorn", "out.gpkg"])
    points = lambda: bench.made("points.csv", lambda path: make_points(path, 1000000))
    bench.row("import of 1,000,000 points, CSV",
              lambda: bench.ours("import", points(), options.keep / "out.vorn", "--x", "x", "--y", "y"),
              lambda: ["ogr2ogr", "-f", "GPKG", "-oo", "X_POSSIBLE_NAMES=x", "-oo", "Y_POSSIBLE_NAMES=y",
                       "-oo", "AUTODETECT_TYPE=YES", options.keep / "out.gpkg", points()],
              0.29, 200, ["out.vorn", "out.gpkg"])

    def bands():
        return bench.made("bands.tif", lambda path: make_grid(path, 3200, 50))

    def one_band():
        return bench.made("band.tif", lambda path: gdal.Translate(str(path), str(bands()), bandList=[25],
                                                                  creationOptions=["COMPRESS=DEFLATE"]))

    def stats_of_one():
        project = bench.project("bands.vorn", bands())
        told = json.loads(subprocess.check_output([options.meridor, "info", project, "--json"]))
        return bench.ours("stats", project, told["geographies"][0]["datasets"][24]["name"])
    bench.row("stats of one of 50 datasets, 2 GB", stats_of_one,
              lambda: ["gdalinfo", "-stats", one_band()], 1.2, 3200 * 3200 * 4 / 1e6 + 100, ["band.tif.aux.xml"])

    def small():
        return bench.made("small.tif", lambda path: make_grid(path, 2000))

    def circles():
        return bench.made("circles.gpkg", lambda path: make_circles(path, 100000, 200000, 2000))

    def zonal(name, polygons):
        def make(path):
            measured(bench.ours("import", small(), path))
            measured(bench.ours("import", polygons, path, "--append"))
        return bench.made(name, make)
    for kind, polygons, ratio in (("1,250 cells", circles, 1 / 3), ("40 cells", lambda: zones("", "GPKG"), 2)):
        bench.row(f"zonal means of 100,000 zones of {kind}, 2,000 x 2,000 cells",
                  lambda: bench.ours("zonal", zonal(f"zonal {kind}.vorn", polygons()), "small",
                                     polygons().stem),
                  lambda: [options.plain_zonal, small(), polygons()], ratio, 300)
    sys.exit(bench.missed > 0)


if __name__ == "__main__":
    main()
