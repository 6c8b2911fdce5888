// SPDX-License-Identifier: MIT
/// Keeps one realization of a dataset in memory for a scope.
#pragma once
#include "datainterface/export.h"

class MDataSource;
class MDataset;

/// Checks the realization out when it is constructed and in when it is destroyed. A copy does not
/// check out but does check in, so it ends the check-out early: do not copy. For an unknown dataset
/// nothing is held.
class DATAINTERFACE_EXPORT DatasetLoader {
public:
    DatasetLoader(MDataSource *source, int id, int realization);
    /// The last check-in writes changes back, which can raise. Nothing is raised while another
    /// exception is being handled.
    ~DatasetLoader() noexcept(false);

private:
    const MDataset *mDataset;
    int mRealization;
};
