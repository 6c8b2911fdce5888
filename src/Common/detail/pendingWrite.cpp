// SPDX-License-Identifier: MIT
#include "Common/detail/pendingWrite.h"
#include <list>
#include <unordered_map>

namespace datainterface {

namespace {

struct Entry {
    const void *container;
    PendingWrite::WriteBack writeBack;
    qint64 bytes;
};

// The most recently changed container comes first.
std::list<Entry> entries;
std::unordered_map<const void *, std::list<Entry>::iterator> entryOf;
qint64 totalBytes = 0;

void writeOldest()
{
    const Entry oldest = entries.back();
    oldest.writeBack(oldest.container);
    PendingWrite::forget(oldest.container);
}

} // namespace

void PendingWrite::set(const void *container, WriteBack writeBack, qint64 bytes, qint64 limit)
{
    const auto found = entryOf.find(container);
    if (found == entryOf.end()) {
        while (!entries.empty() && totalBytes + bytes > limit)
            writeOldest();
        entries.push_front({container, writeBack, bytes});
        entryOf.emplace(container, entries.begin());
        totalBytes += bytes;
        return;
    }
    Entry &entry = *found->second;
    totalBytes += bytes - entry.bytes;
    entry.bytes = bytes;
    entries.splice(entries.begin(), entries, found->second);
    while (entries.size() > 1 && totalBytes > limit)
        writeOldest();
}

bool PendingWrite::holds(const void *container)
{
    return entryOf.count(container) > 0;
}

void PendingWrite::forget(const void *container)
{
    const auto found = entryOf.find(container);
    if (found == entryOf.end())
        return;
    totalBytes -= found->second->bytes;
    entries.erase(found->second);
    entryOf.erase(found);
}

void PendingWrite::writeBack()
{
    while (!entries.empty())
        writeOldest();
}

void PendingWrite::drop()
{
    entries.clear();
    entryOf.clear();
    totalBytes = 0;
}

} // namespace datainterface
