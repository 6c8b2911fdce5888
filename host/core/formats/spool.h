// SPDX-License-Identifier: MIT
/// Storage of what was read from a file until an import has used it: the first megabytes in memory,
/// the rest in a scratch file. The memory in use does not depend on the length of the file.
#pragma once
#include <QtGlobal>
#include <memory>
#include <string_view>
#include <vector>
#include "core/export.h"

class QTemporaryFile;

namespace meridor {

/// An empty file in the scratch directory of the open session, else in the system's directory for
/// temporary files. It is removed with the returned object. Raises a Failure if it cannot be made.
std::unique_ptr<QTemporaryFile> makeScratchFile();

/// Bytes that are appended once and read in any order.
class MERIDOR_EXPORT Spool {
public:
    Spool();
    ~Spool();
    Spool(const Spool &) = delete;
    Spool &operator=(const Spool &) = delete;

    /// Returns the position of the bytes. Raises a Failure if the disk is full.
    quint64 append(std::string_view bytes);
    /// The bytes from a position on; valid until the next append.
    const char *at(quint64 position, quint64 size) const;
    /// Changes with every append.
    quint64 generation() const { return mSize; }

private:
    void write(std::string_view bytes);
    void map() const;
    void unmap() const;

    std::vector<char> mHead; ///< the first bytes
    std::unique_ptr<QTemporaryFile> mFile;
    quint64 mSize = 0;
    mutable char *mMapped = nullptr;
    mutable quint64 mMappedSize = 0;
    mutable quint64 mTouched = 0; ///< bytes read since the mapped pages were released
};

/// The cells of one column, as texts or other bytes. An empty cell is a missing value. Cells are
/// collected in chunks, which are kept in a spool that other columns share.
class MERIDOR_EXPORT Cells {
public:
    /// @param chunkSize  bytes that are collected in memory; a longer cell is a chunk of its own.
    explicit Cells(const std::shared_ptr<Spool> &spool, int chunkSize = 1 << 16);

    void append(std::string_view cell);
    int size() const { return mSealed + static_cast<int>(mEnds.size()); }
    /// Valid until the next append to a column of the same spool.
    std::string_view view(int row) const;

private:
    struct Chunk {
        int firstRow;
        int rows;
        quint64 position; ///< of the ends of its cells, which precede the bytes
        quint64 size;
    };
    void seal();
    void find(int row) const;

    std::shared_ptr<Spool> mSpool;
    size_t mChunkSize;
    std::vector<Chunk> mChunks;
    int mSealed = 0; ///< rows in the chunks; later rows are in mBytes
    std::vector<char> mBytes;
    std::vector<quint32> mEnds;
    // The chunk that was read last.
    mutable int mFirst = 0;
    mutable int mBehind = 0;
    mutable const char *mChunk = nullptr;
    mutable quint64 mGeneration = 0;
};

} // namespace meridor
