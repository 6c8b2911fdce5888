// SPDX-License-Identifier: MIT
/// Maps of containers that change their owner.
#pragma once
#include <QSet>
#include <QtAlgorithms>
#include <memory>
#include <utility>

namespace datainterface {

/// A map of containers that no dataset owns yet.
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
    /// Calls `take(map)`, which returns whether it owns the containers now. An empty map is not
    /// passed.
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

/// Puts `kept` in the place of `map` and deletes the containers of `map` that it does not hold. A
/// host may pass a map that holds containers of the dataset itself.
template <class Map> void replaceContainers(Map &map, const Map &kept)
{
    const auto stays = kept.values();
    const QSet<typename Map::mapped_type> staying(stays.begin(), stays.end());
    for (auto *container : qAsConst(map)) {
        if (!staying.contains(container))
            delete container;
    }
    map = kept;
}

} // namespace datainterface
