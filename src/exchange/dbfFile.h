// SPDX-License-Identifier: MIT
/// The file below a dBASE table that shapelib writes. It has exactly the name that was asked for,
/// while shapelib alone would write beside it, under a name that ends in ".dbf". Every write is
/// checked, which shapelib does not do for its last ones, and nothing is printed.
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

    /// Makes the file and, beside it, the .cpg file that tells readers of UTF-8. Null, and no
    /// table, when one of them could not be written.
    DBFHandle create();
    DBFHandle handle() const { return mHandle; }
    /// False once a write failed. Nothing is written from then on.
    bool isWritten() const { return mIsWritten; }
    /// @return whether all that was due is in the file.
    bool close();
    /// Removes what create() made. A device stays.
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
