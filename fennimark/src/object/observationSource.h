// SPDX-License-Identifier: MIT
/// Where a chain's observations lie: in a record store, or in a builder that has not finished.
#pragma once
#include <QPair>
#include "fennimark/FMObjectChain.h"

namespace fennimark {

class ObservationSource {
public:
    /// The observation at a position of the source's list; a chain's observations ascend in time
    /// from its first.
    virtual QPair<timeRange, int> observation(quint32 first, quint32 index) const = 0;

    /// Where a chain's observations begin and how many they are.
    static void place(FMObjectChain &chain, const ObservationSource *source, quint32 first,
                      quint32 count)
    {
        chain.mSource = source;
        chain.mFirst = first;
        chain.mCount = count;
    }
    static quint32 firstOf(const FMObjectChain &chain) { return chain.mFirst; }
    static quint32 countOf(const FMObjectChain &chain) { return chain.mCount; }

protected:
    ~ObservationSource() = default;
};

} // namespace fennimark
