#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds Debian packages of everything into build/packages, checks them with lintian, and prints
# their names and sizes. With --test they are installed into an empty root and tried there (tests/packages/packages.sh).
# usage: scripts/package.sh [--test]
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
case "${1:-}" in '' | --test) ;; *) echo "usage: scripts/package.sh [--test]" >&2; exit 2 ;; esac
# shellcheck disable=SC2034  # prepare.sh reads it.
check_packages=(dpkg-dev file lintian doxygen pybind11-dev python3-dev python3-numpy python3-sphinx)
# shellcheck disable=SC2034
[ -z "${1:-}" ] || check_packages+=(fakeroot strace desktop-file-utils appstream shared-mime-info tzdata
    python3-pytest python3-numpy python3-pandas python3-geopandas python3-xarray python3-cftime python3-scipy python3-libpysal
    python3-tqdm python3-distributed mypy)
. scripts/prepare.sh

# The dates in the packages are those of the sources, so the same sources give the same packages.
SOURCE_DATE_EPOCH=$(git log -1 --format=%ct 2>/dev/null || stat -c %Y CHANGELOG.md)
export SOURCE_DATE_EPOCH
cmake --preset package >build/package.log 2>&1 || { cat build/package.log >&2; exit 1; }
build package all
cmake --build build/package --target reference reference-python >build/package.log 2>&1 || { cat build/package.log >&2; exit 1; }

rm -rf build/packages build/package/_CPack_Packages build/package/*.deb
mkdir -p build/packages
(cd build/package && cpack --config CPackConfig.cmake) >build/package.log 2>&1 || { cat build/package.log >&2; exit 1; }
mv build/package/*.deb build/packages
stat --printf '%n %s bytes\n' build/packages/*.deb

# The first version of a package in Debian's archive closes a report that asks for it; these packages are not for the archive.
lintian --fail-on error,warning --suppress-tags initial-upload-closes-no-bugs build/packages/*.deb
[ -z "${1:-}" ] || exec tests/packages/packages.sh build/packages
