# SPDX-License-Identifier: MIT
# Doxygen's input filter. A header comes out with its first comment as that of the file, its declarations in the group that
# the table of README.md puts the header into, and names between backticks as code; no line moves. The main page comes out
# with the definitions of the groups, in the order of the table. A header that is in no row has an unknown command,
# which Doxygen reports with the name of the header.
# usage: awk -f group.awk README.md FILE
function identifier(title) { gsub(/[^A-Za-z]+/, "_", title); return title }
function code(line,    text) {
    while (match(line, /`[^`]+`/)) {
        text = substr(line, RSTART + 1, RLENGTH - 2)
        gsub(/&/, "\\&amp;", text); gsub(/</, "\\&lt;", text); gsub(/>/, "\\&gt;", text)
        line = substr(line, 1, RSTART - 1) "<code>" text "</code>" substr(line, RSTART + RLENGTH)
    }
    return line
}
FNR == NR {
    if (!/^\| .* \| `/) next
    split($0, cells, / *\| */)
    groups++
    title[groups] = cells[2]; content[groups] = cells[3]
    count = split(cells[4], names, /[` ]+/)
    for (i = 1; i <= count; i++) if (names[i] != "") group[names[i]] = cells[2]
    next
}
FNR == 1 {
    n = split(FILENAME, parts, "/")
    name = parts[n]
    isHeader = sub(/\.h$/, "", name)
    if (parts[n - 1] == "fennimark") name = "fennimark/" name
    if (isHeader) { print "/// @file"; next }
}
/^#pragma once/ {
    if (name in group) print "/** @addtogroup " identifier(group[name]) " */ /** @{ */"
    else print "/** @in_no_row_of_docs_reference_README */"
    next
}
# Code spans that a line breaks stay as they are.
/^ *\/\/\/|\/\/\/</ && gsub(/`/, "`") % 2 == 0 { print code($0); next }
{ print }
END {
    if (!isHeader)
        for (i = 1; i <= groups; i++)
            print "/** @defgroup " identifier(title[i]) " " title[i] "\n" toupper(substr(content[i], 1, 1)) substr(content[i], 2) ". */"
    else if (name in group)
        print "/** @} */"
}
