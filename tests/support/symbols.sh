#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Holds the functions and data that a library exports against a committed list, so that nothing is exported by accident
# and nothing that hosts link against is lost. With --update the list is written anew.
# usage: symbols.sh LIBRARY LIST [--update]
set -euo pipefail
library=$1 list=$2
# Inline and template code of Qt and the standard library stands in every library as weak symbols: not ours to list.
exported=$(nm -DC --defined-only "$library" | awk '$2 ~ /[TBDR]/ { $1 = ""; $2 = ""; sub(/^ +/, ""); print }' \
    | grep -vE '^(_init|_fini|_edata|_end|__bss_start)$' | LC_ALL=C sort -u)
if [ "${3:-}" = --update ]; then
    printf '%s\n' "$exported" >"$list"
    exit
fi
diff -u "$list" <(printf '%s\n' "$exported") \
    && echo "$(wc -l <"$list") symbols, as listed" || { echo "the exported symbols differ from $list (< listed, > found)"; exit 1; }
