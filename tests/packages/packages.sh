#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Tries the Debian packages of a directory: dpkg installs them into an empty root, and the demo, a foreign project, projects
# of every age and the tests of the Python package run on that root alone. Then they are removed, and nothing may be left.
# Needs what the packages depend on, and either root or fakeroot. scripts/package.sh --test makes the packages first.
# usage: packages.sh DIRECTORY
set -euo pipefail
packages=$(readlink -f "$1")
source=$(readlink -f "$(dirname "$0")/../..")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root
failures=0
fail() { echo "$*" >&2; failures=$((failures + 1)); }

# Only the packages' own files and those of the system can be found.
triplet=$(dpkg-architecture -qDEB_HOST_MULTIARCH)
libraries=$root/usr/lib/$triplet
mkdir -p "$work/home" "$work/runtime"
chmod 700 "$work/runtime"
alone() {
    env -i HOME="$work/home" XDG_RUNTIME_DIR="$work/runtime" QT_QPA_PLATFORM=offscreen PATH="$root/usr/bin:/usr/bin:/bin" \
        LD_LIBRARY_PATH="$libraries" CMAKE_PREFIX_PATH="$root/usr" PKG_CONFIG_PATH="$libraries/pkgconfig" \
        PYTHONPATH="$root/usr/lib/python3/dist-packages" PYTHONDONTWRITEBYTECODE=1 "$@"
}
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(fakeroot)
in_root() {
    "${as_root[@]}" dpkg --root="$root" --force-depends,not-root,bad-path,script-chrootless "$@" >"$work/log" 2>&1 \
        || { cat "$work/log"; exit 1; }
}

mkdir -p "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/info"
touch "$root/var/lib/dpkg/status"
in_root --install "$packages"/*.deb
in_root --install "$packages"/*.deb # an upgrade by the same version
mapfile -t names < <(dpkg --root="$root" --get-selections | cut -f1)
echo "installed: ${names[*]}"
has() { [ -e "$root/usr/share/doc/$1" ]; }

# What is inside: no path of the sources or of the build, no search path of its own, every package with its documents.
inside=$(grep -rlF -e "$source" "$root/usr" || true)
[ -z "$inside" ] || fail "names $source: $inside"
while read -r file; do
    ! readelf -d "$file" 2>/dev/null | grep -qE 'R(UN)?PATH' || fail "$file has a search path"
done < <(find "$root/usr" -type f \( -name '*.so*' -o -path '*/bin/*' \))
for name in "${names[@]%%:*}"; do
    for file in copyright changelog.gz changelog.Debian.gz; do
        [ -s "$root/usr/share/doc/$name/$file" ] || fail "$name has no $file"
    done
done
version=$(dpkg-deb -f "$packages"/meridor_*.deb Version)
IFS=. read -r major minor build <<<"${version%-*}"
told=$(alone meridor --version)
[ "$told" = "$(printf 'Meridor %d.%02d.%03d' "$major" "$minor" "$build")" ] || fail "meridor $version calls itself $told"

# The demo, and the files that it opens.
alone strace -f -qq -e trace=%file -o "$work/trace" meridor demo "$work/demo" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
[ -s "$work/demo/report.html" ] || fail "the demo made no report"
! grep -F -m 3 "$source" "$work/trace" || fail "the demo opens files of $source"
grep -q "\"$libraries/libMeridorCore.so" "$work/trace" || fail "the demo did not load the library of the packages"
echo "demo: $(find "$work/demo" -type f | wc -l) files"

# A foreign project, by both packages of it, and the writer of old projects.
cp -r "$source/tests/consumer" "$source/tests/support" "$work"
cat >"$work/consumer/oldProjects.cmake" <<'END'
add_executable(old_projects ../support/oldProject.cpp ../support/oldValues.cpp writeOldProjects.cpp)
target_include_directories(old_projects PRIVATE ..)
target_link_libraries(old_projects PRIVATE DataInterface::DataInterface)
END
cp "$source/tests/packages/writeOldProjects.cpp" "$work/consumer"
echo 'include(oldProjects.cmake)' >>"$work/consumer/CMakeLists.txt"
{ alone cmake -S "$work/consumer" -B "$work/foreign" -DWITH_CORE=1 && alone cmake --build "$work/foreign" -j"$(nproc)"; } \
    >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }
echo "consumer: $(alone "$work/foreign/consumer")"
echo "core: $(alone "$work/foreign/core")"
# shellcheck disable=SC2016  # The inner shell expands it.
alone sh -c 'g++ -std=c++17 -fPIC "$1" $(pkg-config --cflags --libs datainterface) -L"$2" -o "$3"' sh \
    "$work/consumer/main.cpp" "$libraries" "$work/by-pkg-config"
echo "pkg-config: $(alone "$work/by-pkg-config")"

# Projects of every age open as they did, and say the same when they are written anew.
mkdir "$work/old"
(cd "$work/old" && alone "$work/foreign/old_projects")
geographies() { # what a project says of its geographies
    alone meridor info "$1" --json --quiet | python3 -c 'import json, sys
geographies = json.load(sys.stdin)["geographies"]
print(json.dumps(geographies, indent=1) if geographies else sys.exit("no geographies"))'
}
for project in "$work"/old/*.vorn; do
    alone meridor upgrade "$project" "$work/new.vorn" --overwrite >"$work/log" 2>&1 || fail "$project: $(cat "$work/log")"
    diff <(geographies "$project") <(geographies "$work/new.vorn") || fail "$project differs from what is written anew"
done
echo "old projects: $(find "$work/old" -type f | wc -l) ages"

if has datainterface-doc; then
    [ -s "$root/usr/share/doc/datainterface-doc/html/index.html" ] || fail "the documentation has no reference"
    [ -s "$root/usr/share/doc/datainterface-doc/meridor.md" ] || fail "the documentation has no pages"
fi

if has meridor-desk; then
    desktop-file-validate "$root/usr/share/applications/meridor-desk.desktop" || fail "the desktop file is wrong"
    appstreamcli validate --no-net "$root/usr/share/metainfo/meridor-desk.metainfo.xml" >"$work/log" \
        || fail "the AppStream data are wrong: $(cat "$work/log")"
    cp -r "$root/usr/share/mime" "$work"
    update-mime-database -V "$work/mime" >"$work/log" 2>&1 || fail "the MIME type is wrong: $(cat "$work/log")"
    alone meridor-desk "$work/demo/demo.vorn" --picture "$work/desk.png" >"$work/log" 2>&1 \
        || fail "meridor-desk: $(cat "$work/log")"
    [ -s "$work/desk.png" ] || fail "meridor-desk made no picture"
    [ -s "$root/usr/share/meridor/help/meridor.md" ] || fail "meridor-desk has no help"
fi

if has python3-datainterface; then
    alone MERIDOR="$root/usr/bin/meridor" SAMPLES="$root/usr/share/meridor/samples" SOURCES="$source" TMPDIR="$work" \
        /usr/bin/python3 -m pytest -q -p no:cacheprovider --rootdir="$work" "$source/python/tests" \
        || fail "the tests of the Python package failed"
fi

# Removing leaves nothing behind.
in_root --purge "${names[@]}"
left=$(find "$root" -mindepth 1 ! -path "$root/var*")
[ -z "$left" ] || fail "left behind: $left"

# The same in a copy of this system, where dpkg checks the dependencies and the triggers and scripts of packages run. It takes
# root and a kernel that allows overlays in a mount namespace.
# shellcheck disable=SC2016  # The inner shells expand the variables.
copy() { # STEPS: a script in a changed copy of the system; the sources are out of its sight
    unshare --mount bash -euo pipefail -c 'mount -t tmpfs none "$1"; mkdir "$1/changed" "$1/work" "$1/system"
        mount -t overlay overlay -o "lowerdir=/,upperdir=$1/changed,workdir=$1/work" "$1/system"
        mkdir "$1/system/packages"; mount --bind "$2" "$1/system/packages"; mount -t tmpfs none "$1/system$3"
        chroot "$1/system" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/nowhere QT_QPA_PLATFORM=offscreen bash -euo pipefail -c "$4"
        cd "$1/changed"; find . -ipath "*datainterface*" -o -ipath "*meridor*" -o -ipath "*fennimark*"' \
        copy "$work/copy" "$packages" "$source" "$1" 2>&1
}
mkdir "$work/copy"
if copy true >/dev/null; then
    # shellcheck disable=SC2016
    left=$(copy 'exec >/dev/null; dpkg --install /packages/*.deb
        meridor demo /packages-demo
        [ ! -e /usr/share/doc/python3-datainterface ] || /usr/bin/python3 -c "import datainterface"
        [ ! -e /usr/share/mime/packages/meridor-vorn.xml ] || grep -q vorn /usr/share/mime/globs2
        dpkg --purge $(for package in /packages/*.deb; do dpkg-deb --field "$package" Package; done)
        rm -r /packages-demo') || fail "in a copy of the system: $left"
    [ -z "$left" ] || fail "left behind in a copy of the system: $left"
    echo "installed and removed in a copy of the system"
else
    echo "no copy of the system: it takes root and overlays"
fi

[ "$failures" -eq 0 ] || { echo "$failures faults" >&2; exit 1; }
echo "The packages work alone."
