// SPDX-License-Identifier: MIT
/// A weight set at one time.
#pragma once
#include <memory>
#include <vector>

class AdjacencySet;
namespace datainterface {
class egoNeighbors;
}

/// Spares a loop over all objects the search for the time. A null set says that there is none. Once
/// the set has been cleared, recalculated or deleted, reads through the handle are a miss.
struct WeightsAtT {
    AdjacencySet *set = nullptr;
    std::weak_ptr<const std::vector<datainterface::egoNeighbors>> lists; ///< by object index
};
