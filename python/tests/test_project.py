# SPDX-License-Identifier: MIT
"""Opening, saving and closing; failures as exceptions of Python."""

import copy
import logging
import os
import pickle
import signal
import subprocess
import sys
import threading
import time

import geopandas
import numpy as np
import pytest
import shapely.geometry
import xarray

import datainterface as di
from conftest import meridor


def in_new_process(code, **environment):
    return subprocess.run([sys.executable, "-c", code], capture_output=True, text=True,
                          env={**os.environ, **environment})


def test_import_loads_numpy_alone():
    foreign = ("pandas", "geopandas", "xarray", "scipy", "libpysal", "shapely", "dask", "pyproj")
    done = in_new_process("import sys, datainterface\n"
                          f"print([name for name in {foreign} if name in sys.modules])")
    assert (done.stdout.strip(), done.stderr) == ("[]", "")


def test_a_wrong_type_is_named(project, tmp_path):
    """Each argument in turn has a value of a type that no argument has."""
    states, income, wells = project["states48"], project["states48"]["income"], tmp_path / "w.csv"
    wells.write_text("id,x,y,v\n" + "".join(f"{i},{i % 7},{i % 5},{i * i % 11}\n"
                                            for i in range(35)))
    sites = project.import_map(wells, key="id", x="x", y="y")
    grid = di.make_grid("grid", 1.0, sites["v"])
    queen, place = states.weights("queen", at=2009), dict(left=0, bottom=0, right=1, top=1)
    kriging = dict(drift=0, neighbors=5, least=1, quadrants=0, mean=1.0, radius=9.0)
    model = di.VariogramModel("spherical:1:5")
    calls = [
        (project.import_map, dict(path=wells, key="id", x="x", fields="v", snap=0.0, strict=False)),
        (project.save, dict(path=wells)), (project.remove, dict(geography="states48")),
        (states.remove, dict(dataset="income")), (states.weights, dict(name="queen", at=2009)),
        (states.new_weights, dict(name="n", method="nearest", weights="inverse", order=1, count=3,
                                  distance=1.0, great_circle=False, include_ego=False,
                                  numerator=1.0, power=1.0, information="")),
        (states.add_weights, dict(name="n", weights=queen, start=2009, end=2009)),
        (states.to_geopandas, dict(datasets="income")), (states.at, dict(time=2009)),
        (states.new_dataset, dict(name="d", kind="decimal", storage="slices", realizations=1,
                                  static=False, unit="m")),
        (states.in_rectangle, place), (grid.in_rectangle, dict(place, centers=True)),
        (states.in_circle, dict(x=0, y=0, radius=1)), (grid.in_circle, dict(x=0, y=0, radius=1)),
        (states.in_polygon, dict(polygon=shapely.geometry.box(0, 0, 1, 1))),
        (states.nearest, dict(x=0, y=0, count=1, great_circle=False)),
        (income.values, dict(at=2009, realization=1)), (income.at, dict(time=2009, realization=1)),
        (income.classes, dict(count=3, method="jenks")),
        (income.add, dict(values=income.at(2009), at=2009, overwrite=True)),
        (di.moran, dict(dataset=income, weights="queen", at=2009, permutations=9, seed=1,
                        islands="keep", store="m", realization=1)),
        (di.local_moran, dict(dataset=income, weights="queen", at=2009, correction="none",
                              alpha=0.5, permutations=9)),
        (di.zonal, dict(dataset=income, polygons=states, store="z", statistic="mean")),
        (di.variogram, dict(dataset=sites["v"], pooled=False, scores=False, cutoff=5.0, width=1.0,
                            directions=[0.0], tolerance=10.0, estimator="classical", model="none",
                            nugget=0.1, anisotropic=False, weights="pairs", exact_minimum=False,
                            store="m", realization=1)),
        (di.stored_model, dict(dataset=income, name="m")), (di.VariogramModel("nugget:1"),
                                                            dict(separation=1, direction=1)),
        (di.make_grid, dict(name="g", cell=1.0, like=income, bounds=(0, 0, 1, 1))),
        (di.krige, dict(kriging, dataset=sites["v"], model=model, target=grid, name="k", block=2)),
        (di.cross_validate, dict(kriging, dataset=sites["v"], model=model, folds=2, seed=1)),
        (di.simulate, dict(dataset=sites["v"], grid=grid, name="s", count=1, scores=True, mean=1.0,
                           neighbors=3, radius=9.0, seed=1)),
        (di.summarize_realizations, dict(dataset=sites["v"], mean=True, deviation=True,
                                         quantiles=[0.5], above=[1.0], store="s")),
        (di.from_geopandas, dict(frame=states.to_geopandas(), key="key", name="f", snap=0.0)),
        (di.new, dict(cache=64)), (di.stats.t_p, dict(t=[1.0], df=3)),
        (di.stats.binomial_p, dict(k=[1], n=3, p=0.5, cumulative=False)),
        (di.stats.fdr, dict(p=[0.5], alpha=0.5)), (di.stats.normal_p, dict(x=0.5))]
    before = [states[name].name for name in states]
    for call, arguments in calls:
        for name in set(arguments) - {"model"}:  # a model may be anything with a text
            with pytest.raises(TypeError) as raised:
                call(**{**arguments, name: object()})
            text = str(raised.value)
            foreign = "incompatible" in text or text.startswith(("argument", "float()", "expected"))
            assert (" is " in text or " are " in text) and not foreign, (call, name, text)
    assert [states[name].name for name in states] == before
    for named in (states, income):
        with pytest.raises(TypeError, match="a name is a text, not an int"):
            named.name = 5
    with pytest.raises(ValueError, match="count is a whole number of 32 bits"):
        states.nearest(0, 0, 2**70)


def test_a_missing_package_is_named(demo):
    done = in_new_process(
        "import sys, datainterface as di\n"
        "sys.modules['pandas'] = None\n"
        f"with di.open({str(demo)!r}) as project:\n"
        "    project['states48']['income'].at(1929)\n")
    assert "python3-pandas" in done.stderr and "pip install pandas" in done.stderr


@pytest.mark.parametrize("content", [b"", b"\0" * 100, b"PK\x03\x04" + b"\x8b" * 1000, None],
                         ids=["empty", "zeros", "archive", "cut off"])
def test_files_that_are_no_projects(tmp_path, demo, content):
    path = tmp_path / "\u6771\u4eac \U0001f5fa.vorn"
    path.write_bytes(demo.read_bytes()[:30000] if content is None else content)
    with pytest.raises(OSError, match="\u6771\u4eac \U0001f5fa"):
        di.open(path)
    di.new().close()  # nothing is left open


def test_a_file_that_changes_while_it_is_open(demo, tmp_path):
    path = tmp_path / "changed.vorn"
    path.write_bytes(demo.read_bytes())
    with di.open(path) as project:
        income = project["states48"]["income"]
        assert not project.unreadable
        with path.open("r+b") as file:
            file.seek(-2000, os.SEEK_END)
            file.write(bytes(2000))
        with pytest.raises(OSError, match="changed.vorn: values of the project"):
            income.to_frame()
        assert project.unreadable
        with pytest.raises(OSError):
            project.save(tmp_path / "copy.vorn")
    assert not (tmp_path / "copy.vorn").exists()


def test_paths_that_cannot_be_opened(tmp_path):
    with pytest.raises(FileNotFoundError, match="nowhere.vorn"):
        di.open(tmp_path / "nowhere.vorn")
    with pytest.raises(OSError):
        di.open(tmp_path)
    with pytest.raises(ValueError, match="r\\+"):
        di.open(tmp_path, mode="w")


def test_a_relative_path_stays_that_of_the_file(demo, tmp_path, monkeypatch):
    (tmp_path / "elsewhere").mkdir()
    (tmp_path / "own.vorn").write_bytes(demo.read_bytes())
    monkeypatch.chdir(tmp_path)
    with di.open("own.vorn", "r+") as project:
        project["states48"].name = "renamed"
        monkeypatch.chdir("elsewhere")
        project.save()
    assert os.listdir() == []
    monkeypatch.chdir(tmp_path)
    with di.open("own.vorn") as project:
        assert list(project) == ["renamed"]
        monkeypatch.chdir("elsewhere")
        with pytest.raises(ValueError, match="open for reading"):
            project.save("../own.vorn")


def test_names_beyond_latin(demo, tmp_path):
    path = tmp_path / "\u6771\u4eac.vorn"
    code = ("import datainterface as di\n"
            f"with di.open({str(demo)!r}) as project:\n"
            "    project['states48'].name = '\u017elut\u00fd \u6771\u4eac \U0001f5fa'\n"
            f"    project.save({str(path)!r})\n")
    done = in_new_process(code, LC_ALL="C")
    assert done.stderr == ""
    with di.open(path) as project:
        assert list(project) == ["\u017elut\u00fd \u6771\u4eac \U0001f5fa"]


def test_one_project_at_a_time(project, demo):
    with pytest.raises(ValueError, match=f"{demo.name} is open"):
        di.open(demo)
    with pytest.raises(ValueError, match="one project"):
        di.new()
    project.close()
    di.open(demo).close()


def test_a_project_that_nobody_holds_is_closed(demo):
    di.open(demo)
    with di.open(demo) as again:
        income = again["states48"]["income"]
    del again
    with pytest.raises(ValueError, match="closed"):
        income.at(1929)


def test_closed_projects(project, states, income):
    queen = states.weights("queen", at=1929)
    gone = states.new_dataset("gone <b>")
    states.remove(gone)
    assert "no longer" in repr(gone) and "&lt;VectorDataset" in gone._repr_html_()
    parts = [states, income, states.at(1929), states.weight_sets["queen"]]
    project.close()
    project.close()
    assert all("is closed" in repr(part) for part in parts)
    assert all("is closed" in part._repr_html_() for part in parts[:3])
    for use in (lambda: project["states48"], lambda: list(project), lambda: states.count,
                lambda: income.values(1929), lambda: project.save("x.vorn"),
                lambda: di.moran(income, queen, permutations=0), lambda: states["income"]):
        with pytest.raises(ValueError, match="closed"):
            use()
    assert "closed" in repr(project) and repr(queen) == (
        "<SpatialWeights queen at 1929-01-01: 48 objects, 214 links>")


def test_unknown_names(project, states, income):
    with pytest.raises(KeyError, match="no geography county; there are: states48") as raised:
        project["county"]
    assert not str(raised.value).startswith("'")
    for use, text in ((lambda: states["incme"], "income"), (lambda: states.weights("rook"), "queen"),
                      (lambda: states.find("Ohi"), "Ohi")):
        with pytest.raises(KeyError, match=text):
            use()
    for megabytes in (0, -1, 2001):
        with pytest.raises(ValueError, match="1 to 2000"):
            di.new(cache=megabytes)
    assert "income" in states and "incme" not in states and states.find("Ohio") == 39


def test_pickling_is_refused(project, states, income):
    for part in (project, states, income, states.at(1929), states.weight_sets["queen"]):
        for use in (pickle.dumps, copy.copy, copy.deepcopy):
            with pytest.raises(TypeError, match="path of the project"):
                use(part)
    queen = pickle.loads(pickle.dumps(states.weights("queen", at=1929)))
    assert queen.nnz == 214 and list(queen.keys) == list(states.object_keys)


def test_saving(demo, tmp_path):
    before = demo.read_bytes()
    target = tmp_path / "copy.vorn"
    with di.open(demo) as project:
        with pytest.raises(ValueError, match="for reading"):
            project.save()
        with pytest.raises(ValueError, match="for reading"):
            project.save(os.path.relpath(demo))
        project["states48"].new_dataset("rate")
        project.save(target)
    assert demo.read_bytes() == before
    with di.open(target, mode="r+") as project:
        assert "rate" in project["states48"]
        project["states48"].remove("rate")
        with pytest.raises(OSError, match="nowhere"):
            project.save(tmp_path / "nowhere" / "x.vorn")
        target.write_bytes(target.read_bytes() + b"x")
        with pytest.raises(OSError, match="another program"):
            project.save()
        project.save(tmp_path / "own.vorn")
    with di.open(tmp_path / "own.vorn") as project:
        assert "rate" not in project["states48"]


def test_a_reserved_file(demo, tmp_path):
    path = tmp_path / "reserved.vorn"
    path.write_bytes(demo.read_bytes())
    with di.open(path, mode="r+"):
        done = in_new_process(f"import datainterface as di\ndi.open({str(path)!r}, mode='r+')")
        assert "OSError" in done.stderr and "reserved.vorn" in done.stderr
        read = in_new_process(f"import datainterface as di\nprint(list(di.open({str(path)!r})))")
        assert read.stdout == "['states48']\n"


def test_progress_reports_and_cancels(states, income):
    seen = []
    di.moran(income, "queen", permutations=99, seed=1,
             progress=lambda percent, text: seen.append(percent))
    assert len(seen) > 10 and set(seen) <= set(range(101)) and max(seen) >= 90
    with pytest.raises(KeyboardInterrupt):
        di.moran(income, "queen", permutations=99, progress=lambda percent, text: percent < 50)
    with pytest.raises(ZeroDivisionError):
        di.moran(income, "queen", permutations=99, progress=lambda percent, text: 1 / 0)
    with pytest.raises(RuntimeError, match="a call is running"):
        di.moran(income, "queen", permutations=99, progress=lambda percent, text: income.values())
    with pytest.raises(TypeError, match="progress"):
        di.moran(income, "queen", progress=3)
    assert income.values(1929)[0] == 741


def test_tqdm_works(income):
    tqdm = pytest.importorskip("tqdm").tqdm
    made = []

    class Silent(tqdm):
        def __init__(self, **options):
            super().__init__(disable=False, file=open(os.devnull, "w"), **options)
            made.append(self)

    di.moran(income, "queen", permutations=99, progress=Silent)
    assert [bar.n for bar in made] == [100]


def test_ctrl_c_cancels(demo):
    code = ("import datainterface as di, sys\n"
            f"with di.open({str(demo)!r}) as project:\n"
            "    income = project['states48']['income']\n"
            "    print('begun', flush=True)\n"
            "    try:\n"
            "        di.moran(income, 'queen', permutations=1000000, seed=1)\n"
            "    except KeyboardInterrupt:\n"
            "        print(income.values(1929)[0])\n")
    child = subprocess.Popen([sys.executable, "-c", code], stdout=subprocess.PIPE, text=True)
    assert child.stdout.readline() == "begun\n"
    time.sleep(0.3)
    child.send_signal(signal.SIGINT)
    rest, _ = child.communicate(timeout=120)
    assert (rest, child.returncode) == ("741\n", 0)


def test_threads_take_turns(income):
    expected = income.values(1929)
    found = []

    def read():
        for _ in range(50):
            found.append(np.array_equal(income.values(1929), expected))

    threads = [threading.Thread(target=read) for _ in range(4)]
    for thread in threads:
        thread.start()
    di.moran(income, "queen", permutations=999, seed=1, progress=lambda percent, text: None)
    for thread in threads:
        thread.join()
    assert found == [True] * 200


def test_a_forked_process_is_refused(project, income):
    child = os.fork()
    if child == 0:
        for call in (lambda: income.values(1929), project.close, lambda: di.open(project.path)):
            try:
                call()
            except ValueError as error:
                if "forked, which can use no project" in str(error):
                    continue
            os._exit(1)
        os._exit(0)
    assert os.waitstatus_to_exitcode(os.waitpid(child, 0)[1]) == 0
    assert income.values(1929)[0] == 741


def test_notes_and_warnings(empty, caplog):
    frame = geopandas.GeoDataFrame({"id": [1, 2], "geometry": [shapely.geometry.box(0, 0, 1, 1), None]},
                                   crs='ENGCRS["site", EDATUM["corner"], CS[Cartesian, 2], '
                                       'AXIS["x", east], AXIS["y", north], LENGTHUNIT["metre", 1]]')
    with caplog.at_level(logging.INFO, "datainterface"), pytest.warns(di.DataInterfaceWarning,
                                                                      match="coordinate system"):
        assert di.from_geopandas(frame, key="id").crs is None
    assert "1 object without a shape, existing at no time: 2" in caplog.text


def test_nouns_tell_what_they_are(project, states, income):
    assert repr(states).startswith("<VectorGeography states48: 48 polygons")
    assert repr(income) == "<VectorDataset income of states48: integer, 81 times>"
    for noun in (project, states, income, states.at("1850-12-31")):
        page = noun._repr_html_()
        assert "states48" in page and "\n" not in page
    assert states._repr_html_().count("<path") == 48
    nothing = xarray.DataArray(np.full((2, 2), np.nan), dims=("y", "x"), name="nothing")
    assert "<td>none</td>" in di.from_xarray(nothing)._repr_html_()
    assert states.at("1850-12-31")._repr_html_().count("<path") == 31
    assert meridor("info", project.path)["geographies"][0]["objects"] == states.count
