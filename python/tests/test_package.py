# SPDX-License-Identifier: MIT
"""The package as a whole: its types, its documentation, and the interpreter that it is built for."""

import ast
import inspect
import os
import pathlib
import re
import shutil
import subprocess
import sys

import pytest

import datainterface as di
from datainterface import _native, stats
from conftest import SAMPLES

SOURCES = pathlib.Path(os.environ.get("SOURCES", ""))
needs_sources = pytest.mark.skipif("SOURCES" not in os.environ, reason="of the source tree")
PACKAGE = pathlib.Path(di.__file__).parent


def test_the_types_of_the_extension_are_complete():
    stub = ast.parse((PACKAGE / "_native.pyi").read_text())
    typed = {node.name: len(node.args.args) for node in stub.body
             if isinstance(node, ast.FunctionDef)}
    held = {name: len(re.match(r"\w+\((.*)\) ->", function.__doc__)[1].split(": ")) - 1
            for name, function in vars(_native).items() if not name.startswith("_")}
    assert typed == held


@needs_sources
def test_the_types_of_the_package_are_its_own():
    pytest.importorskip("mypy")
    done = subprocess.run(
        [sys.executable, "-m", "mypy.stubtest", "datainterface",
         "--ignore-missing-stub", "--ignore-unused-allowlist", "--mypy-config-file", SOURCES / "python" / "pyproject.toml",
         "--allowlist", SOURCES / "python" / "tests" / "stubtest.txt"],
        capture_output=True, text=True, env={**os.environ, "MYPYPATH": str(PACKAGE.parent)})
    assert done.returncode == 0, done.stdout + done.stderr


@needs_sources
def test_programs_of_users_have_types(tmp_path):
    """The documentation's examples under the strict rules, of which none lacks a type."""
    pytest.importorskip("mypy")
    blocks = re.findall(r"```python\n(.*?)```", (SOURCES / "docs" / "python.md").read_text(), re.S)
    blocks.append("import datainterface as di\n"
                  "di.stats.normal_p([1.0]) + di.stats.fdr([0.1])\n"
                  "def show(data: di.GridDataset) -> str: return data._repr_html_()\n"
                  "def of(data: di.GridDataset) -> None:\n"
                  "    di.dask.map_times(lambda each, time: each.classes(5, at=time), data)\n"
                  "    di.dask.array(data, rows=5), di.dask.moran(data, \"queen\", seed=1)\n")
    for number, block in enumerate(blocks):
        (tmp_path / f"example{number}.py").write_text(block)
    modules = ["datainterface", "datainterface.dask", "datainterface.stats",
               *(path.stem for path in tmp_path.iterdir())]
    done = subprocess.run(  # types of other packages take long to read
        [sys.executable, "-m", "mypy", "--strict", "--follow-imports=skip", "--ignore-missing-imports",
         "--cache-dir=/dev/null", *(word for module in modules for word in ("-m", module))],
        cwd=tmp_path, capture_output=True, text=True,
        env={**os.environ, "MYPYPATH": os.pathsep.join([str(PACKAGE.parent), str(tmp_path)])})
    assert done.returncode == 0, done.stdout + done.stderr


@needs_sources
def test_the_version_is_that_of_the_project():
    told = re.search(r"project\(DataInterface VERSION (\S+)", (SOURCES / "CMakeLists.txt").read_text())
    assert di.__version__ == told[1]


def public(thing):
    return [(name, getattr(thing, name)) for name in dir(thing) if not name.startswith("_")]


def test_everything_is_documented():
    nouns = [(name, getattr(di, name)) for name in di.__all__]
    nouns += [(name, getattr(stats, name)) for name in stats.__all__]
    for name, noun in list(nouns):
        if inspect.isclass(noun) and not issubclass(noun, tuple):
            nouns += [(f"{name}.{part}", held) for part, held in public(noun)
                      if callable(held) or isinstance(held, property)]
    assert [name for name, noun in nouns if not inspect.getdoc(noun)] == []


@needs_sources
@pytest.mark.parametrize("number", range(4))
def test_the_examples_of_the_documentation_run(number, demo, tmp_path):
    blocks = re.findall(r"```python\n(.*?)```", (SOURCES / "docs" / "python.md").read_text(), re.S)
    assert len(blocks) == 4
    shutil.copy(demo, tmp_path / "income.vorn")
    for sample in ("wells/wells.csv", "carolina_climate/pr_1999.tif", "nc_sids/nc_counties.geojson"):
        shutil.copy(SAMPLES / sample, tmp_path)
    done = subprocess.run([sys.executable, "-W", "ignore", "-c", blocks[number]], cwd=tmp_path, capture_output=True,
                          text=True)
    assert (done.returncode, done.stderr) == (0, "")


@needs_sources
@pytest.mark.skipif(not os.path.exists("/usr/bin/python3"), reason="there is no such interpreter")
def test_another_interpreter_earlier_in_the_path_is_not_taken(tmp_path):
    fake = tmp_path / "bin" / "python3"
    fake.parent.mkdir()
    fake.write_text("#!/bin/sh\necho Python 3.99.0\n")
    fake.chmod(0o755)
    (tmp_path / "CMakeLists.txt").write_text(
        "cmake_minimum_required(VERSION 3.21)\nproject(choice LANGUAGES CXX)\n"
        f'include("{SOURCES}/cmake/SystemPython.cmake")\n'
        'message(STATUS "chosen: ${Python3_EXECUTABLE}")\n')
    done = subprocess.run(["cmake", "-G", "Ninja", "-S", tmp_path, "-B", tmp_path / "build"],
                          capture_output=True, text=True,
                          env={**os.environ, "PATH": f"{fake.parent}:{os.environ['PATH']}"})
    assert "chosen: /usr/bin/python3\n" in done.stdout, done.stderr
