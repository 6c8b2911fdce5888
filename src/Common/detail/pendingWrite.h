// SPDX-License-Identifier: MIT
/// The one container whose last change is not in the block store yet.
///
/// A loop that sets the values of a container one by one would encode all of it at every step. Such
/// a change therefore stays pending in the container's memory, even when the container is not
/// checked out, and a check-in does not write it back. It is written back before the change of
/// another container becomes pending, before blocks are saved and before blocks are restored.
///
/// At most one change of the process is pending. The class is not locked.
#pragma once

namespace datainterface {

class PendingWrite {
public:
    /// Writes the container's change back, if it still has one.
    using WriteBack = void (*)(const void *container);

    /// Makes the changes of `container` pending from now on. Those of another container are written
    /// back first, which raises "result" when there is no room; nothing has changed then.
    static void set(const void *container, WriteBack writeBack);
    static bool holds(const void *container);
    /// To be called when the container has been written back or is destroyed.
    static void forget(const void *container);
    /// Raises "result" when there is no room; the change stays pending.
    static void writeBack();
    /// Discards the change, because the store that it belongs to is reset or cleared.
    static void drop();
};

} // namespace datainterface
