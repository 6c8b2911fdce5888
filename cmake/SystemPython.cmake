# SPDX-License-Identifier: MIT
# Finds the interpreter of the system, since the packages of the distribution, such as NumPy, are made for it. Another one
# that comes earlier in the path is taken only where there is none, or if Python3_EXECUTABLE names it.
if(NOT Python3_EXECUTABLE AND EXISTS /usr/bin/python3)
    set(Python3_EXECUTABLE /usr/bin/python3 CACHE FILEPATH "The interpreter that the Python package is built for")
endif()
find_package(Python3 3.9 REQUIRED COMPONENTS Interpreter Development.Module)
