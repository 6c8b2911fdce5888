// SPDX-License-Identifier: MIT
/// A dataset that is being filled. Unless it is kept it leaves its source again, also when filling
/// it raises: a registry never holds half a copy.
#pragma once
#include <utility>
#include "datainterface/MDataSource.h"

namespace datainterface {

class NewDatasetGuard {
public:
    /// -1: no dataset was made.
    NewDatasetGuard(MDataSource &source, int id) : mSource(source), mId(id) {}
    ~NewDatasetGuard()
    {
        try {
            if (mId != kKept)
                mSource.RemoveDataset(mId);
        } catch (...) { // a listener's failure; the one that led here is told
        }
    }
    Q_DISABLE_COPY(NewDatasetGuard)

    /// The dataset stays. @return its id.
    int keep() { return std::exchange(mId, kKept); }

private:
    static constexpr int kKept = -1;

    MDataSource &mSource;
    int mId;
};

} // namespace datainterface
