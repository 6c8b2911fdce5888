// SPDX-License-Identifier: MIT
/// Between block and memory: what a slice and a series do alike. Their Content restores itself from
/// an image, and raises what is to be said of one that cannot be read; it encodes itself, and
/// raises what may not be stored.
#pragma once
#include "Common/DataManager.h"
#include "Common/detail/pendingWrite.h"
#include "datainterface/DataBlocks.h"
#include "datainterface/TimeContainers.h"

template <class Container> PagedContainer<Container>::~PagedContainer()
{
    datainterface::PendingWrite::forget(this);
    if (mBlockId >= 0)
        DeleteDataBlock(mBlockId);
}

template <class Container> void PagedContainer<Container>::CheckOut() const
{
    // Content that could not be written back is still here, and newer than the block.
    if (!self().mContent)
        PageIn();
    ++mCheckOutCount;
}

template <class Container> void PagedContainer<Container>::CheckIn() const
{
    if (mCheckOutCount == 0 || --mCheckOutCount > 0)
        return;
    if (mDirty && datainterface::PendingWrite::holds(this))
        return;
    if (mDirty)
        PageOut();
    self().mContent.reset();
}

template <class Container> void PagedContainer<Container>::WriteLater() const
{
    if (mBlockId < 0)
        return;
    datainterface::PendingWrite::set(this, [](const void *container) {
        const auto &paged = *static_cast<const PagedContainer *>(container);
        if (paged.mDirty && paged.mCheckOutCount == 0)
            paged.PageOut();
    });
}

template <class Container> void PagedContainer<Container>::PageIn() const
{
    QByteArray image;
    const bool isRead = ReadDataBlock(mBlockId, image);
    auto content = std::make_unique<typename Container::Content>();
    content->restore(isRead, image);
    self().mContent = std::move(content);
    mDirty = false;
}

// Nothing is let go of before the store has taken the image.
template <class Container> void PagedContainer<Container>::PageOut() const
{
    const QByteArray image = self().mContent->encode();
    if (mBlockId >= 0)
        ReplaceDataBlock(mBlockId, image);
    else
        mBlockId = SaveDataBlock(image);
    self().mContent.reset();
    mDirty = false;
    datainterface::PendingWrite::forget(this);
}
