// SPDX-License-Identifier: MIT
/// A scratch file in memory that fails when a test says so.
#pragma once
#include <QByteArray>
#include <cstring>
#include "Common/detail/scratchFile.h"

/// What the test keeps in hand after the store has taken the file.
struct MemoryDisk {
    QByteArray bytes;
    qint64 room = 1 << 30;       ///< bytes beyond this do not fit
    int writesUntilFailure = -1; ///< counts down; 0 fails every write, -1 none
    bool reserves = true;        ///< whether the disk can tell beforehand that it is full
    bool readsFail = false;
    int writes = 0;
};

class MemoryFile final : public datainterface::PositionedFile {
public:
    explicit MemoryFile(MemoryDisk *disk) : mDisk(disk) {}

    bool open(const QString &) override
    {
        mDisk->bytes.clear();
        return true;
    }
    void close() override {}
    bool read(qint64 position, char *to, qint64 count) override
    {
        if (mDisk->readsFail || position + count > mDisk->bytes.size())
            return false;
        std::memcpy(to, mDisk->bytes.constData() + position, static_cast<size_t>(count));
        return true;
    }
    bool write(qint64 position, const char *from, qint64 count) override
    {
        if (mDisk->writesUntilFailure == 0 || position + count > mDisk->room)
            return false;
        if (mDisk->writesUntilFailure > 0)
            --mDisk->writesUntilFailure;
        ++mDisk->writes;
        if (mDisk->bytes.size() < position + count)
            mDisk->bytes.resize(static_cast<int>(position + count));
        std::memcpy(mDisk->bytes.data() + position, from, static_cast<size_t>(count));
        return true;
    }
    Reserved reserve(qint64 position, qint64 count) override
    {
        if (!mDisk->reserves)
            return Reserved::Unsupported;
        return position + count > mDisk->room ? Reserved::NoRoom : Reserved::Yes;
    }

private:
    MemoryDisk *mDisk;
};
