#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds, and runs all tests. Arguments go to ctest: ./test.sh -R Time
set -euo pipefail
cd "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
# Distributions are compared with Boost's, the report's page is tested in a browser, and times in zones whose clocks change.
# shellcheck disable=SC2034  # prepare.sh reads it.
check_packages=(libboost-dev tzdata chromium chromium-driver python3-selenium)
. scripts/prepare.sh
build release all -DBUILD_TESTING=ON
exec ctest --test-dir build/release --output-on-failure -j"$jobs" "$@"
