#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds the program alone, and tells a story on its samples: states whose borders change, their
# incomes, rain over counties, levels between wells. The results stand in ./demo (or the directory given); demo/report.html shows them all.
set -euo pipefail
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
target=$(readlink -m "${1:-$here/demo}")
cd "$here"
. scripts/prepare.sh
configured=()
[ -f build/release/CMakeCache.txt ] || configured=(-DBUILD_TESTING=OFF) # test.sh turns the tests on, and they stay
build release meridor "${configured[@]}"
exec "build/release/host/meridor" demo "$target" --overwrite
