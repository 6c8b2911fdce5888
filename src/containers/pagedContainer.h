// SPDX-License-Identifier: MIT
/// Paging between block and memory, which slices and series share. Container::Content has
/// restore(), which reads an image and raises the container's own text for one that cannot be read,
/// and encode(), which raises for content that must not be stored.
///
/// State of a container: mContent is null while it is paged out. It is in memory while the
/// container is checked out, while its change is pending (PendingWrite), and after a write-back has
/// failed; mDirty is set while it is newer than the block.
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
    // Content that is pending or could not be written back is still in memory and newer than the
    // block.
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
    const auto writeBack = [](const void *container) {
        const auto &paged = *static_cast<const PagedContainer *>(container);
        if (paged.mDirty && paged.mCheckOutCount == 0)
            paged.PageOut();
    };
    const CheckedOut<Container> hold(self());
    datainterface::PendingWrite::set(this, writeBack, self().mContent->memory(),
                                     blockStore().CacheLimit());
}

template <class Container> void PagedContainer<Container>::PageIn() const
{
    using datainterface::BlockRead;
    QByteArray image;
    auto result = BlockRead::Done;
    if (!ReadDataBlock(mBlockId, image))
        result = blockStore().Holds(mBlockId) ? BlockRead::Failed : BlockRead::Unknown;
    auto content = std::make_unique<typename Container::Content>();
    content->restore(result, image);
    self().mContent = std::move(content);
    mDirty = false;
}

// The content is released only after the store has accepted the image.
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
