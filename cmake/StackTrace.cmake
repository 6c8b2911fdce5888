# SPDX-License-Identifier: MIT
# StackTrace: what the stack text of a failure is made with. libbacktrace, which comes with the compiler, names every
# function and line; without it the dynamic linker names the exported functions.
include(CheckCXXSourceCompiles)

add_library(StackTrace INTERFACE)
target_link_libraries(StackTrace INTERFACE ${CMAKE_DL_LIBS})
set(CMAKE_REQUIRED_LIBRARIES backtrace)
set(CMAKE_REQUIRED_FLAGS -fPIC)
set(CMAKE_REQUIRED_LINK_OPTIONS -shared)
check_cxx_source_compiles(
    "#include <backtrace.h>\nvoid *state() { return backtrace_create_state(nullptr, 1, nullptr, nullptr); }"
    DATAINTERFACE_HAVE_LIBBACKTRACE)
unset(CMAKE_REQUIRED_LIBRARIES)
unset(CMAKE_REQUIRED_FLAGS)
unset(CMAKE_REQUIRED_LINK_OPTIONS)
if(DATAINTERFACE_HAVE_LIBBACKTRACE)
    target_compile_definitions(StackTrace INTERFACE DATAINTERFACE_HAVE_LIBBACKTRACE)
    target_link_libraries(StackTrace INTERFACE backtrace)
    # Its names stay inside: a host may bring another version.
    target_link_options(StackTrace INTERFACE LINKER:--exclude-libs,libbacktrace.a)
endif()
