// SPDX-License-Identifier: MIT
#include "cli/samples.h"
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include "core/project/failure.h"

namespace meridor {

QString samplesDirectory(const QString &wanted)
{
    const QString program = QCoreApplication::applicationDirPath();
    QStringList places{wanted, qEnvironmentVariable("MERIDOR_SAMPLES"),
                       program + QStringLiteral("/../share/meridor/samples")};
    // This file is written by the build and not installed, so the program contains no path of the
    // source tree.
    QFile note(program + QStringLiteral("/samples-directory"));
    if (note.open(QIODevice::ReadOnly))
        places.append(QString::fromUtf8(note.readAll()).trimmed());
    for (const QString &place : places)
        if (!place.isEmpty() && QDir(place).exists(QStringLiteral("us_income")))
            return QDir::cleanPath(place);
    fail(QStringLiteral("no sample data; --samples names their directory"));
}

} // namespace meridor
