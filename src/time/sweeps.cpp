// SPDX-License-Identifier: MIT
#include "time/sweeps.h"
#include <algorithm>

namespace datainterface {
namespace {

// Boundaries whose ascending runs are shorter than this on average are sorted and not merged.
constexpr size_t kUsefulRun = 16;

// The ends of the ascending runs; empty when there are too many to merge.
std::vector<size_t> runEnds(const TimeBoundaries &boundaries)
{
    std::vector<size_t> ends;
    const size_t most = boundaries.size() / kUsefulRun;
    for (size_t i = 1; i < boundaries.size(); ++i) {
        if (boundaries[i] < boundaries[i - 1]) {
            if (ends.size() >= most)
                return {};
            ends.push_back(i);
        }
    }
    ends.push_back(boundaries.size());
    return ends;
}

using Position = TimeBoundaries::const_iterator;

} // namespace

void sortBoundaries(TimeBoundaries &boundaries)
{
    std::vector<size_t> ends = runEnds(boundaries);
    if (ends.empty()) {
        std::sort(boundaries.begin(), boundaries.end());
        return;
    }
    TimeBoundaries merged;
    while (ends.size() > 1) {
        merged.clear();
        merged.reserve(boundaries.size());
        std::vector<size_t> mergedEnds;
        const auto at = [&boundaries](size_t i) {
            return boundaries.cbegin() + static_cast<std::ptrdiff_t>(i);
        };
        size_t begin = 0;
        for (size_t run = 0; run < ends.size(); run += 2) {
            const size_t middle = ends[run];
            const size_t end = ends[std::min(run + 1, ends.size() - 1)];
            std::merge(at(begin), at(middle), at(middle), at(end), std::back_inserter(merged));
            mergedEnds.push_back(end);
            begin = end;
        }
        boundaries.swap(merged);
        ends.swap(mergedEnds);
    }
}

} // namespace datainterface
