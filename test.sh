#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds, and runs all tests. Arguments go to ctest: ./test.sh -R Time
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
# Distributions are compared with Boost's, the report's page is tested in a browser, times in zones whose clocks change,
# and the Python package with the libraries that it converts to.
# shellcheck disable=SC2034  # prepare.sh reads it.
check_packages=(libboost-dev tzdata chromium chromium-driver python3-selenium
    python3-dev pybind11-dev python3-pytest python3-numpy python3-pandas python3-geopandas python3-xarray python3-cftime
    python3-scipy python3-libpysal python3-tqdm python3-distributed mypy)
. scripts/prepare.sh
build release all -DBUILD_TESTING=ON -DBUILD_PYTHON=ON
exec ctest --test-dir build/release --output-on-failure -j"$jobs" "$@"
