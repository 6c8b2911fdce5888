// SPDX-License-Identifier: MIT
/// An open GDAL dataset as an opaque pointer, for headers that do not include GDAL.
#pragma once
#include <memory>
#include "core/export.h"

namespace meridor {

struct MERIDOR_EXPORT CloseGdalFile {
    void operator()(void *dataset) const;
};
using GdalFile = std::unique_ptr<void, CloseGdalFile>;

} // namespace meridor
