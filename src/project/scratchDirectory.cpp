// SPDX-License-Identifier: MIT
#include "project/scratchDirectory.h"
#include "Common/DataManager.h"
#include "datainterface/ControllerBase.h"

namespace datainterface {

QString scratchDirectory()
{
    const QString &given = blockStore().Directory();
    return given.isEmpty() ? ControllerBase::GetVORNDataPath() : given;
}

} // namespace datainterface
