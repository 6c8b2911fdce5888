# SPDX-License-Identifier: MIT
"""Round trips with geopandas and xarray, imports, and queries by place."""

import decimal

import geopandas
import numpy as np
import pandas as pd
import pytest
import shapely.geometry as shapes
import xarray

import datainterface as di
from conftest import SAMPLES, meridor

SQUARE = shapes.Polygon([(0, 0), (4, 0), (4, 4), (0, 4)], [[(1, 1), (3, 1), (3, 3), (1, 3)]])
ISLANDS = shapes.MultiPolygon([shapes.box(10, 0, 11, 1), shapes.box(12, 0, 13, 1)])


def frame_of(**columns):
    return geopandas.GeoDataFrame(columns, crs="EPSG:32617")


def test_a_frame_goes_around(empty, tmp_path):
    frame = frame_of(
        code=["\u6771", "b", "c"], name=["\u0141\u00f3d\u017a", None, "\U0001f5fa"],
        size=[1.5, np.nan, -1e-300], count=pd.array([1, None, -5], dtype="Int64"),
        far=[2**40, 1, 2], flag=[True, False, True], seen=pd.to_datetime(["1999-09-01"] * 3),
        geometry=[SQUARE, ISLANDS, None])
    geography = di.from_geopandas(frame, key="code", name="\u6771\u4eac")
    back = geography.to_geopandas([name for name in geography if name != "code"])
    empty.save(tmp_path / "frame.vorn")
    assert geography.crs and back.crs.equals(frame.crs)
    assert back["key"].tolist() == ["\u6771", "b"]  # the third has no shape and never exists
    assert back.geometry.iloc[0].equals(SQUARE) and back.geometry.iloc[1].equals(ISLANDS)
    assert back["size"].tolist() == pytest.approx([1.5, np.nan], nan_ok=True)
    assert back["count"].isna().tolist() == [False, True] and back["far"].iloc[0] == 2**40
    assert back["name"].iloc[0] == "\u0141\u00f3d\u017a" and back["name"].isna().iloc[1]
    assert [geography[name].kind for name in ("size", "count", "far", "flag", "seen")] == [
        "decimal", "integer", "decimal", "integer", "text"]
    assert geography["seen"].at().tolist()[0] == "1999-09-01"


def test_columns_keep_their_numbers(empty):
    """Objects and categories are the numbers that they hold; what no decimal holds is text."""
    columns = {
        "money": ([decimal.Decimal("1.25"), None], "decimal", [1.25, None]),
        "whole": (pd.Series([7, None], dtype=object), "integer", [7, None]),
        "group": (pd.Categorical([3, 4]), "integer", [3, 4]),
        "mixed": ([1, "x"], "text", ["1", "x"]),
        "lists": ([np.array([1, 2]), None], "text", ["[1 2]", None]),
        "cell": (np.array([2**63 + 5, 1], dtype=np.uint64), "text", [str(2**63 + 5), "1"]),
        "id": ([2**53 + 1, 2**53], "text", [str(2**53 + 1), str(2**53)]),
    }
    frame = frame_of(**{name: held[0] for name, held in columns.items()},
                     geometry=[shapes.Point(0, 0), shapes.Point(1, 1)])
    points = di.from_geopandas(frame, key="id")
    assert points.object_keys.tolist() == columns["id"][2]
    for name, (_, kind, values) in columns.items():
        held = points[name].at()
        assert (name, points[name].kind, [None if gone else value for value, gone in
                                          zip(held, held.isna())]) == (name, kind, values)


@pytest.mark.parametrize("shape", [shapes.Point(3, 4), shapes.LineString([(0, 0), (1, 5)]), SQUARE])
def test_shapes_over_time_go_around(empty, shape):
    moved = [shape, shapes.shape(shape.__geo_interface__)]
    from shapely.affinity import translate

    moved[1] = translate(shape, 100, 0)
    frame = frame_of(id=[7, 7], start=["1850-01-01", "1900-01-01"], geometry=moved,
                     end=["1899-12-31", "2000-12-31"], ruler=["a", "b"])
    geography = di.from_geopandas(frame, key="id", start="start", end="end")
    back = geography.to_geopandas(["ruler"])
    assert back["start"].dt.strftime("%Y-%m-%d").tolist() == frame["start"].tolist()
    assert back["end"].dt.strftime("%Y-%m-%d").tolist() == frame["end"].tolist()
    assert [a.equals(b) for a, b in zip(back.geometry, moved)] == [True, True]
    assert geography.at("1875").keys.tolist() == [7] and len(geography.at("2001")) == 0
    again = di.from_geopandas(back.drop(columns="ruler"), "key", "start", "end", name="again")
    assert again.shape(7, at=1950).equals(moved[1]) and again.shape(7, at=1800) is None


@pytest.mark.parametrize("form, starts, ends", [
    ("number", [-5, 3], [2, 3]),
    ("date", ["1750-01-01", "2300-02-01"], ["1752-12-31", "2300-02-28"]),
    ("date", ["2000-02-29", "2001-01-01"], ["2000-12-31", "2001-01-01"]),
    ("date-time", ["2005-06-08T18:00:00", "2005-06-09T00:00:00"],
     ["2005-06-09T00:00:00", "2005-06-09T00:00:01"]),
    ("time", ["00:00:00", "12:30:15"], ["12:30:15", "23:59:59"])],
    ids=["numbers", "days beyond nanoseconds", "days", "moments", "times of day"])
def test_times_of_every_format_go_around(empty, form, starts, ends):
    frame = frame_of(id=["a", "a"], s=starts, e=ends, geometry=[SQUARE, ISLANDS])
    geography = di.from_geopandas(frame, "id", "s", "e")
    assert geography.time_format == form
    spans = geography.to_geopandas()
    for storage in ("slices", "series"):
        dataset = geography.new_dataset(storage, storage=storage)
        dataset.add(pd.DataFrame({"key": "a", "start": starts, "end": ends, "value": [1.0, 2.0]}))
        found = dataset.to_frame()
        assert len(found) == 2 and found["value"].tolist() == [1.0, 2.0]
        again = geography.new_dataset(storage + " again", storage=storage)
        again.add(found)
        assert again.to_frame().equals(found)
        array = dataset.to_xarray()
        back = di.from_xarray(array, name=storage + " array", geography=geography)
        assert back.to_xarray().rename(storage).identical(array)
        assert [dataset.at(start)["a"] for start in found["start"]] == [1.0, 2.0]
    assert found[["start", "end"]].equals(spans[["start", "end"]])
    assert len(geography.times) == 2 and len(dataset.times) == 2


def test_frames_that_are_no_geographies(empty):
    good = dict(id=[1, 2], geometry=[SQUARE, ISLANDS])
    wrong = [
        (frame_of(**good), dict(key="no"), KeyError, "no column no; there are: id"),
        (frame_of(id=[1, 2], geometry=[SQUARE, shapes.Point(0, 0)]), {}, ValueError,
         "row 2: a point among shapes of another kind"),
        (frame_of(id=[1, 1], geometry=[SQUARE, ISLANDS]), dict(key="id"), ValueError, "1"),
        (frame_of(id=[1], geometry=[shapes.MultiPoint([(0, 0), (1, 1)])]), {}, ValueError, "2 points"),
        (frame_of(id=[1], geometry=[None]), {}, ValueError, "no shapes"),
        (frame_of(id=[1], s=["soon"], geometry=[SQUARE]), dict(start="s"), ValueError, "soon"),
        (frame_of(id=[1], s=[2000], e=[1999], geometry=[SQUARE]), dict(start="s", end="e"),
         ValueError, "row 1"),
        (frame_of(id=[1], e=[1999], geometry=[SQUARE]), dict(end="e"), ValueError, "start"),
        (pd.DataFrame(dict(id=[1])), {}, TypeError, "GeoDataFrame"),
    ]
    for frame, options, error, text in wrong:
        with pytest.raises(error, match=text):
            di.from_geopandas(frame, **options)
    assert list(empty) == []


def test_a_frame_without_a_project():
    geography = di.from_geopandas(frame_of(id=[1, 2], geometry=[SQUARE, ISLANDS]).set_index("id"))
    assert geography.project.mode == "w" and geography.keys_name == "id"
    with pytest.raises(ValueError, match="a new project"):
        di.new()
    geography.project.close()


def test_imports_are_those_of_the_program(empty, demo):
    income = SAMPLES / "us_income"
    states = empty.import_map(
        income / "states48.geojson", name="states48", key="fips", start="admitted",
        tables=[income / "income_1929_2009.csv", income / "admission.csv"],
        series="income=1929..2009")
    frame = states["income"].to_frame()
    history = empty.import_map(SAMPLES / "us_states_history" / "states_1783_2000.geojson", key="id",
                               start="start_date", end="end_date")
    assert len(history.at("1800-01-01")) < len(history.at("1999-12-31")) <= history.count
    rain = empty.import_map(SAMPLES / "carolina_climate" / "pr_1999.tif", times="date")
    assert rain.shapes == "raster" and len(rain["pr_1999"].times) == 12
    for path, options, error, text in (
            (income / "none.geojson", {}, OSError, "none.geojson"),
            (income / "README.md", {}, OSError, "README.md"),
            (income / "states48.geojson", dict(key="code"), OSError, "code"),
            (income / "states48.geojson", dict(clef="fips"), TypeError, "clef")):
        with pytest.raises(error, match=text):
            empty.import_map(path, **options)
    empty.close()
    with di.open(demo) as project:
        assert project["states48"]["income"].to_frame().equals(frame)


def cube(**options):
    rng = np.random.default_rng(1)
    array = xarray.DataArray(
        rng.normal(size=(3, 4, 5)), dims=("time", "y", "x"), name="rain",
        coords={"time": pd.date_range("1999-01-01", periods=3, freq="MS"),
                "y": [40.0, 30.0, 20.0, 10.0], "x": np.arange(5) * 10.0 + 5},
        attrs={"units": "mm"})
    array[0, 1, 2] = np.nan
    return array.assign_coords(**options)


@pytest.mark.parametrize("dtype", ["float64", "float32", "int16", "uint8", "int64", "bool"])
def test_a_grid_goes_around(empty, dtype):
    array = cube()
    if dtype not in ("float64", "float32"):
        array = (array.fillna(0) > 0) if dtype == "bool" else np.abs(array.fillna(0) * 50)
    array = array.astype(dtype).assign_attrs(units="mm")
    dataset = di.from_xarray(array, span="month")
    back = dataset.to_xarray()
    assert back.dims == ("y", "x", "time") and back.attrs["units"] == "mm"
    np.testing.assert_array_equal(back.transpose("time", "y", "x"), array)
    for name in ("time", "y", "x"):
        np.testing.assert_array_equal(back[name], array[name])
    assert str(back["time_end"].values[1])[:10] == "1999-03-01"
    again = di.from_xarray(back, name="again", geography=dataset.geography).to_xarray()
    assert again.identical(back.rename("again"))
    assert dataset.at("1999-02").shape == (4, 5)


def test_realizations_and_other_directions(empty):
    array = xarray.DataArray(
        np.arange(24.0).reshape(2, 3, 4), dims=("realization", "lat", "lon"),
        coords={"lat": [1.0, 2.0, 3.0], "lon": [8.0, 7.0, 6.0, 5.0]})
    dataset = di.from_xarray(array, name="drawn")
    assert (dataset.realizations, dataset.static) == (2, True)
    assert dataset.values(realization=2)[0, 0] == array.sel(lat=3, lon=5)[1].item()
    assert dataset.statistics(realization=1).mean == 5.5
    summary = di.summarize_realizations(dataset, mean=True, quantiles=[0.5], above=[11])
    assert summary["mean"][0, 0] == array.sel(lat=3, lon=5).mean()
    assert summary["above 11"].tolist() == [[0.5] * 4] * 3


def test_arrays_that_are_no_grids(empty):
    array = cube()
    wrong = [
        (array.rename(y="depth"), {}, "neither the dimensions"),
        (array.expand_dims("band"), {}, "dimension band"),
        (array.assign_coords(x=[1, 2, 3, 4, 9.0]), {}, "equally far apart"),
        (array.isel(x=[0], y=[0]), {}, "single cell"),
        (array.astype(str), {}, "cells are numbers"),
        (array.isel(time=[0, 0]), {}, "overlap"),
        (array, dict(span="week"), "a span is"),
        (array, dict(geography=5), "needs a grid"),
        (array.isel(time=[]), {}, "no values"),
        (array.assign_coords(time=np.arange(array.sizes["time"]) / 2), {}, "dates or whole numbers"),
        (array.fillna(-np.inf), {}, "infinity"),
        (array.fillna(0).astype("int64") + 2**60, {}, "2 \\*\\* 53"),
    ]
    for given, options, text in wrong:
        with pytest.raises(ValueError, match=text):
            di.from_xarray(given, **options)
    with pytest.raises(TypeError, match="DataArray"):
        di.from_xarray(array.values)
    assert list(empty) == []
    assert di.from_xarray(array.assign_attrs(units=None), name="plain").unit == ""
    empty.remove("plain")
    grid = di.from_xarray(array).geography
    with pytest.raises(ValueError, match="not those of"):
        di.from_xarray(array.isel(x=slice(0, 3)), geography=grid)
    with pytest.raises(ValueError, match="already"):
        di.from_xarray(array, geography=grid)
    with pytest.raises(KeyboardInterrupt):
        di.from_xarray(array, name="half", progress=lambda percent, text: False)
    assert list(empty) == ["rain"] and list(grid) == ["rain"]


def test_values_of_objects_go_around(states, income):
    array = income.to_xarray()
    back = di.from_xarray(array, name="back", geography=states)
    assert back.to_xarray().rename("income").identical(array)
    shuffled = array.astype(float).isel(object=slice(None, None, -3))
    assert di.from_xarray(shuffled, name="some", geography=states).at(1929).count() == 16
    with pytest.raises(KeyError, match="999"):
        di.from_xarray(array.assign_coords(object=np.arange(999, 1047)), name="x",
                       geography=states)
    with pytest.raises(ValueError, match="geography"):
        di.from_xarray(array, name="x")


def test_queries_of_objects(states):
    frame = states.at(2009).to_geopandas()
    left, bottom, right, top = frame.total_bounds
    middle = shapes.box(left, (bottom + top) / 2, (left + right) / 2, top)
    assert states.in_rectangle(*middle.bounds).tolist() == frame.index[
        frame.intersects(middle)].tolist()
    place = frame.loc[51].geometry.centroid
    assert states.in_circle(place.x, place.y, 3e5).tolist() == frame.index[
        frame.distance(place) <= 3e5].tolist()
    near = states.nearest(place.x, place.y, 4)
    distances = frame.distance(place).sort_values()
    assert near["key"].tolist() == distances.index[:4].tolist()
    assert near["distance"].tolist() == pytest.approx(distances[:4].tolist(), rel=1e-6)
    found = states.in_polygon(states.shape(51).buffer(1e5))
    expected = frame.intersection(states.shape(51).buffer(1e5)).area
    expected = expected[frame.intersects(states.shape(51).buffer(1e5))]
    assert found["key"].tolist() == expected.index.tolist()
    assert found["area"].tolist() == pytest.approx(expected.tolist(), rel=1e-9)
    for wrong in (lambda: states.in_circle(0, 0, -1), lambda: states.in_circle(np.nan, 0, 1),
                  lambda: states.in_rectangle(1, 0, 0, 1), lambda: states.nearest(0, 0, 0),
                  lambda: states.in_polygon(shapes.Polygon())):
        with pytest.raises(ValueError):
            wrong()
    with pytest.raises(TypeError, match="Point"):
        states.in_polygon(shapes.MultiPoint([(0, 0)]))


def test_queries_of_cells(empty):
    grid = di.from_xarray(cube().isel(time=0, drop=True)).geography
    assert grid.bounds == (0, 5, 50, 45)
    cells = grid.in_rectangle(12, 27, 25, 40)
    assert cells[["row", "column", "area"]].to_numpy().tolist() == [
        [0, 1, 40], [0, 2, 25], [1, 1, 64], [1, 2, 40]]
    assert sorted(grid.in_rectangle(12, 27, 26, 41, centers=True)[["x", "y"]].to_numpy().tolist()) \
        == [[15, 30], [15, 40], [25, 30], [25, 40]]
    assert grid.in_rectangle(10, 25, 20, 35)["area"].tolist() == [100]  # others share borders alone
    assert len(grid.in_rectangle(16, 6, 24, 44, centers=True)) == 0
    assert len(grid.in_circle(25, 25, 1e308)) == grid.count
    triangle = shapes.Polygon([(0, 5), (20, 5), (0, 25)])
    assert grid.in_polygon(triangle)["area"].sum() == triangle.area
    assert len(grid.in_circle(25, 25, 7.2)) == 2


def test_geostatistics_are_those_of_the_program(empty, tmp_path):
    level = empty.import_map(SAMPLES / "wells" / "wells.csv", x="x", y="y", name="wells")["level"]
    found = di.variogram(level, store="fitted")
    validation = di.cross_validate(level, "fitted")
    grid = di.make_grid("field", 100, level)
    kriged = di.krige(level, found.model, grid, "ours")
    drawn = di.simulate(level, grid, "drawn", count=2, seed=3)
    assert (drawn.realizations, kriged.times[0].missing) == (2, 0)
    assert level.variogram_models == ["fitted"] and di.stored_model(level, "fitted") == found.model
    assert found.model(found.classes["lag"][3]) == pytest.approx(found.classes["value"][3], rel=0.5)
    with pytest.raises(KeyError, match="nothing"):
        di.stored_model(level, "nothing")
    for wrong in ("spherical", "spherical:1:-3", "cone:1:2"):
        with pytest.raises(ValueError):
            di.VariogramModel(wrong)
    project = tmp_path / "wells.vorn"
    empty.save(project)
    empty.close()
    told = meridor("variogram", project, "level")["times"][0]
    assert found.classes["value"].tolist() == [row["value"] for row in told["classes"]]
    assert (str(found.model), found.squares) == (told["model"], told["squares"])
    told = meridor("krige", project, "level", "--model", "fitted", "--validate", 0)
    assert list(validation) == [told[key] for key in (
        "meanError", "rootMeanSquare", "meanSquaredRatio", "correlation")]
    meridor("krige", project, "level", "--model", found.model, "--to", "field", "--into", "theirs")
    meridor("simulate", project, "level", "--to", "field", "--into", "again", "--realizations", 2,
            "--seed", 3)
    for form in ("nc", "zarr", "tif"):  # the wells have no coordinate system
        meridor("export", project, tmp_path / f"ours.{form}", "--datasets", "ours")
    with di.open(project) as opened:
        field = opened["field"]
        assert field.crs is None
        for ours, theirs in (("ours", "theirs"), ("ours variance", "theirs variance"),
                             ("drawn", "again")):
            np.testing.assert_array_equal(field[ours].to_xarray(), field[theirs].to_xarray())


def test_zonal_statistics_are_those_of_the_program(empty, tmp_path):
    counties = empty.import_map(SAMPLES / "nc_sids" / "nc_counties.geojson", key="fips",
                                name="counties")
    rain = empty.import_map(SAMPLES / "carolina_climate" / "pr_1999.tif", times="date")["pr_1999"]
    frame = di.zonal(rain, counties, at=["1999-09", "1999-10"])
    empty.save(tmp_path / "rain.vorn")
    told = meridor("zonal", tmp_path / "rain.vorn", "pr_1999", "counties", "--at", "1999-09")
    assert len(frame) == 200
    theirs = told["times"][0]["zones"]
    for name in ("mean", "stddev", "min", "max"):
        assert frame[name][:100].tolist() == [zone[name] for zone in theirs]
    di.zonal(rain, counties, store="rain", statistic="max")
    assert counties["rain"].at("1999-09-30").tolist() == frame["max"][:100].tolist()
    with pytest.raises(TypeError, match="polygons"):
        di.zonal(rain, rain.geography)
    for wrong in (dict(store="rain"), dict(store="other", statistic="median"),
                  dict(statistic="median")):
        with pytest.raises(ValueError):
            di.zonal(rain, counties, at="1999-09", **wrong)
