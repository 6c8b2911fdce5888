// SPDX-License-Identifier: MIT
/// What the containers of a vector dataset share: each is a handle of a few words, whose content is
/// one block of the block store and in memory only while somebody has it checked out.
#pragma once
#include <exception>
#include "datainterface/export.h"

/// What the two shapes share: the block, the count of check-outs, and when the content comes and
/// goes.
///
/// Every operation pages in at need and, when nobody holds the container checked out, writes a
/// change back and lets go of the memory before it returns. Check-out counts are not atomic.
template <class Container> class DATAINTERFACE_EXPORT PagedContainer {
public:
    PagedContainer(const PagedContainer &) = delete;
    PagedContainer &operator=(const PagedContainer &) = delete;

    void CheckOut() const;
    /// A surplus check-in is ignored. The last one writes back, which can raise "result".
    void CheckIn() const;
    /// Changes that are made from now on wait in memory for those of another container, for a save
    /// of the blocks or for the end, instead of for the last check-in: for loops, each step of which
    /// would write everything back. One container at a time can wait. Raises "result" when there is
    /// no room for the changes of another one, with nothing changed.
    void WriteLater() const;
    int CheckOutCount() const { return mCheckOutCount; }
    int BlockId() const { return mBlockId; }

protected:
    explicit PagedContainer(int blockId) : mBlockId(blockId) {}
    /// Gives the block back to the store.
    ~PagedContainer();

    void PageIn() const;
    void PageOut() const;
    const Container &self() const { return static_cast<const Container &>(*this); }

    mutable int mBlockId; ///< -1 before the first page-out
    mutable int mCheckOutCount = 0;
    mutable bool mDirty = false; ///< the content differs from the block
};

/// Holds a container checked out for a scope. Leaving the scope by an exception never raises a
/// second one.
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
