// SPDX-License-Identifier: MIT
#include "desk/window/helpPages.h"
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace meridor {

QUrl helpPage(const QString &topic)
{
    const bool namesPage = topic.section(QLatin1Char('#'), 0, 0).endsWith(QLatin1String(".md"));
    const QString page =
        namesPage ? topic.section(QLatin1Char('#'), 0, 0) : QStringLiteral("desk.md");
    const QString heading = namesPage ? topic.section(QLatin1Char('#'), 1) : topic;
    if (page.contains(QLatin1Char('/')))
        return {};
    const QString program = QCoreApplication::applicationDirPath();
    QStringList folders{program + QStringLiteral("/../share/meridor/help")};
    // This file is written by the build and not installed.
    QFile note(program + QStringLiteral("/help-directory"));
    if (note.open(QIODevice::ReadOnly))
        folders.append(QString::fromUtf8(note.readAll()).trimmed());
    for (const QString &folder : std::as_const(folders)) {
        const QString file = QDir(folder).filePath(page);
        if (!QFileInfo::exists(file))
            continue;
        QUrl url = QUrl::fromLocalFile(QFileInfo(file).canonicalFilePath());
        if (!heading.isEmpty())
            url.setFragment(heading);
        return url;
    }
    return {};
}

} // namespace meridor
