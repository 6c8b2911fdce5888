#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Checks what the tests do not: every step by its name, or the quick ones, or all of them. A step prints what it found,
# the later ones still run, and the exit status is 1 when any of them found something.
#
#   layout      include lines against the order of the folders
#   shell       shellcheck over the scripts
#   format      clang-format 14
#   headers     each private header compiles alone, without warnings (the public ones are part of every build)
#   plain       everything but the tests builds without precompiled headers, warnings as errors
#   cppcheck    static analysis, quick
#   doxygen     every exported name has its contract, and the docstrings of a built Python package make pages
#   tidy        clang-tidy, slow
#   sanitizers  the whole suite under the address and undefined-behaviour sanitizers, slow
#
# usage: scripts/check.sh quick | all | STEP...
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")/.."
check_packages=(libboost-dev python3 clang-format-14 clang-tidy-14 cppcheck shellcheck doxygen graphviz
    python3-sphinx)
. scripts/prepare.sh

quick=(layout shell format headers cppcheck doxygen)
all=("${quick[@]}" plain tidy sanitizers)
include_flags=(-Iinclude -Isrc -Ifennimark/include -Ifennimark/src -Ihost)

sources() { git ls-files -- "$@" | while read -r file; do [ ! -f "$file" ] || printf '%s\n' "$file"; done; }

# configured DIRECTORY [option...]: a build tree that lists its compile commands.
configured() {
    local tree=$1
    shift
    cmake -S . -B "$tree" -G Ninja -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "$@" >"$tree.log" 2>&1 \
        || { cat "$tree.log"; return 1; }
}

check_layout() { tests/layout/includes.sh; }

check_shell() {
    git grep -lE '^#!.*sh$' | xargs shellcheck --external-sources --exclude=SC1091,SC2015
}

check_format() { sources '*.h' '*.cpp' | xargs clang-format-14 --dry-run --Werror --ferror-limit=1; }

check_headers() {
    local flags
    # The file of Qwt for pkg-config asks for a module of Qt that is not used here.
    flags="$(pkg-config --cflags Qt5Core Qt5Gui Qt5Widgets Qt5Test gdal geos shapelib libdeflate) -isystem /usr/include/qwt"
    # shellcheck disable=SC2086  # The flags are words.
    sources 'src/*.h' 'fennimark/src/*.h' 'host/*.h' 'tests/*.h' | xargs -P "$jobs" -I{} \
        sh -c 'printf "#include \"%s\"\n" "{}" | g++ -std=c++17 -fPIC -fsyntax-only -Wall -Wextra -Werror -I. "$@" -x c++ - \
            || { echo "{} does not compile alone"; exit 1; }' headers "${include_flags[@]}" -Itests \
        -DQT_NO_KEYWORDS -DQT_USE_QSTRINGBUILDER $flags
}

check_plain() {
    # Optimization is off: the question is what is declared, and the release build has its own warnings.
    configured build/plain -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=OFF -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
        -DCMAKE_CXX_FLAGS="-Werror -O0 -g0" || return 1
    cmake --build build/plain -j"$jobs" -- -k 0 >build/plain.log 2>&1 || { grep -E 'error|FAILED' build/plain.log; return 1; }
}

check_cppcheck() {
    # Qt's own headers are not read: cppcheck has a library description of Qt.
    sources 'src/*.cpp' 'fennimark/src/*.cpp' 'host/*.cpp' | cppcheck --file-list=- -j"$jobs" --quiet --inline-suppr \
        --error-exitcode=1 --std=c++17 --library=qt --enable=warning,performance,portability \
        --suppressions-list=scripts/cppcheck.supp "${include_flags[@]}"
}

check_doxygen() {
    # Configured again: Doxygen may have been installed only now.
    cmake --preset release >build/doxygen.log 2>&1 || { cat build/doxygen.log; return 1; }
    local targets=(doxygen-check)
    ! grep -q BUILD_PYTHON:BOOL=ON build/release/CMakeCache.txt || targets+=(reference-python)
    cmake --build build/release --target "${targets[@]}" >build/doxygen.log 2>&1 || { cat build/doxygen.log; return 1; }
}

check_tidy() {
    configured build/plain -DCMAKE_BUILD_TYPE=Debug -DBUILD_TESTING=OFF -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
        -DCMAKE_CXX_FLAGS="-Werror -O0 -g0" || return 1
    # Headers that the build generates (moc, ui) must exist before they are included.
    cmake --build build/plain -j"$jobs" --target DataInterface_autogen DataInterfaceObjects_autogen >build/plain.log 2>&1 \
        || { cat build/plain.log; return 1; }
    sources 'src/*.cpp' 'fennimark/src/*.cpp' 'host/*.cpp' \
        | xargs -P "$jobs" -n 4 clang-tidy-14 -p build/plain --quiet --warnings-as-errors='*' 2>/dev/null
}

check_sanitizers() {
    build asan-ubsan all
    ctest --test-dir build/asan-ubsan --output-on-failure -j"$jobs"
}

case "${1:-}" in
    quick) steps=("${quick[@]}") ;;
    all) steps=("${all[@]}") ;;
    '') sed -n '3,/^set/{/^#/s/^# \{0,1\}//p}' "$0"; exit 2 ;;
    *) steps=("$@") ;;
esac
failed=()
for step in "${steps[@]}"; do
    declare -F "check_$step" >/dev/null || { echo "There is no step $step." >&2; exit 2; }
    echo "== $step" >&2
    begun=$SECONDS
    "check_$step" || failed+=("$step")
    echo "== $step took $((SECONDS - begun)) s" >&2
done
[ ${#failed[@]} -eq 0 ] || { echo "Found something: ${failed[*]}" >&2; exit 1; }
