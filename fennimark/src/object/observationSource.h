// SPDX-License-Identifier: MIT
/// The source of a chain's observations: a record store, or a builder that is not finished.
#pragma once
#include <QPair>
#include "fennimark/FMObjectChain.h"

namespace fennimark {

class ObservationSource {
public:
    /// Observation `index` of the chain that begins at `first`, see FMObjectChain::mFirst. The
    /// observations of a chain ascend in time.
    virtual QPair<timeRange, int> observation(quint32 first, quint32 index) const = 0;

    /// Sets the source of a chain, the beginning of its observations there and their number.
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
