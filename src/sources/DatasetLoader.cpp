// SPDX-License-Identifier: MIT
#include "datainterface/DatasetLoader.h"
#include <exception>
#include "datainterface/MDataSource.h"

DatasetLoader::DatasetLoader(MDataSource *source, int id, int realization)
    : mDataset(source->GetDataset(id)), mRealization(realization)
{
    if (mDataset)
        mDataset->CheckOutRealization(mRealization, 0);
}

DatasetLoader::~DatasetLoader() noexcept(false)
{
    if (!mDataset)
        return;
    try {
        mDataset->CheckInRealization(mRealization, 0);
    } catch (...) {
        if (std::uncaught_exceptions() == 0)
            throw;
    }
}
