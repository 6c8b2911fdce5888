// SPDX-License-Identifier: MIT
// Saves and restores the blocks of a project file, with reports to the progress bar if one is
// shown.
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
