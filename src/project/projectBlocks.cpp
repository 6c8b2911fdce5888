// SPDX-License-Identifier: MIT
// The block store's part of a project file, under the progress bar where one is shown.
#include "Common/DataManager.h"
#include "Common/detail/pendingWrite.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/VORN_Progress.h"

namespace {

ProgressCallback progressReport()
{
    return VORN_Progress::UsingProgressBar() ? &VORN_Progress::UpdateProgress : nullptr;
}

} // namespace

bool SaveProjectData(QDataStream &out, bool compress)
{
    datainterface::PendingWrite::writeBack();
    return blockStore().SaveProjectData(out, compress, progressReport());
}

bool RestoreProjectData(QDataStream &in, bool compressed)
{
    datainterface::PendingWrite::writeBack();
    return blockStore().RestoreProjectData(in, compressed, progressReport());
}
