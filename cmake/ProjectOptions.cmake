# SPDX-License-Identifier: MIT
# Compile options of every target of the project, as two interface targets: ProjectOptions (how) and ProjectWarnings.
add_library(ProjectOptions INTERFACE)
# Products and sums stay apart, so that results agree between machines with and without fused multiply-add.
target_compile_options(ProjectOptions INTERFACE -ffp-contract=off)
target_compile_definitions(ProjectOptions INTERFACE QT_NO_KEYWORDS QT_USE_QSTRINGBUILDER)
if(DATAINTERFACE_SANITIZE)
    target_compile_options(ProjectOptions INTERFACE -fsanitize=${DATAINTERFACE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    target_link_options(ProjectOptions INTERFACE -fsanitize=${DATAINTERFACE_SANITIZE})
endif()
if(DATAINTERFACE_COVERAGE)
    target_compile_options(ProjectOptions INTERFACE --coverage)
    target_link_options(ProjectOptions INTERFACE --coverage)
endif()

add_library(ProjectWarnings INTERFACE)
target_compile_options(ProjectWarnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND PROJECT_IS_TOP_LEVEL AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # Precompiled headers go through the cache only with this sloppiness.
    set(CMAKE_CXX_COMPILER_LAUNCHER
        ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
        ${CCACHE_PROGRAM})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(ProjectOptions INTERFACE -fpch-preprocess)
    endif()
endif()
