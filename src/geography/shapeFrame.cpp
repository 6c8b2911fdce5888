// SPDX-License-Identifier: MIT
#include "geography/shapeFrame.h"

namespace datainterface {

FMObjectChain *chainOf(const MVectorData &geography, unsigned int object)
{
    const QVector<int> &ids = geography.GetFennimIdMap();
    return object < static_cast<unsigned int>(ids.size())
               ? geography.GetFennims()->GetChainById(ids[static_cast<int>(object)])
               : nullptr;
}

int recordAt(const MVectorData &geography, unsigned int object, qint64 time)
{
    const FMObjectChain *chain = chainOf(geography, object);
    return chain ? chain->GetObservation(time).second : -1;
}

int objectOf(const MVectorData &geography, int recordId)
{
    return geography.GetObjectId(HeldRecord(*geography.GetFennims()->mTree, recordId).chainId());
}

} // namespace datainterface
