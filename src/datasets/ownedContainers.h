// SPDX-License-Identifier: MIT
/// Containers on their way from one dataset to another.
#pragma once
#include <QtAlgorithms>
#include <memory>
#include <utility>

namespace datainterface {

/// A map of containers that no dataset has taken over yet.
template <class Map> class OwnedContainers {
public:
    OwnedContainers() = default;
    ~OwnedContainers() { qDeleteAll(mMap); }
    OwnedContainers(const OwnedContainers &) = delete;
    OwnedContainers &operator=(const OwnedContainers &) = delete;

    Map &map() { return mMap; }
    template <class Key, class Container>
    void insert(const Key &key, std::unique_ptr<Container> container)
    {
        mMap.insert(key, container.get());
        container.release();
    }
    /// `take(map)` says whether it has taken the containers over. An empty map needs nobody.
    template <class Take> bool handOver(Take take)
    {
        if (mMap.isEmpty())
            return true;
        if (!take(std::as_const(mMap)))
            return false;
        mMap.clear();
        return true;
    }

private:
    Map mMap;
};

} // namespace datainterface
