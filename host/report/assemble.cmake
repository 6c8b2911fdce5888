# SPDX-License-Identifier: MIT
# Puts the page together: cmake -DTEMPLATE= -DSTYLE= -DLICENSE= -DD3= -DMODULES= -DOUTPUT= -P assemble.cmake
# The modules become one: imports and the word export go, since a file without an address has nothing to import from.
# Names at the top level are therefore unique among all modules.
set(script "")
foreach(module IN LISTS MODULES)
    file(READ ${module} text)
    string(REGEX REPLACE "(^|\n)import [^;]*;" "\\1" text "${text}")
    string(REGEX REPLACE "(^|\n)export " "\\1" text "${text}")
    string(APPEND script "${text}\n")
endforeach()
file(READ ${TEMPLATE} page)
file(READ ${STYLE} style)
file(READ ${LICENSE} license)
file(READ ${D3} d3)
foreach(part style license d3 script)
    string(REPLACE "@PAGE_${part}@" "${${part}}" page "${page}")
endforeach()
file(WRITE ${OUTPUT} "${page}")
