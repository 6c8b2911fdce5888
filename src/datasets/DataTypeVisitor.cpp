// SPDX-License-Identifier: MIT
#include "datainterface/DataTypeVisitor.h"
#include "Common/detail/failure.h"

void datainterface::raiseInvalidDataType(const char *file, int line)
{
    fail("Invalid data type", file, line);
}
