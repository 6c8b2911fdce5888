// SPDX-License-Identifier: MIT
/// Keeps one realization of a dataset in memory for a scope.
#pragma once
#include "datainterface/export.h"

class MDataSource;
class MDataset;

/// Two words, copied by value: a copy checks nothing out, but checks in when it goes, which ends
/// the loan early. An unknown dataset is no failure; nothing is held then.
class DATAINTERFACE_EXPORT DatasetLoader {
public:
    DatasetLoader(MDataSource *source, int id, int realization);
    /// The last check-in writes back, which can raise; never while another failure is on its way.
    ~DatasetLoader() noexcept(false);

private:
    const MDataset *mDataset;
    int mRealization;
};
