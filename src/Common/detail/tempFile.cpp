// SPDX-License-Identifier: MIT
#include "Common/detail/tempFile.h"
#include <QDir>
#include <QTemporaryFile>

namespace datainterface {

QString uniqueTempFile(const QString &directory, const char *prefix)
{
    if (directory.isEmpty() || !QDir().mkpath(directory))
        return QString();
    QTemporaryFile file(
        QDir(directory).filePath(QString::fromLatin1(prefix) + QLatin1String("XXXXXX")));
    file.setAutoRemove(false);
    return file.open() ? file.fileName() : QString();
}

} // namespace datainterface
