// SPDX-License-Identifier: MIT
/// The state that the parts of one restore share. A public entry makes it from
/// dataInterfaceVersionLoading, which hosts may set to read a part alone, and passes it down.
#pragma once
#include "datainterface/VersionAPI.h"
#include "frame/fileVersions.h"

namespace datainterface {

struct LoadContext {
    int version = 0; ///< of the file
    /// The number of objects of the vector geography that is being read; -1 while it is not known.
    int objectCount = -1;
    /// The same number from the data source, in files before fileVersions::kSourceEndsWithCount.
    int tableObjectCount = 0;
    /// Called with the id of a geography before anything of the geography stores a block; removes
    /// the geography that has this id now. Null when a part is read alone.
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
