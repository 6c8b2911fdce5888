// SPDX-License-Identifier: MIT
/// Bytes that are appended, then frozen, then read at random: in a heap buffer up to 4 MiB, beyond
/// that in a mapped file.
#pragma once
#include <QString>
#include <QtGlobal>
#include <memory>
#include <vector>

namespace fennimark {

class SpillFile;

/// Up to 4 MiB stay on the heap. Beyond that all bytes are written to a file, which has no name or,
/// where the platform requires one, is deleted on close. The file is mapped read-only when it is
/// frozen. When it cannot be mapped, bytes below the resident part are read by positioned reads.
class ScratchSpace {
public:
    ScratchSpace();
    ~ScratchSpace();
    ScratchSpace(ScratchSpace &&other) noexcept;
    ScratchSpace &operator=(ScratchSpace &&other) noexcept;

    /// Announces the final size. For more bytes than stay on the heap, the buffer is kept small and
    /// written to the file early.
    void expect(quint64 size);
    /// False when the file cannot be made or the disk is full; the space must not be used
    /// afterwards.
    bool append(const void *bytes, quint64 size);
    /// Appends zeros up to the next multiple of `alignment`, a power of two of at most 64.
    bool align(quint64 alignment);
    quint64 size() const { return mFlushed + mBuffer.size(); }

    /// How a file is read once it is frozen. Positioned reads cost one system call each, and the
    /// bytes do not count as memory of the process.
    enum class Reads { Mapped, Positioned };
    /// Ends appending. Bytes from `residentFrom` on are in memory afterwards, also when the file is
    /// not mapped. False when the file cannot be written or read.
    bool freeze(quint64 residentFrom, Reads reads = Reads::Mapped);
    /// Frozen bytes in place; null when the file is not mapped and `offset` is below the resident
    /// part.
    const uchar *at(quint64 offset) const;
    /// Copies frozen bytes; false when the device fails.
    bool read(quint64 offset, void *bytes, quint64 size) const;

    /// Sets the directory of files; empty: the system's directory for temporary files.
    static void setDirectory(const QString &directory);
    /// Lets tests run without a mapping.
    static void allowMapping(bool allowed);

private:
    bool flush();

    // All bytes, or those that are not in the file yet. Once frozen without a mapping: the resident
    // part.
    std::vector<uchar> mBuffer;
    std::unique_ptr<SpillFile> mFile;
    quint64 mFlushed = 0;
    bool mExpectsFile = false;
    const uchar *mMapped = nullptr;
};

} // namespace fennimark
