// SPDX-License-Identifier: MIT
/// An open file of GDAL, for headers that do not show GDAL.
#pragma once
#include <memory>
#include "core/export.h"

namespace meridor {

struct MERIDOR_EXPORT CloseGdalFile {
    void operator()(void *dataset) const;
};
using GdalFile = std::unique_ptr<void, CloseGdalFile>;

} // namespace meridor
