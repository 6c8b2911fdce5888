// SPDX-License-Identifier: MIT
/// The file of a dBASE table that shapelib writes. It has exactly the requested name, whereas
/// shapelib alone would change the ending to ".dbf". Every write is checked, which shapelib does
/// not do for the last ones, and nothing is printed.
#pragma once
#include <QFile>
#include <QString>
#include <memory>
#include <shapefil.h>

namespace datainterface {

class DbfFile {
public:
    explicit DbfFile(const QString &name) : mName(name) {}
    ~DbfFile() { close(); }
    DbfFile(const DbfFile &) = delete;
    DbfFile &operator=(const DbfFile &) = delete;

    /// Creates the file and a .cpg file beside it, which declares the texts as UTF-8. Returns null,
    /// without a table, when one of them could not be written.
    DBFHandle create();
    DBFHandle handle() const { return mHandle; }
    /// False after a write has failed. Nothing more is written then.
    bool isWritten() const { return mIsWritten; }
    /// @return whether the file holds everything that was to be written.
    bool close();
    /// Removes the files that create() made, but never a device.
    void remove();

private:
    struct Stream;
    struct Hooks;

    bool isWhole(int records, qint64 bytes) const;

    const QString mName;
    DBFHandle mHandle = nullptr;
    bool mIsWritten = true;
};

} // namespace datainterface
