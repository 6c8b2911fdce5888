// SPDX-License-Identifier: MIT
#include "desk/window/settings.h"
#include <QCryptographicHash>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSettings>

namespace meridor {
namespace {

constexpr int kMostRecent = 12;
constexpr int kRecoverySeconds = 60;

class Settings : public QSettings {
public:
    Settings()
        : QSettings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("meridor"),
                    QStringLiteral("meridor-desk"))
    {
    }
};

const QString kRecent = QStringLiteral("recent");
SettingsUse settingsUse = SettingsUse::Kept;

QString layoutKey(const QString &project)
{
    const QByteArray path = QFileInfo(project).absoluteFilePath().toUtf8();
    return QStringLiteral("layouts/")
           + QString::fromLatin1(QCryptographicHash::hash(path, QCryptographicHash::Sha1).toHex());
}

} // namespace

void useSettings(SettingsUse use)
{
    settingsUse = use;
}

QStringList recentProjects()
{
    if (settingsUse == SettingsUse::Ignored)
        return {};
    QStringList there;
    const QStringList kept = Settings().value(kRecent).toStringList();
    for (const QString &project : kept)
        if (QFileInfo::exists(project))
            there.append(project);
    return there;
}

void noteRecentProject(const QString &project)
{
    if (settingsUse != SettingsUse::Kept)
        return;
    Settings settings;
    QStringList recent = settings.value(kRecent).toStringList();
    recent.removeAll(project);
    recent.prepend(project);
    settings.setValue(kRecent, QStringList(recent.mid(0, kMostRecent)));
}

void forgetRecentProject(const QString &project)
{
    if (settingsUse != SettingsUse::Kept)
        return;
    Settings settings;
    QStringList recent = settings.value(kRecent).toStringList();
    recent.removeAll(project);
    settings.setValue(kRecent, recent);
}

QJsonObject keptLayout(const QString &project)
{
    if (settingsUse == SettingsUse::Ignored)
        return {};
    return QJsonDocument::fromJson(Settings().value(layoutKey(project)).toByteArray()).object();
}

void keepLayout(const QString &project, const QJsonObject &layout)
{
    if (settingsUse != SettingsUse::Kept)
        return;
    Settings().setValue(layoutKey(project), QJsonDocument(layout).toJson(QJsonDocument::Compact));
}

int recoverySeconds()
{
    return Settings().value(QStringLiteral("recoverySeconds"), kRecoverySeconds).toInt();
}

} // namespace meridor
