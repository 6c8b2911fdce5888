// SPDX-License-Identifier: MIT
/// What the parts of one restore tell each other. A public entry makes it from
/// dataInterfaceVersionLoading, which hosts may set to read a part alone, and hands it down.
#pragma once
#include "datainterface/VersionAPI.h"
#include "frame/fileVersions.h"

namespace datainterface {

struct LoadContext {
    int version = 0;
    /// The objects of the vector geography that is read; -1 while that is not known.
    int objectCount = -1;
    /// The same number as the data source's own table has it, in files before
    /// fileVersions::kSourceEndsWithCount.
    int tableObjectCount = 0;
    /// Called with a geography's id before anything of it takes a block: what stands under the id
    /// goes first. Null when a part is read alone.
    void (*makeWay)(int geographyId) = nullptr;

    bool since(int first) const { return version >= first; }
    bool between(int first, int end) const { return version >= first && version < end; }
};

inline LoadContext loadContext()
{
    LoadContext context;
    context.version = dataInterfaceVersionLoading;
    return context;
}

} // namespace datainterface
