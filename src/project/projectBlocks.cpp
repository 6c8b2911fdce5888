// SPDX-License-Identifier: MIT
// The block store's part of a project file, under the progress bar where one is shown.
#include "Common/DataManager.h"
#include "Common/detail/pendingWrite.h"
#include "datainterface/DataBlocks.h"
#include "frame/progressSection.h"

using namespace datainterface;

bool SaveProjectData(QDataStream &out, bool compress)
{
    PendingWrite::writeBack();
    return blockStore().SaveProjectData(out, compress, progressCallback());
}

bool RestoreProjectData(QDataStream &in, bool compressed)
{
    PendingWrite::writeBack();
    return blockStore().RestoreProjectData(in, compressed, progressCallback());
}
