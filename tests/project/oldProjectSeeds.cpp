// SPDX-License-Identifier: MIT
// Writes a small project of every age into a directory: where a fuzzer of the project loader starts
// from.
#include <QDir>
#include <QFile>
#include <cstdio>
#include "support/oldProject.h"

int main(int argc, char **argv)
{
    if (argc != 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "usage: oldProjectSeeds DIRECTORY\n");
        return 2;
    }
    for (const int version : oldProject::versions()) {
        QFile file(
            QDir(QString::fromLocal8Bit(argv[1])).filePath(oldProject::versionText(version)));
        oldProject::Sample sample{version};
        if (!file.open(QIODevice::WriteOnly) || file.write(oldProject::write(sample)) < 0
            || !file.flush()) {
            std::fprintf(stderr, "%s cannot be written\n", qPrintable(file.fileName()));
            return 1;
        }
    }
    return 0;
}
