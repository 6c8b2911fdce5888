#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds, and runs the main jobs on real data: per-capita income of 48 states over 81 years,
# and monthly grids of rain over counties.
# The results stand in ./demo (or the directory given).
set -euo pipefail
here=$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")
target=$(readlink -m "${1:-$here/demo}")
cd "$here"
. scripts/prepare.sh
build release
exec "build/release/host/meridor" demo "$target" --overwrite
