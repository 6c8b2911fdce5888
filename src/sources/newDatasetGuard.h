// SPDX-License-Identifier: MIT
/// Guards a dataset that is being filled. Unless it is kept, the destructor removes it from its
/// source, also when filling raises, so that a source never has an incomplete copy.
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
        } catch (...) { // raised by a listener; the first exception is reported
        }
    }
    Q_DISABLE_COPY(NewDatasetGuard)

    /// Keeps the dataset.
    /// @return its id.
    int keep() { return std::exchange(mId, kKept); }

private:
    static constexpr int kKept = -1;

    MDataSource &mSource;
    int mId;
};

} // namespace datainterface
