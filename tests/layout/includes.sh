#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Checks the include lines of sources and headers against the order of the folders: a folder includes itself and those
# before it. A public header of DataInterface belongs to the folder of the source that is named after it, or to the one
# listed here. Each foreign library is included in one folder only.
# usage: includes.sh [ROOT]
set -euo pipefail
cd "${1:-$(dirname "$0")/../..}"

# tree: its folders, lowest first. fennimark's public headers are value types and free to all of its folders.
orders='
fennimark/src: base shape object store file points geography
src: Common frame time numerics containers cells variograms datasets sources geography raster weights exchange project api
host/core: project formats grids import analysis geostatistics render plot report
host/desk: draw project models methods views dialogs window main.cpp
host: core cli desk
'
# What a folder may not include although it stands before it.
barred='
fennimark/src/points: shape object store file
host/core/render: import analysis geostatistics
host/desk: cli
'
# Public headers without a source of their name. A plain record belongs to the lowest folder that has what it holds.
rooms='
DataBlocks Common
DataInterface api
DataType Common
DatasetProps datasets
GeoProps time
HeldGrid cells
HostDialogs frame
MethodRecords frame
NonConVariogramModelManager variograms
OrderedDouble Common
PagedContainer containers
ProgressCallback Common
SpatialWeightSetProps time
StatisticsAPI numerics
TimeContainers containers
TimeFormat time
VORN_Object Common
WeightsAtT weights
datum Common
export Common
half Common
sharedDataPtr Common
vorn_diagonal_matrix numerics
vorn_error Common
'
# Includes of a later folder that are allowed, in sources only: an object calls its owner, or a geography its weight sets.
owners='
src/datasets/MDataset.cpp datainterface/MDataSource.h
src/datasets/MDataset.variograms.cpp datainterface/MDataSource.h
src/geography/MGeoData.cpp datainterface/AdjacencySet.h
src/variograms/VariogramModel.properties.cpp datainterface/MGeoData.h
'
# library header (a pattern) : the one place that includes it
foreign='
^geos_c\.h$ : ^fennimark/src/shape/overlay
^(gdal|ogr|cpl|proj)[a-z_]*\.h$ : ^host/core/formats/
^CLI/ : ^host/cli/
^qwt_ : ^host/(core/render/graph|desk/views/)
^(unsupported/)?Eigen/ : ^host/core/geostatistics/
^GeographicLib/ : ^host/core/analysis/distanceSets
^shapefil\.h$ : ^src/exchange/
^libdeflate\.h$ : ^src/Common/
^isa-l : ^src/Common/
'
public_rooms() {
    local source name
    for source in src/*/*.cpp; do
        name=${source##*/}
        [ -f "include/datainterface/${name%%.*}.h" ] && echo "${name%%.*} $(basename "$(dirname "$source")")"
    done
    printf '%s' "$rooms"
}

# shellcheck disable=SC2016  # The program is awk's.
grep -rnE '^[[:space:]]*#[[:space:]]*include[[:space:]]*["<]' fennimark/src include src host --include='*.h' --include='*.cpp' \
    | awk -v orders="$orders" -v barred="$barred" -v rooms="$(public_rooms)" -v owners="$owners" \
          -v foreign="$foreign" '
function fail(text) { print at ": " text; faults++ }
# The tree and the folder of a path: tree and folder are set, place is the folder`s number in the order, 0 for none.
function locate(path,    parts, n) {
    n = split(path, parts, "/")
    if (path ~ /^host\/(core|desk)\//) { tree = parts[1] "/" parts[2]; folder = parts[3] }
    else if (path ~ /^fennimark\/src\//) { tree = "fennimark/src"; folder = parts[3] }
    else if (path ~ /^include\//) { sub(/\.h$/, "", parts[3]); tree = "src"; folder = room[parts[3]] }
    else { tree = parts[1]; folder = parts[2] }
    return place[tree, folder]
}
BEGIN {
    count = split(orders, lines, "\n")
    for (i = 1; i <= count; i++) {
        if (split(lines[i], halves, ": ") < 2) continue
        n = split(halves[2], names, " ")
        for (k = 1; k <= n; k++) place[halves[1], names[k]] = k
    }
    count = split(barred, lines, "\n")
    for (i = 1; i <= count; i++) {
        if (split(lines[i], halves, ": ") < 2) continue
        n = split(halves[2], names, " ")
        for (k = 1; k <= n; k++) forbidden[halves[1], names[k]] = 1
    }
    count = split(rooms, lines, "\n")
    for (i = 1; i <= count; i++)
        if (split(lines[i], pair, " ") == 2 && (!(pair[1] in room) || place["src", pair[2]] < place["src", room[pair[1]]]))
            room[pair[1]] = pair[2]
    count = split(owners, lines, "\n")
    for (i = 1; i <= count; i++) if (lines[i] != "") allowed[lines[i]] = 1
    houses = 0
    count = split(foreign, lines, "\n")
    for (i = 1; i <= count; i++)
        if (split(lines[i], halves, " : ") == 2) { houses++; library[houses] = halves[1]; house[houses] = halves[2] }
}
{
    split($0, head, ":")
    file = head[1]; at = file ":" head[2]; read++
    match($0, /include[[:space:]]*["<][^">]*/)
    header = substr($0, RSTART, RLENGTH); sub(/include[[:space:]]*["<]/, "", header)

    for (i = 1; i <= houses; i++)
        if (header ~ library[i] && file !~ house[i]) fail(header " belongs to " substr(house[i], 2) " alone")

    mine = locate(file); myTree = tree; myFolder = folder
    if (!mine && file ~ /^include\//) { fail("the header belongs to no folder"); next }
    if (!mine && file ~ /\/.*\/.*\//) { fail("the folder " myFolder " stands in no order"); next }
    if (header ~ /^datainterface\//) {
        name = header; sub(/^datainterface\//, "", name); sub(/\.h$/, "", name)
        if (myTree != "src" || !(name in room)) next
        target = "src/" room[name] "/"
    } else if (myTree ~ /^host/)
        target = "host/" header
    else
        target = myTree "/" header
    other = locate(target)
    if (!other) next                                    # the system, a public header, another library
    if (tree != myTree) {                               # in the host: between core as a whole and the programs
        mine = place["host", myTree == "host" ? myFolder : substr(myTree, 6)]
        other = place["host", tree == "host" ? folder : substr(tree, 6)]
    }
    if (other > mine || forbidden[myTree "/" myFolder, folder]) {
        used[file " " header] = 1
        if (!((file " " header) in allowed)) fail(header " stands above " myFolder "/")
    }
}
END {
    for (entry in allowed)
        if (!(entry in used)) { print "no longer needed: " entry; faults++ }
    if (read < 1000) { print "only " read " include lines were read"; faults++ }
    if (faults) exit 1
    print read " include lines, all within the order of their folders"
}'
