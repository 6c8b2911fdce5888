# SPDX-License-Identifier: MIT
"""Values in and out of datasets: the figures of the program, frames and arrays."""

import datetime
import os
import subprocess
import sys

import geopandas
import numpy as np
import pandas as pd
import pytest
import shapely.geometry

import datainterface as di
from conftest import SAMPLES, meridor


def test_values_are_those_of_the_file(income):
    table = pd.read_csv(SAMPLES / "us_income" / "income_1929_2009.csv").set_index("fips")
    for year in (1929, 1981, 2009):
        found = income.at(year)
        assert found.index.name == "key" and found.dtype == "Int32"
        assert found.to_dict() == table[str(year)].to_dict()
    frame = income.to_frame()
    assert list(frame) == ["key", "start", "end", "value"] and len(frame) == 48 * 81
    assert frame.pivot(index="key", columns="start", values="value").to_numpy().sum() \
        == table.drop(columns="name").to_numpy().sum()
    assert income.at(1800).isna().all()
    assert income.series(51)["value"].tolist() == table.loc[51].iloc[1:].tolist()


@pytest.mark.parametrize("time", [
    1931, "1931", "1931-07", np.int64(1931), datetime.date(1931, 6, 1),
    datetime.datetime(1931, 6, 1), np.datetime64("1931"), np.datetime64("1931-06-01T00:00:00"),
    pd.Timestamp("1931-06-01"), pd.Period("1931"),
    datetime.datetime(1931, 6, 1, 5, 30,
                      tzinfo=datetime.timezone(datetime.timedelta(hours=5, minutes=30)))])
def test_times_in_many_forms(income, time):
    assert income.at(time)[53] == 534


@pytest.mark.parametrize("time, error", [
    ("1931-13", ValueError), ("", ValueError), ("soon", ValueError), (True, TypeError),
    ([1931], TypeError), (pd.NaT, ValueError), (1931.5, TypeError), ("1931\ud800", ValueError)])
def test_times_that_are_none(income, time, error):
    with pytest.raises(error):
        income.at(time)


def test_statistics_are_those_of_the_program(income, demo):
    told = meridor("stats", demo, "income")
    frame = income.describe()
    for name, theirs in (("count", "count"), ("mean", "mean"), ("deviation", "stddev"),
                         ("minimum", "min"), ("maximum", "max")):
        assert frame[name].tolist() == [row[theirs] for row in told["times"]]
    whole = income.statistics()
    assert [whole.count, whole.mean, whole.minimum, whole.maximum] == [
        told["overall"][name] for name in ("count", "mean", "min", "max")]
    assert np.isnan(whole.deviation)
    assert income.statistics(1929).mean == pytest.approx(np.mean(income.values(1929)), rel=1e-14)


def test_classes_and_frequencies(states, income, demo):
    assert income.classes(5, at=1929).tolist() == [271, 401.5, 541.5, 713.5, 890, 1152]
    told = meridor("classes", demo, "income", "--method", "quantile", "--count", "4")
    assert told["breaks"] == income.classes(4, "quantile").tolist()
    values = income.to_frame()["value"]
    assert income.frequencies().to_dict() == values.value_counts().to_dict()
    regions = states["sub_region"]
    assert regions.frequencies().to_dict() == regions.at().value_counts().to_dict()
    with pytest.raises(ValueError, match="jenks"):
        income.classes(5, "kmeans")
    with pytest.raises(ValueError, match="texts"):
        regions.statistics()


def test_missing_values(states):
    for kind, values in (("decimal", [1.5, -2.25]), ("integer", [3, -2**31 + 1]),
                         ("text", ["", "\u6771 \U0001f5fa"])):
        dataset = states.new_dataset(kind, kind)
        dataset.add(pd.Series(values, index=[53, 30]), at=1950)
        held = dataset.at(1950)
        assert held.dropna().to_dict() == dict(zip([53, 30], values))
        assert len(dataset.missing(1950)) == 46 and held.isna().sum() == 46
        dataset.set_missing(53, 1950)
        assert dataset.at(1950).dropna().to_dict() == {30: values[1]}
        assert dataset.to_frame()["value"].tolist() == [values[1]]


@pytest.mark.parametrize("storage", ["slices", "series"])
@pytest.mark.parametrize("kind", ["decimal", "integer", "text"])
def test_frames_go_around(states, income, storage, kind):
    frame = income.to_frame().sample(frac=0.9, random_state=1)
    frame["value"] = frame["value"].astype({"decimal": "float64", "integer": "Int64",
                                            "text": "str"}[kind])
    dataset = states.new_dataset("copy", kind, storage=storage)
    dataset.add(frame)
    found = dataset.to_frame()
    order = ["key", "start"]
    pd.testing.assert_frame_equal(
        found.sort_values(order).reset_index(drop=True),
        frame.sort_values(order).reset_index(drop=True), check_dtype=False)
    dataset.add(frame.assign(value=frame["value"].iloc[0]), overwrite=False)
    assert dataset.to_frame().equals(found)


def test_what_cannot_be_added(states, income):
    frame = income.to_frame().head(3)
    whole = states.new_dataset("whole", "integer")
    wrong = [
        (frame.assign(key=[1, 999, 998]), KeyError, "999, 998"),
        (frame.drop(columns="value"), KeyError, "value"),
        (frame.drop(columns="start"), KeyError, "start"),
        (frame.assign(value=0.5), ValueError, "0.5"),
        (frame.assign(value=3e9), ValueError, "3e\\+09"),
        (frame.assign(value=np.inf), ValueError, "inf"),
        (frame.assign(value="many"), ValueError, "numbers"),
        (frame.assign(value="5"), ValueError, "numbers"),
        (frame.assign(value=pd.Timestamp("2000-01-01")), ValueError, "numbers"),
        (pd.concat([frame, frame["value"]], axis=1), ValueError, "two columns value"),
        (frame.assign(start=1929, end=1931), ValueError, "two values at 1929-01-01"),
        (frame.assign(start=pd.NaT), ValueError, "without a time"),
        (frame.assign(end=1900), ValueError, "ends before"),
        (frame["value"], ValueError, "at="),
        ([1, 2], TypeError, "list"),
    ]
    for values, error, text in wrong:
        with pytest.raises(error, match=text):
            whole.add(values)
    with pytest.raises(ValueError, match="holds texts"):
        states.new_dataset("words", "text").add(frame)
    with pytest.raises(KeyError, match="no object"):
        whole.add(pd.Series([1], index=pd.MultiIndex.from_tuples([(1, 2)])), at=1929)
    for realization, error in ((2**40, ValueError), ("1", TypeError), (1.5, TypeError)):
        with pytest.raises(error, match="realization"):
            income.values(1929, realization)
    assert len(whole.times) == 0
    for name, error in (("whole", "already"), ("", "empty")):
        with pytest.raises(ValueError, match=error):
            states.new_dataset(name)
    with pytest.raises(ValueError, match="decimal, integer or text"):
        states.new_dataset("x", "complex")


def test_realizations(states):
    dataset = states.new_dataset("simulated", realizations=3)
    for number in (1, 2, 3):
        dataset.add(pd.Series(float(number), index=states.object_keys), at=2000,
                    realization=number)
    dataset.add(pd.Series([7.5], index=[53]), at=2001, realization=2)
    assert dataset.at(2000, realization=2)[53] == 2.0
    assert dataset.to_frame()["realization"].value_counts().to_dict() == {1: 48, 2: 49, 3: 48}
    array = dataset.to_xarray()
    assert array.dims == ("object", "time", "realization")
    assert array.sel(object=53, time="2001").values.ravel().tolist() == pytest.approx(
        [np.nan, 7.5, np.nan], nan_ok=True)
    for number in (0, 4):
        with pytest.raises(ValueError, match=f"no realization {number}"):
            dataset.at(2000, realization=number)


def test_arrays(income):
    array = income.to_xarray()
    assert array.dims == ("object", "time") and array.shape == (48, 81)
    assert array.sel(object=51, time="2009").item() == 43211
    assert str(array["time"].values[0])[:10] == "1929-01-01"
    assert str(array["time_end"].values[0])[:10] == "1930-01-01"
    assert income.values(1929).dtype == np.int32
    income.values(1929)[:] = 0  # the caller's own
    assert income.values(1929)[0] == 741


def test_the_time_zone_of_the_machine_is_not_used(demo):
    code = ("import datainterface as di\n"
            f"with di.open({str(demo)!r}) as project:\n"
            "    frame = project['states48']['income'].to_frame()\n"
            "    print(frame.start[0], frame.end[0], project['states48']['income'].at(1930)[53])\n")
    found = [subprocess.run([sys.executable, "-c", code], capture_output=True, text=True,
                            env={**os.environ, "TZ": zone}).stdout
             for zone in ("UTC", "Asia/Kolkata")]
    assert found == ["1929-01-01 00:00:00 1929-12-31 00:00:00 658\n"] * 2


def test_renaming_and_units(states, income):
    income.name, income.unit = "Einkommen \u20ac", "US$"
    assert states["Einkommen \u20ac"] == income and states["Einkommen \u20ac"].unit == "US$"
    with pytest.raises(ValueError, match="already"):
        income.name = "name"
    with pytest.raises(KeyError):
        states["income"]
    states.remove(income)
    with pytest.raises(ValueError, match="no longer"):
        income.at(1929)


@pytest.mark.parametrize("time", [int, lambda day: pd.Timestamp("2000-02-20") + pd.Timedelta(days=day)],
                         ids=["number", "date"])
def test_views_of_values_agree_at_every_time(empty, time):
    """An array and a series hold for their spans what is told at a time, also where realizations
    change at different times and values were taken away in the middle of a span."""
    frame = geopandas.GeoDataFrame({"key": ["a", "b"], "start": [time(0)] * 2, "end": [time(19)] * 2},
                                   geometry=[shapely.geometry.Point(0, 0), shapely.geometry.Point(1, 1)])
    dataset = di.from_geopandas(frame, "key", "start", "end").new_dataset("v", realizations=2)
    dataset.add(pd.Series([1.0, 2.0], index=["a", "b"]), at=time(0), end=time(9))
    dataset.add(pd.Series([3.0], index=["b"]), at=time(5), end=time(14), realization=2)
    dataset.set_missing("a", time(4), time(6))
    array, day = dataset.to_xarray(), time(1) - time(0)
    for realization in (1, 2):
        told = pd.DataFrame({index: dataset.at(time(index), realization=realization)
                             for index in range(20)})
        read = pd.DataFrame(np.nan, index=told.index, columns=told.columns)
        listed = read.copy()
        for place, (start, end) in enumerate(zip(array["time"].values, array["time_end"].values)):
            for index in range(20):
                if start <= np.array(time(index), dtype=start.dtype) < end:
                    read[index] = array.isel(realization=realization - 1, time=place).values
        for key in "ab":
            for row in dataset.series(key, realization=realization).itertuples():
                for index in range((row.start - time(0)) // day, (row.end - time(0)) // day + 1):
                    listed.loc[key, index] = row.value
        pd.testing.assert_frame_equal(read, told)
        pd.testing.assert_frame_equal(listed, told)
