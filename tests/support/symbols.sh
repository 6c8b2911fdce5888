#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Holds what a library exports against a committed list, so that nothing is exported by accident and nothing that hosts
# link against is lost. With --update the list is written anew.
# usage: symbols.sh LIBRARY LIST [--update]
set -euo pipefail
library=$1 list=$2
# Listed are functions and data, the types that hosts derive from, cast to or catch (their type information), and the
# containers, whose code is instantiated here. Other weak symbols are inline code of Qt and the standard library: what
# stands among them depends on the compiler, as do functions that it makes of lambdas.
exported=$(nm -DC --defined-only "$library" | sed -E 's/^[0-9a-f]* //' | awk '
    $1 ~ /^[TBDR]$/ && $2 !~ /^(_init|_fini|_edata|_end|__bss_start)$/ { print substr($0, 3); next }
    $1 == "V" && /typeinfo for / && !/ (Q[A-Z]|Qt|std|__|QtPrivate)/ { print substr($0, 3); next }
    $1 == "W" && /^W (Time(Slice|Series)Data|PagedContainer)</ && !/::Content|::_FUN/ { print substr($0, 3) }' | LC_ALL=C sort -u)
if [ "${3:-}" = --update ]; then
    printf '%s\n' "$exported" >"$list"
    exit
fi
if ! diff -u "$list" <(printf '%s\n' "$exported"); then
    echo "the exported symbols differ from $list (- listed, + found)"
    exit 1
fi
echo "$(wc -l <"$list") symbols, as listed"
