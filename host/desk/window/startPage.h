// SPDX-License-Identifier: MIT
/// What is shown while no project is open: recent projects, the sample, and work that was not saved.
#pragma once
#include <QVector>
#include <QWidget>
#include "desk/project/workspace.h"

class QLabel;
class QListWidget;
class QPushButton;
class QVBoxLayout;

namespace meridor {

class StartPage : public QWidget {
    Q_OBJECT
public:
    explicit StartPage(QWidget *parent = nullptr);
    /// Reads the recent projects and the unsaved work again.
    void refresh();
    /// A sentence about what went wrong; empty: none.
    void showTrouble(const QString &text);
    /// Offers, until the next showTrouble(), to open a project without its lock.
    void offerUnlocked(const QString &project);

Q_SIGNALS:
    void openWanted();
    void importWanted();
    void sampleWanted();
    void projectWanted(const QString &path);
    void unlockedWanted(const QString &path);
    void recoverWanted(const Recovery &recovery);

private:
    void showRecoveries(const QVector<Recovery> &found);

    QVBoxLayout *mRecoveries;
    QListWidget *mRecent;
    QLabel *mTrouble;
    QPushButton *mUnlocked;
    QString mHeld; ///< what mUnlocked opens
};

} // namespace meridor
