#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds and runs the foreign project: against the build tree by the config package, against an install tree by the
# config package, also with a Clang whose default standard is an older one where there is such a compiler, and against
# the install tree by pkg-config. At the end the install tree is uninstalled, and nothing of it may be left.
# With WITH_CORE 1, a second program uses the library of the hosts in the same packages.
# usage: consumer.sh BUILD_DIR SOURCE_DIR CXX WITH_CORE
set -euo pipefail
build=$1 source=$2 cxx=$3 core=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

package() { # NAME PACKAGE_DIR COMPILER
    cmake -G Ninja -S "$source" -B "$work/$1" -DCMAKE_CXX_COMPILER="$3" -DDataInterface_DIR="$2" -DWITH_CORE="$core" >"$work/log" 2>&1 \
        && cmake --build "$work/$1" >>"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
    echo "$1: $("$work/$1/consumer")"
    [ "$core" = 0 ] || echo "$1, core: $("$work/$1/core")"
}
package build-tree "$build" "$cxx"

cmake --install "$build" --prefix "$work/prefix" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
config=$(dirname "$(find "$work/prefix" -name DataInterfaceConfig.cmake)")
package install-tree "$config" "$cxx"
clang=$(command -v clang++-14 || true)
[ -z "$clang" ] || package install-tree-clang "$config" "$clang"

PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name datainterface.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046
"$cxx" -std=c++17 -fPIC "$source/main.cpp" $(pkg-config --cflags --libs datainterface) -o "$work/by-pkg-config"
LD_LIBRARY_PATH=$(pkg-config --variable=libdir datainterface)
export LD_LIBRARY_PATH
echo "pkg-config: $("$work/by-pkg-config")"

cmake --build "$build" --target uninstall >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
left=$(find "$work/prefix" ! -type d -o -iname '*datainterface*' -o -iname '*fennimark*' -o -iname '*meridor*')
[ -z "$left" ] || { echo "left by uninstall: $left"; exit 1; }
