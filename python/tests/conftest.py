# SPDX-License-Identifier: MIT
"""The demo's project, made once, and the program to compare with."""

import json
import os
import pathlib
import subprocess

import pytest

import datainterface as di

PROGRAM = os.environ["MERIDOR"]
SAMPLES = pathlib.Path(os.environ["SAMPLES"])


def meridor(*arguments):
    """What the program prints with --json."""
    done = subprocess.run([PROGRAM, "--json", *map(str, arguments)], capture_output=True, text=True,
                          check=True)
    return json.loads(done.stdout)


@pytest.fixture(scope="session")
def demo(tmp_path_factory):
    """A project of states, incomes and weights, as the demo has it."""
    folder = tmp_path_factory.mktemp("demo")
    project = folder / "income.vorn"
    income = SAMPLES / "us_income"
    subprocess.run(
        [PROGRAM, "import", income / "states48.geojson", project, "--name", "states48", "--key",
         "fips", "--table", income / "income_1929_2009.csv", "--table", income / "admission.csv",
         "--series", "income=1929..2009", "--start", "admitted"], check=True, capture_output=True)
    subprocess.run([PROGRAM, "weights", "create", project, "queen"], check=True,
                   capture_output=True)
    return project


@pytest.fixture
def project(demo):
    with di.open(demo) as opened:
        yield opened


@pytest.fixture
def states(project):
    return project["states48"]


@pytest.fixture
def income(states):
    return states["income"]


@pytest.fixture
def empty():
    with di.new() as made:
        yield made
