// SPDX-License-Identifier: MIT
#include "datainterface/MissingData.h"
#include "datainterface/dataContainer.h"

VORN_MissingValueChecker::VORN_MissingValueChecker(const VORN_ConstDataContainer &container)
{
    addDataset(container);
}

VORN_MissingValueChecker::VORN_MissingValueChecker(const VORN_DataContainer &container)
{
    addDataset(container);
}

template <class Container> bool VORN_MissingValueChecker::add(const Container &container)
{
    const MissingData &sum = *mSum.md;
    const MissingData &added = *container.missingData().md;
    if (sum.type == MissingData::Raster && added.type == MissingData::Raster
        && sum.bits.size() != added.bits.size())
        return false;
    mSum += container.missingData();
    return true;
}

bool VORN_MissingValueChecker::addDataset(const VORN_ConstDataContainer &container)
{
    return container.id() != -1 && add(container);
}

bool VORN_MissingValueChecker::addDataset(const VORN_DataContainer &container)
{
    return container.type() != VORN_DataContainer::NoData && add(container);
}
