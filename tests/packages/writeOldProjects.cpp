// SPDX-License-Identifier: MIT
// Writes a project of every age into the working directory, as VERSION.vorn.
#include <QCoreApplication>
#include <QFile>
#include "support/oldProject.h"

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    for (int version : oldProject::versions()) {
        const QByteArray bytes = oldProject::write(oldProject::Sample{version});
        QFile file(QStringLiteral("%1.vorn").arg(version));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush())
            qFatal("%d.vorn cannot be written", version);
    }
    return 0;
}
