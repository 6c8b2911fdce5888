// SPDX-License-Identifier: MIT
#include "cells/oldTypeCodes.h"

namespace datainterface {

namespace {

constexpr int kHasBitCodes = fileVersions::kGridsHaveTypeCodes;
constexpr int kHasTypeCodes = fileVersions::kNewTypeCodes;

struct OldCode {
    int from; ///< first version that writes it
    int end;  ///< first version that does not
    qint32 code;
    DataType type;
};
constexpr OldCode kOldCodes[] = {
    {0, kHasBitCodes, 0, RasterDecimalType},
    {0, kHasBitCodes, 1, RasterUnsignedType},
    {0, kHasBitCodes, 2, RasterCellType},
    {0, kHasBitCodes, 3, RasterColorType},
    {kHasBitCodes, kHasTypeCodes, 16, RasterDecimalType},
    {kHasBitCodes, kHasTypeCodes, 32, RasterIntegerType},
    {kHasBitCodes, kHasTypeCodes, 64, RasterCellType},
    {kHasBitCodes, kHasTypeCodes, 128, RasterColorType},
};

} // namespace

DataType cellTypeOf(qint32 code, const LoadContext &context)
{
    for (const OldCode &old : kOldCodes) {
        if (old.code == code && context.between(old.from, old.end))
            return old.type;
    }
    return static_cast<DataType>(code);
}

} // namespace datainterface
