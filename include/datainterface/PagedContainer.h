// SPDX-License-Identifier: MIT
/// The common base of the containers of a vector dataset. A container is a small handle; its
/// content is one block of the block store and is in memory only while the container is checked
/// out.
#pragma once
#include <exception>
#include "datainterface/export.h"

/// Holds the block id and the number of check-outs, and decides when the content is read and
/// released.
///
/// Every operation reads the content when needed. If the container is not checked out, it writes
/// changes back and releases the memory before it returns. Check-out counts are not atomic.
template <class Container> class DATAINTERFACE_EXPORT PagedContainer {
public:
    PagedContainer(const PagedContainer &) = delete;
    PagedContainer &operator=(const PagedContainer &) = delete;

    void CheckOut() const;
    /// A surplus check-in is ignored. The last one writes changes back, which can raise "result".
    void CheckIn() const;
    /// Delays writing back: changes made from now on stay in memory until the blocks are saved, the
    /// container is deleted, or the waiting containers take more memory than the cache may hold,
    /// when the least recently changed ones are written back. For loops in which each step would
    /// otherwise write everything back. Raises "result", with this container unchanged, when there
    /// is no room for the changes of another one.
    void WriteLater() const;
    int CheckOutCount() const { return mCheckOutCount; }
    int BlockId() const { return mBlockId; }

protected:
    explicit PagedContainer(int blockId) : mBlockId(blockId) {}
    /// Deletes the block.
    ~PagedContainer();

    void PageIn() const;
    void PageOut() const;
    const Container &self() const { return static_cast<const Container &>(*this); }

    mutable int mBlockId; ///< -1 before the first page-out
    mutable int mCheckOutCount = 0;
    mutable bool mDirty = false; ///< the content differs from the block
};

/// Checks a container out when it is constructed and in when it is destroyed. Nothing is raised
/// while another exception is being handled.
template <class Container> class CheckedOut {
public:
    explicit CheckedOut(const Container &container)
        : mContainer(container), mUnwinding(std::uncaught_exceptions())
    {
        mContainer.CheckOut();
    }
    ~CheckedOut() noexcept(false)
    {
        try {
            mContainer.CheckIn();
        } catch (...) {
            if (std::uncaught_exceptions() == mUnwinding)
                throw;
        }
    }
    CheckedOut(const CheckedOut &) = delete;
    CheckedOut &operator=(const CheckedOut &) = delete;

private:
    const Container &mContainer;
    const int mUnwinding;
};
