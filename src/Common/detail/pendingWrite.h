// SPDX-License-Identifier: MIT
/// The one container whose last change has not gone to the block store yet.
///
/// A loop that sets the values of a container one by one would encode all of it at every step. Such
/// a change waits in the container's memory instead, also when nobody has it checked out. It is
/// written back before another container's change waits, before the blocks are saved and before
/// blocks are restored. A check-in leaves the container as it is meanwhile.
#pragma once

namespace datainterface {

class PendingWrite {
public:
    /// Writes the container's change back if it still has one.
    using WriteBack = void (*)(const void *container);

    /// Lets the changes of `container` wait from now on. Those of another one are written back
    /// first, which raises "result" when there is no room; then nothing has changed.
    static void set(const void *container, WriteBack writeBack);
    static bool holds(const void *container);
    /// The container has been written back, or goes.
    static void forget(const void *container);
    /// Raises "result" when there is no room; the change goes on waiting.
    static void writeBack();
    /// The store that the change belongs to is given up.
    static void drop();
};

} // namespace datainterface
