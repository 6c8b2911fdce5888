#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Configures and builds the geometry library by itself, without precompiled headers, so that an include that only they
# provide is missed too.
# usage: alone.sh SOURCE BINARY COMPILER
set -euo pipefail
rm -rf "$2"
cmake -S "$1" -B "$2" -G Ninja -DCMAKE_CXX_COMPILER="$3" -DCMAKE_BUILD_TYPE=None -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON
cmake --build "$2" -j2
