// SPDX-License-Identifier: MIT
/// Bytes that are appended, frozen and then read at random: a heap buffer while they are few, else
/// a mapped file.
#pragma once
#include <QString>
#include <QtGlobal>
#include <memory>
#include <vector>

namespace fennimark {

class SpillFile;

/// Up to 4 MiB stay on the heap. Beyond, all goes to a file without a name (where the platform has
/// none: deleted on close) that is mapped read-only once frozen. When it cannot be mapped, reads
/// are positioned.
class ScratchSpace {
public:
    ScratchSpace();
    ~ScratchSpace();
    ScratchSpace(ScratchSpace &&other) noexcept;
    ScratchSpace &operator=(ScratchSpace &&other) noexcept;

    /// That so many bytes may come: more than the heap is for go to a file from the first.
    void expect(quint64 size);
    /// False when the file cannot be made or the disk is full; the space is of no use from then on.
    bool append(const void *bytes, quint64 size);
    /// Zeros up to the next multiple of `alignment`, a power of two of at most 64.
    bool align(quint64 alignment);
    quint64 size() const { return mFlushed + mBuffer.size(); }

    /// How a file is read once it is frozen. Positioned reads cost a system call each and keep the
    /// bytes out of the process's memory.
    enum class Reads { Mapped, Positioned };
    /// Ends appending. What lies from `residentFrom` on is in memory afterwards, mapped or not.
    bool freeze(quint64 residentFrom, Reads reads = Reads::Mapped);
    /// Frozen bytes in place; null when the file is not mapped and `offset` is below the resident
    /// part.
    const uchar *at(quint64 offset) const;
    /// A copy of frozen bytes; false on a failure of the device.
    bool read(quint64 offset, void *bytes, quint64 size) const;

    /// Where files go; empty: the system's directory for temporary files.
    static void setDirectory(const QString &directory);
    /// For tests of the road without a mapping.
    static void allowMapping(bool allowed);

private:
    bool flush();

    std::vector<uchar> mBuffer; // all of it, or the tail that is not in the file yet; the resident
                                // part once frozen
    std::unique_ptr<SpillFile> mFile;
    quint64 mFlushed = 0;
    bool mExpectsFile = false;
    const uchar *mMapped = nullptr;
};

} // namespace fennimark
