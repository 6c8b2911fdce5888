// SPDX-License-Identifier: MIT
/// Reading of files that may be pipes.
#pragma once
#include <QFile>
#include "core/export.h"

namespace meridor {

/// A file for reading. While a pipe has no writer, or its writer pauses, a cancel of the user ends
/// the wait with a Failure; QFile would start the call again.
class MERIDOR_EXPORT InputFile : public QFile {
public:
    explicit InputFile(const QString &path);
    ~InputFile() override;
    /// Opens without waiting for a writer. False with an error text if the file cannot be opened.
    bool openForReading();

protected:
    qint64 readData(char *data, qint64 size) override;

private:
    bool mIsStream = false;
};

} // namespace meridor
