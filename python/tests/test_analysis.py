# SPDX-License-Identifier: MIT
"""Weights and Moran's I: the program's figures, and those of SciPy, NumPy and libpysal."""

import warnings

import numpy as np
import pandas as pd
import pytest
import scipy.sparse

import datainterface as di
from conftest import SAMPLES, meridor


def test_weights_at_a_time(states, demo):
    for time, objects, links in (("1800-12-31", 16, 52), ("1850-12-31", 31, 112),
                                 ("2000-12-31", 48, 214)):
        queen = states.weights("queen", at=time)
        assert (len(queen.existing), queen.nnz) == (objects, links)
        assert scipy.sparse.isspmatrix_csr(queen) and queen.shape == (48, 48)
        told = meridor("neighbors", demo, "queen", "51", "--at", time)["neighbors"]
        row = queen.getrow(list(queen.keys).index(51))
        assert {str(queen.keys[column]): value for column, value in zip(row.indices, row.data)} \
            == {link["object"]: link["weight"] for link in told}
    assert (queen * 2).weight_set is None
    # SciPy may use the matrix for everything; analyses refuse weights that are no longer the set's.
    assert ((queen > 0).nnz, queen.astype(bool).nnz, abs(queen).max()) == (214, 214, 1)
    income = states["income"]
    di.moran(income, queen, at=1929, permutations=0)

    def insert(matrix):
        matrix[0, 47] = 0.5

    for change in (insert, lambda matrix: matrix.resize(40, 40), lambda matrix: matrix.setdiag(1),
                   lambda matrix: matrix.data.__imul__(2),
                   lambda matrix: matrix.indices.__setitem__(slice(None), matrix.indices[::-1])):
        changed = states.weights("queen", at=2000)
        with warnings.catch_warnings(record=True):  # that other matrices are faster to change
            change(changed)
        with pytest.raises(ValueError, match="add_weights"):
            di.moran(income, changed, at=1929, permutations=0)
    with pytest.raises(ValueError, match="no object"):
        states.weights("queen", at=1500)


def test_weights_of_libpysal(states):
    queen = states.weights("queen", at=2009)
    pytest.importorskip("libpysal")
    import libpysal

    theirs = libpysal.weights.Queen.from_dataframe(states.at(2009).to_geopandas(),
                                                   idVariable=None, silence_warnings=True)
    keys = list(states.at(2009).keys)
    ours = queen.to_libpysal()
    assert {key: set(found) for key, found in ours.neighbors.items()} == {
        keys[index]: {keys[other] for other in found}
        for index, found in theirs.neighbors.items()}
    again = states.add_weights("again", ours)
    assert (again.at(2009) != queen).nnz == 0


def test_sets_of_own_weights(states, income):
    random = scipy.sparse.random(48, 48, 0.1, random_state=1, format="lil")
    random.setdiag(0)
    own = states.add_weights("own", random)
    assert abs(own.at(1929) - random).max() < 1e-7
    values = income.values(1929).astype(float)
    z = values - values.mean()
    plain = 48 / own.at(1929).sum() * (z @ (own.at(1929) @ z)) / (z @ z)
    assert di.moran(income, own, at=1929, permutations=0)["I"][0] == pytest.approx(plain, rel=1e-12)
    for wrong, error, text in ((random[:40, :40], ValueError, "48"), ([[1]], TypeError, "SciPy"),
                               (random.tocsr() * np.nan, ValueError, "finite"),
                               (random.tocsr() * 1j, ValueError, "complex")):
        with pytest.raises(error, match=text):
            states.add_weights("wrong", wrong)
    with pytest.raises(TypeError, match="add_weights"):
        di.moran(income, random)
    own.remove()
    assert "own" not in states.weight_sets


def test_moran_is_that_of_the_program(income, states, demo):
    queen = states.weights("queen", at=1929)
    frame = di.moran(income, queen, permutations=999, seed=1)
    told = meridor("moran", demo, "income", "queen", "--permutations", 999, "--seed", 1)["times"]
    assert list(frame) == ["time", "I", "expectation", "p", "permutations", "seed"]
    for name, theirs in (("I", "I"), ("expectation", "expected"), ("p", "p")):
        assert frame[name].tolist() == [row[theirs] for row in told]
    assert frame["time"].dt.year.tolist() == [int(row["time"]) for row in told]
    assert frame.attrs["z"] == [row["z"] for row in told]
    expected = {1929: 0.626927, 1934: 0.666630, 1981: 0.248167, 2009: 0.428769}
    found = frame.set_index(frame["time"].dt.year)["I"]
    assert found[list(expected)].to_dict() == pytest.approx(expected, abs=6e-7)


def test_local_moran_is_that_of_the_program(income, demo):
    frame = di.local_moran(income, "queen", at=[1929, 2009], permutations=99, seed=7,
                           correction="fdr")
    told = meridor("moran", demo, "income", "queen", "--at", 1929, "--at", 2009, "--local",
                   "--permutations", 99, "--seed", 7, "--correction", "fdr")["times"]
    theirs = [row for time in told for row in time["local"]]
    for name in ("I", "z", "p", "cluster"):
        assert frame[name].tolist() == [row[name] for row in theirs]
    assert frame["key"].astype(str).tolist() == [row["object"] for row in theirs]


def test_seeds_and_stored_results(income, states):
    first = di.moran(income, "queen", at=1929, permutations=99)
    again = di.moran(income, "queen", at=1929, permutations=99, seed=int(first["seed"][0]),
                     store="test")
    assert first.drop(columns="seed").equals(again.drop(columns="seed"))
    assert set(states["test I"].at(1929)) == {first["I"][0]}
    states.new_dataset("half p")
    for wrong in (dict(permutations=-1), dict(seed=-1), dict(islands="sink"), dict(store="test"),
                  dict(store="half"), dict(at=[])):
        with pytest.raises(ValueError):
            di.moran(income, "queen", **{"at": 1929, **wrong})
    assert "half I" not in states
    with pytest.raises(ValueError, match="holds texts"):
        di.moran(states["name"], "queen")


def test_arguments_without_a_meaning_are_refused(empty):
    wells = empty.import_map(SAMPLES / "wells" / "wells.csv", key="well", x="x", y="y")
    level = wells["level"]
    field = di.make_grid("field", 400, like=level)
    far = scipy.sparse.csr_matrix(([1e300], ([0], [1])), shape=(wells.count, wells.count))
    empty_frame = wells.at().to_geopandas(datasets=[])
    wrong = [
        ("neighbours are found by", lambda: wells.new_weights("set", "distance", distance=500)),
        ("a count is", lambda: wells.new_weights("set", "nearest", count=-1)),
        ("an order is", lambda: wells.new_weights("set", "nearest", order=0)),
        ("a range is", lambda: wells.new_weights("set", "range", distance=np.nan)),
        ("are finite", lambda: wells.new_weights("set", "nearest", weights="inverse", power=np.inf)),
        ("32-bit numbers", lambda: wells.add_weights("set", far)),
        ("a cutoff", lambda: di.variogram(level, cutoff=-1)),
        ("a width", lambda: di.variogram(level, width=np.nan)),
        ("a direction", lambda: di.variogram(level, directions=[np.inf])),
        ("a tolerance", lambda: di.variogram(level, directions=[0], tolerance=90.1)),
        ("bounds are", lambda: di.make_grid("grid", 1, level, bounds=(1, 1, 0, 0))),
        ("the mean", lambda: di.simulate(level, field, "drawn", scores=False, mean=np.nan)),
        ("a seed", lambda: di.simulate(level, field, "drawn", seed=-1)),
        ("a seed", lambda: di.cross_validate(level, "nugget:1", folds=2, seed=-1)),
        ("too large", lambda: di.krige(level, "nugget:1", field, "kriged", neighbors=2**40)),
        ("a name", lambda: di.from_geopandas(empty_frame, name="")),
    ]
    for sentence, call in wrong:
        with pytest.raises(ValueError, match=sentence):
            call()
    assert (list(empty), list(wells.weight_sets)) == (["wells", "field"], [])


def test_parts_of_other_kinds_are_refused(empty):
    wells = empty.import_map(SAMPLES / "wells" / "wells.csv", key="well", x="x", y="y")
    level = wells["level"]
    field = di.make_grid("field", 400, like=level)
    near = wells.new_weights("near", "nearest")
    for call in (lambda: empty.remove(level), lambda: wells.remove(field), lambda: wells.remove(near),
                 lambda: wells.to_geopandas([field]), lambda: wells.at().to_geopandas([near]),
                 lambda: di.moran(wells, "near"), lambda: di.variogram(level, other=field),
                 lambda: di.krige(level, "nugget:1", level, "kriged"),
                 lambda: di.krige(level, "nugget:1", field, "kriged", external=level),
                 lambda: di.cross_validate(field, "nugget:1"), lambda: di.make_grid("g", 1, field),
                 lambda: di.simulate(wells, field, "drawn"), lambda: di.zonal(level, wells),
                 lambda: di.summarize_realizations(field, mean=True),
                 lambda: di.stored_model(wells, "model")):
        with pytest.raises(TypeError, match=" is a "):
            call()
    drawn = di.simulate(level, field, "drawn", seed=1)
    with pytest.raises(ValueError, match="not of wells"):
        wells.remove(drawn)
    with pytest.raises(ValueError, match="a limit"):
        di.summarize_realizations(drawn, above=[np.nan])
    assert [list(held) for held in empty.values()] == [["well", "level"], ["drawn"]]
    assert [5 in empty, "" in empty, 5 in wells, None in wells, "level" in wells] == [False] * 4 + [True]
    assert di.variogram(level, directions=[0, 90], tolerance=90).samples == 120


def test_parts_that_were_removed_are_refused(empty):
    wells = empty.import_map(SAMPLES / "wells" / "wells.csv", key="well", x="x", y="y")
    level, other = wells["level"], wells.new_dataset("other", static=True)
    near = wells.new_weights("near", "nearest").at()
    grid = di.make_grid("field", 400, like=level)
    drift = di.simulate(level, grid, "drawn", seed=1)
    empty.remove(grid)
    wells.remove(other)
    near.weight_set.remove()
    for call in (lambda: di.moran(level, near), lambda: di.local_moran(level, near),
                 lambda: di.zonal(drift, di.VectorGeography(empty, grid._number)),
                 lambda: di.krige(level, "nugget:1", grid, "kriged"),
                 lambda: di.krige(level, "nugget:1", wells, "kriged", external=drift),
                 lambda: di.simulate(level, grid, "drawn"),
                 lambda: di.variogram(level, other=other),
                 lambda: di.summarize_realizations(level, mean=True, reference=other)):
        with pytest.raises(ValueError, match="no longer in the project"):
            call()


def test_shapes_at_a_time(states):
    frame = states.at("1850-12-31").to_geopandas()
    assert len(frame) == 31 and frame.index.name == "key"
    assert frame.crs.to_epsg() == 5070
    import geopandas

    source = geopandas.read_file(SAMPLES / "us_income" / "states48.geojson").set_index("fips")
    both = frame.geometry.geom_equals(source.geometry.reindex(frame.index), align=False)
    assert both.all()
    assert frame["name"].equals(source["name"].reindex(frame.index).astype(object))
    spans = states.to_geopandas()
    assert len(spans) == 48 and spans["start"].min() == pd.Timestamp("1787-12-07")
