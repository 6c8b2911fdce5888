// SPDX-License-Identifier: MIT
/// The blocks that are still packed in the project file from which they are loaded on demand.
#pragma once
#include <QDataStream>
#include <QString>
#include <QtGlobal>
#include <array>
#include <memory>
#include <vector>
#include "Common/detail/segments.h"

namespace datainterface {

/// An open project file and the places of its blocks. Blocks are named by the numbers that add()
/// returns.
///
/// The file is read through a handle of its own, so a project that is renamed over the file does
/// not change it. A file that is written in place has another size or time of change; every read
/// compares both and fails then. Bytes that do not unpack to the length and checksum that were
/// stored with them fail as well, so no read returns other contents than those that were saved.
class PackedFile {
public:
    /// Shares the open file of `handle`, which stays the caller's. Null when it has no handle.
    /// @param isPacked  false for files of early versions, whose blocks are stored as they are.
    static std::unique_ptr<PackedFile> share(int handle, bool isPacked);
    ~PackedFile();
    PackedFile(const PackedFile &) = delete;
    PackedFile &operator=(const PackedFile &) = delete;

    bool isPacked() const { return mIsPacked; }
    /// The first bytes of a packed block, which hold the size of its contents.
    static constexpr int kHeadBytes = 4;
    /// The size that the head states; 0 when that many bytes cannot be packed in `storedBytes`.
    static int sizeOf(const char *head, int storedBytes);

    int add(qint64 position, int storedBytes);
    /// Writes the `size` bytes of a block's contents to `to`. False when the file was changed or is
    /// damaged there.
    bool unpack(int block, char *to, int size);
    /// Writes `count` bytes from offset `at` on of a block that is packed in segments. False for
    /// other blocks, and when it cannot be read. The last segments are kept, so that only those that
    /// are not have to be unpacked; `unpacked` is the number of these.
    bool unpackPiece(int block, int size, int at, char *to, int count, int &unpacked);
    /// How often the block was unpacked, up to 255.
    int unpackCount(int block) const { return mPlaces[static_cast<size_t>(block)].unpackCount; }
    /// Writes a block to a project in the form in which it is stored here.
    bool copyTo(int block, QDataStream &out);

    /// Whether `path` names this file, through a link as well.
    bool isAt(const QString &path) const;
    /// False after a read has failed.
    bool isIntact() const { return mIsIntact; }

private:
    struct Place {
        qint64 position;
        int storedBytes;
        quint8 unpackCount;
    };
    struct State {
        qint64 size = -1;
        qint64 seconds = 0;
        qint64 nanoseconds = 0;
    };

    PackedFile(int handle, bool isPacked);
    State state() const;
    bool isUnchanged() const;
    bool read(qint64 position, char *to, qint64 count) const;
    bool unpackWhole(int block, char *to, int size);
    bool findSegments(int block, int size);
    bool readSegment(int block, int segment, char *to, int size);
    const QByteArray *keptSegment(int block, int segment, int size, int &unpacked);

    const int mHandle;
    const bool mIsPacked;
    bool mIsIntact = true;
    State mLoaded;
    int mIndexed = -1;   ///< the block of mIndex
    SegmentIndex mIndex; ///< without segments when the block has none
    QByteArray mBuffer;
    struct Kept {
        int block = -1;
        int segment = -1;
        quint32 lastUse = 0;
        QByteArray contents;
    };
    static constexpr int kKeptSegments = 32;
    std::array<Kept, kKeptSegments> mKept;
    quint32 mUses = 0;
    std::vector<Place> mPlaces;
};

} // namespace datainterface
