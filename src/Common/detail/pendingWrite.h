// SPDX-License-Identifier: MIT
/// The containers whose last changes are not in the block store yet.
///
/// A loop that sets values one by one would encode a whole container at every step. Such changes
/// therefore stay pending in the container's memory, even when the container is not checked out,
/// and a check-in does not write them back. They are written back, the least recently changed
/// container first, when the pending containers take more memory than a limit, before blocks are
/// saved and before blocks are restored.
///
/// The state is that of the process. The class is not locked.
#pragma once
#include <QtGlobal>

namespace datainterface {

class PendingWrite {
public:
    /// Writes the container's changes back, if it still has some.
    using WriteBack = void (*)(const void *container);

    /// Makes the changes of `container` pending from now on. Others are written back first until
    /// all together take at most `limit` bytes, or only this one is left; that raises "result" when
    /// there is no room, and this container has not changed then.
    /// @param bytes  memory of the container's content.
    static void set(const void *container, WriteBack writeBack, qint64 bytes, qint64 limit);
    static bool holds(const void *container);
    /// To be called when the container has been written back or is destroyed.
    static void forget(const void *container);
    /// Writes all back. Raises "result" when there is no room; what is left stays pending.
    static void writeBack();
    /// Discards all changes, because the store that they belong to is reset or cleared.
    static void drop();
};

} // namespace datainterface
