# SPDX-License-Identifier: MIT
"""The demo once more: each dataset that the program stores is made here as well, from the same files, and is the
same to the last bit."""

import subprocess

import numpy as np
import pytest

import datainterface as di
from conftest import PROGRAM, SAMPLES


def contents(project):
    """All values by geography and dataset: spans, realizations, values with None where missing."""
    found = {}
    for geography in project.geographies:
        for dataset in geography.datasets:
            spans = dataset._spans()
            values = [np.ma.filled(np.ma.array(dataset.values(at, realization), dtype=object), None)
                      for realization in range(1, dataset.realizations + 1)
                      for at in (dataset.times if not dataset.static else [None])]
            found[geography.name, dataset.name] = spans.tolist(), [
                [None if value != value else value for value in each.ravel().tolist()]
                for each in values]
    return found


@pytest.fixture(scope="module")
def told(tmp_path_factory):
    folder = tmp_path_factory.mktemp("story")
    subprocess.run([PROGRAM, "-q", "demo", folder, "--overwrite"], check=True, capture_output=True)
    with di.open(folder / "demo.vorn") as project:
        return contents(project)


def history(project):
    states = project.import_map(
        SAMPLES / "us_states_history/states_1783_2000.geojson", name="states and territories",
        key="id", start="start_date", end="end_date", fields=["name", "terr_type", "area_sqmi"])
    queen = states.new_weights("queen")
    days = {"1790-08-02": (17, 62), "1860-06-01": (41, 178), "1900-06-01": (50, 224),
            "2000-04-01": (49, 218)}
    for day, figures in days.items():
        assert (len(states.at(day)), queen.at(day).nnz) == figures


def incomes(project):
    folder = SAMPLES / "us_income"
    states = project.import_map(
        folder / "states48.geojson", name="states", key="fips",
        tables=[folder / "income_1929_2009.csv", folder / "admission.csv"],
        series=["income=1929..2009"], start="admitted", strict=True)
    income = states["income"]
    assert [round(income.statistics(year).mean, 3) for year in (1929, 1981, 2009)] == [
        615.208, 10725.917, 37205.021]
    assert income.classes(5, "jenks", 1929).tolist() == [271, 401.5, 541.5, 713.5, 890, 1152]
    states.new_weights("queen")
    frame = di.moran(income, "queen", permutations=999, seed=1929, store="income Moran")
    assert round(frame["I"].iloc[0], 6) == 0.626927 and frame["p"].max() <= 0.005
    links = [states.weights("queen", at=year).nnz for year in (1800, "1850-12-31", "1912-12-31", 2000)]
    assert links == [52, 112, 214, 214]


def climate(project):
    folder = SAMPLES / "carolina_climate"
    for name in ("pr_1999", "tas_1999"):
        project.import_map(folder / f"{name}.tif", times="date")
    counties = project.import_map(SAMPLES / "nc_sids/nc_counties.geojson", name="counties",
                                  key="fips", fields=["name"])
    zones = di.zonal(project["pr_1999"]["pr_1999"], counties, store="rain", statistic="mean")
    september = zones[zones["time"] == "1999-09-01"].set_index("key")["mean"]
    names = counties["name"].at()
    for name, mean in {"Buncombe": 56.746, "Wake": 512.232, "Edgecombe": 756.992}.items():
        assert round(september[names[names == name].index[0]], 3) == mean


def wells(project):
    folder = SAMPLES / "wells"
    field = project.import_map(folder / "truth.asc", name="field")
    level = project.import_map(folder / "wells.csv", key="well", x="x", y="y")["level"]
    di.variogram(level, model="exponential", store="level")
    di.krige(level, "level", field, "predicted", neighbors=0)
    errors = di.cross_validate(level, "level", neighbors=0)
    np.testing.assert_allclose(errors, [0.015439, 1.495440, 0.999275, 0.785689], rtol=1e-3)
    drawn = di.simulate(level, field, "simulated", count=100, seed=41)
    di.summarize_realizations(drawn, mean=True, deviation=True, above=[41], store="simulated")


def test_the_demo_has_the_same_figures(told):
    with di.new() as project:
        for chapter in (history, incomes, climate, wells):
            chapter(project)
        mine = contents(project)
    assert set(mine) == set(told)
    for name, values in told.items():
        assert mine[name] == values, name
