#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Sourced by run.sh, test.sh and check.sh: installs the Debian packages that are missing, with those that the caller
# names in check_packages, and sets up the environment of the build.
# shellcheck shell=bash

packages=(g++ cmake ninja-build ccache pkg-config binutils
    qtbase5-dev libgeos-dev libshp-dev libdeflate-dev libisal-dev libblas-dev liblapack-dev libopenblas-dev
    libgdal-dev libgeographiclib-dev libcli11-dev libqwt-qt5-dev libqt5svg5-dev libeigen3-dev
    node-d3 fonts-dejavu-core "${check_packages[@]}")

install_missing() {
    local missing=() package
    for package in "${packages[@]}"; do
        [ "$(dpkg-query -W -f='${db:Status-Abbrev}' "$package" 2>/dev/null | cut -c1-2)" = ii ] || missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || { echo "Please install: ${missing[*]}" >&2; exit 1; }
        as_root=(sudo)
    fi
    echo "Installing ${#missing[@]} packages: ${missing[*]}" >&2
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

install_missing
jobs=$(nproc)
# Qt warns about a missing run-time directory in bare containers; windows are never needed here.
runtime_dir=${XDG_RUNTIME_DIR:-$PWD/build/runtime}
mkdir -p "$runtime_dir" && chmod 700 "$runtime_dir" 2>/dev/null
export XDG_RUNTIME_DIR=$runtime_dir QT_QPA_PLATFORM=${QT_QPA_PLATFORM:-offscreen}

# build PRESET TARGET [cmake option...]: configures when nothing is configured yet or an option has another value, and
# builds the target. Says what there is to do, and how long it took.
build() {
    local preset=$1 target=$2 tree=build/$1 begun=$SECONDS option steps
    shift 2
    local configure=()
    for option in "$@"; do
        grep -qF -- "$(sed 's/^-D//; s/=/:BOOL=/' <<<"$option")" "$tree/CMakeCache.txt" 2>/dev/null || configure=("$@")
    done
    if [ ! -f "$tree/build.ninja" ] || [ ${#configure[@]} -gt 0 ]; then
        cmake --preset "$preset" "$@" >"$tree.log" 2>&1 || { cat "$tree.log" >&2; exit 1; }
    fi
    steps=$(ninja -C "$tree" -n "$target" | sed -n 's/^\[[0-9]*\/\([0-9]*\)\].*/\1/p' | tail -n 1)
    [ -n "$steps" ] || return 0
    echo "Building $target: $steps steps on $jobs processors" >&2
    cmake --build "$tree" --target "$target" -j"$jobs" >"$tree.log" 2>&1 || { cat "$tree.log" >&2; exit 1; }
    echo "Built in $((SECONDS - begun)) s" >&2
}
mkdir -p build
