# SPDX-License-Identifier: MIT
"""Work on the workers of a cluster of processes."""

import os
import pickle
import shutil
import time

import numpy as np
import pytest

import datainterface as di
from conftest import SAMPLES

distributed = pytest.importorskip("distributed")


@pytest.fixture(scope="module")
def client():
    with distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True,
                                  dashboard_address=None) as cluster:
        with distributed.Client(cluster) as client:
            yield client


def mean_of(dataset, time):
    return dataset.statistics(time).mean


def process_of(dataset, time):
    return os.getpid()


def test_arrays_are_read_by_workers(client, income):
    whole = di.dask.array(income, rows=20)
    assert whole.shape == (48, 81) and whole.numblocks == (3, 81)
    found = whole.compute()
    np.testing.assert_array_equal(found, income.to_xarray().values)
    # Nothing of the project travels with a task.
    graph = whole.__dask_graph__().to_dict()
    assert max(len(pickle.dumps(task)) for task in graph.values()) < 5000


def test_arrays_have_the_form_of_xarray(client, empty, tmp_path):
    geography = di.from_geopandas(_points(), key="key")
    with pytest.raises(ValueError, match="save the project first"):
        di.dask.array(geography["worth"])
    fields = [np.arange(48.0).reshape(4, 3, 2, 2), np.arange(12.0).reshape(4, 3)]
    places = {"y": [4, 3, 2, 1], "x": [1, 2, 3]}
    xarray = pytest.importorskip("xarray")
    grids = [di.from_xarray(xarray.DataArray(
        fields[0], dims=("y", "x", "time", "realization"), name="many",
        coords={**places, "time": [1990, 1995]})),
        di.from_xarray(xarray.DataArray(fields[1], dims=("y", "x"), coords=places, name="one"))]
    # Realizations with values at unlike times.
    unlike = geography.new_dataset("unlike", realizations=2)
    for realization, year in ((1, 1950), (1, 1990), (2, 1970), (2, 1990)):
        unlike.add(geography["worth"].at() + year, at=year, realization=realization)
    held = [geography["worth"], unlike, *grids]
    with pytest.raises(ValueError, match="nothing holds no values"):
        empty.save(tmp_path / "forms.vorn")
        nothing = geography.new_dataset("nothing")
        empty.save()
        di.dask.array(nothing)
    for dataset in held:
        expected = dataset.to_xarray().values
        for file in (None, di.dask.hand_over(empty, client)):
            found = di.dask.array(dataset, rows=2, file=file).compute()
            assert found.dtype == float
            np.testing.assert_array_equal(found, expected, err_msg=dataset.name)


def test_times_keep_their_order(client, income):
    assert di.dask.map_times(mean_of, income, client=client) == [
        mean_of(income, year) for year in range(1929, 2010)]
    assert di.dask.map_times(mean_of, income, [2009, 1929], client) == [
        mean_of(income, 2009), mean_of(income, 1929)]
    assert os.getpid() not in di.dask.map_times(process_of, income, client=client)
    with pytest.raises(ValueError, match="1800"):
        di.dask.map_times(mean_of, income, 1800, client)
    for wrong in (dict(at=[]), dict(alpha=2), dict(permutations=-1)):
        with pytest.raises(ValueError):
            di.dask.local_moran(income, "queen", client=client, **wrong)


def test_moran_does_not_depend_on_the_workers(client, income):
    years = [1929, 1980, 2009]
    two = di.dask.moran(income, "queen", at=years, permutations=60000, seed=7, client=client)
    with distributed.LocalCluster(n_workers=1, threads_per_worker=1, processes=True,
                                  dashboard_address=None) as cluster:
        with distributed.Client(cluster) as single:
            one = di.dask.moran(income, "queen", at=years, permutations=60000, seed=7, client=single)
    assert one.equals(two)
    alone = di.moran(income, "queen", at=years, permutations=60000, seed=7)
    assert two["I"].tolist() == alone["I"].tolist()
    np.testing.assert_allclose(two["p"], alone["p"], atol=0.005)
    # One block is a call with the seed of its place.
    block = di.dask.moran(income, "queen", at=1929, permutations=999, seed=7, client=client)
    same = di.moran(income, "queen", at=1929, permutations=999, seed=di.dask._seed_of(7, 1, 0, 0))
    assert block["p"].tolist() == same["p"].tolist()


def test_local_moran_joins_blocks(client, income, monkeypatch):
    seed = di.dask._seed_of(3, 1, 51, 0)
    alone = di.local_moran(income, "queen", at=1980, permutations=400, seed=seed, correction="fdr",
                           alpha=0.2)
    whole = di.dask.local_moran(income, "queen", at=1980, permutations=400, seed=3,
                                correction="fdr", alpha=0.2, client=client)
    assert whole.drop(columns="realization").equals(alone)
    monkeypatch.setattr(di.dask, "BLOCK", 100)
    parts = di.dask.local_moran(income, "queen", at=1980, permutations=400, seed=3, client=client)
    np.testing.assert_allclose(parts["p"], whole["p"], atol=0.15)
    assert (parts["p"] != whole["p"]).any()


def test_zones_are_those_of_one_process(client, empty, tmp_path):
    rain = empty.import_map(SAMPLES / "carolina_climate" / "pr_1999.tif", times="date")["pr_1999"]
    counties = empty.import_map(SAMPLES / "nc_sids" / "nc_counties.geojson", key="fips")
    empty.save(tmp_path / "rain.vorn")
    found = di.dask.zonal(rain, counties, client=client)
    assert found.pop("realization").eq(1).all()
    assert found.equals(di.zonal(rain, counties))


def test_weights_of_several_times(client, states):
    found = di.dask.weights(states, states.weight_sets["queen"], [1929, 2009], client=client)
    for matrix, year in zip(found, (1929, 2009)):
        assert (matrix != states.weights("queen", at=year)).nnz == 0
        assert matrix.keys.tolist() == states.object_keys.tolist()


def test_a_killed_worker_loses_nothing(client, income):
    expected = di.dask.moran(income, "queen", permutations=5000, seed=1, client=client)
    futures = client.submit(time.sleep, 0)  # the scheduler is awake
    futures.result()
    workers = client.run(os.getpid)

    import threading

    killer = threading.Timer(0.5, os.kill, (list(workers.values())[0], 9))
    killer.start()
    found = di.dask.moran(income, "queen", permutations=200000, seed=1, client=client)
    killer.join()
    assert set(client.run(os.getpid).values()) != set(workers.values())
    assert found["I"].equals(expected["I"])
    again = di.dask.moran(income, "queen", permutations=200000, seed=1, client=client)
    assert again.equals(found)


def test_files_that_workers_do_not_find(client, demo, tmp_path):
    copy = tmp_path / "Größe 1.vorn"
    shutil.copy(demo, copy)
    with di.open(copy) as project:
        income = project["states48"]["income"]
        assert len(di.dask.map_times(mean_of, income, client=client)) == 81
        handed = di.dask.hand_over(project, client)
        planned = di.dask.array(income)
        os.utime(copy, ns=(1, 1))
        with pytest.raises(OSError, match="changed since.*worker tcp"):
            planned.compute()
        # Keys and times of the file as it was do not belong to values of the file as it is.
        for ask in (di.dask.array, lambda dataset: di.dask.moran(dataset, "queen", client=client),
                    lambda dataset: di.dask.hand_over(project, client)):
            with pytest.raises(OSError, match="Größe 1.vorn was changed since it was opened"):
                ask(income)
        assert len(di.dask.map_times(mean_of, income, client=client, file=handed)) == 81
    with di.open(copy) as project:
        income = project["states48"]["income"]
        planned = di.dask.array(income)
        copy.unlink()
        with pytest.raises(OSError, match="worker tcp.*cannot read"):
            planned.compute()
        assert len(di.dask.map_times(mean_of, income, client=client, file=handed)) == 81


def _points():
    geopandas = pytest.importorskip("geopandas")
    return geopandas.GeoDataFrame({"key": ["a", "b"], "worth": [1.5, np.nan]},
                                  geometry=geopandas.points_from_xy([0, 1], [0, 1]))
