// SPDX-License-Identifier: MIT
#include "project/projectBlocks.h"
#include <QFileDevice>
#include "Common/DataManager.h"
#include "Common/detail/pendingWrite.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/ProjectAPI.h"
#include "frame/progressSection.h"

namespace datainterface {

bool restoreBlocksOfFile(QDataStream &in, bool compressed)
{
    const auto *file = qobject_cast<const QFileDevice *>(in.device());
    if (!blockStore().KeepsPacked() || !file || file->isSequential() || file->handle() < 0)
        return RestoreProjectData(in, compressed);
    PendingWrite::writeBack();
    return blockStore().RestorePackedData(in, file->handle(), file->fileName(), compressed,
                                          progressCallback());
}

} // namespace datainterface

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

void VORN_SetProjectLoading(bool keepPacked)
{
    blockStore().SetKeepsPacked(keepPacked);
}

QString VORN_GetUnreadableProjectFile()
{
    return blockStore().UnreadableFile();
}
