// SPDX-License-Identifier: MIT
#include "Common/detail/pendingWrite.h"

namespace datainterface {

namespace {

const void *pending = nullptr;
PendingWrite::WriteBack writePending = nullptr;

} // namespace

void PendingWrite::set(const void *container, WriteBack writeBack)
{
    if (pending != container)
        PendingWrite::writeBack();
    pending = container;
    writePending = writeBack;
}

bool PendingWrite::holds(const void *container)
{
    return pending == container;
}

void PendingWrite::forget(const void *container)
{
    if (pending == container)
        pending = nullptr;
}

void PendingWrite::writeBack()
{
    if (pending)
        writePending(pending);
    pending = nullptr;
}

void PendingWrite::drop()
{
    pending = nullptr;
}

} // namespace datainterface
