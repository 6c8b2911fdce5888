// SPDX-License-Identifier: MIT
/// A weight set at one time.
#pragma once
#include <memory>
#include <vector>

class AdjacencySet;
namespace datainterface {
class egoNeighbors;
}

/// A handle with which a loop over all objects searches for the time only once. A null set means an
/// empty handle. After the set has been cleared, recalculated or deleted, reads through the handle
/// return false.
struct WeightsAtT {
    AdjacencySet *set = nullptr;
    std::weak_ptr<const std::vector<datainterface::egoNeighbors>> lists; ///< by object index
};
