// SPDX-License-Identifier: MIT
/// What the program keeps for its user between runs: recent projects, and the windows of each.
#pragma once
#include <QJsonObject>
#include <QStringList>

namespace meridor {

/// How the settings are used. A script neither depends on what the user did before nor changes it.
enum class SettingsUse {
    Kept,
    Read,   ///< nothing is kept
    Ignored ///< as if nothing had been kept; only the interval of recovery is read
};
void useSettings(SettingsUse use);

/// The latest first; those that exist no longer are left out.
QStringList recentProjects();
void noteRecentProject(const QString &project);
void forgetRecentProject(const QString &project);

/// The layout of the windows of a project; empty if none was kept.
QJsonObject keptLayout(const QString &project);
void keepLayout(const QString &project, const QJsonObject &layout);

/// Between two copies for recovery; 0: none are made.
int recoverySeconds();

} // namespace meridor
