// SPDX-License-Identifier: MIT
#include "desk/window/recoveryBar.h"
#include <QFile>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>

namespace meridor {

RecoveryBar::RecoveryBar(const Recovery &recovery, QWidget *parent) : QFrame(parent)
{
    setObjectName(QStringLiteral("recoveryBar"));
    setAccessibleName(tr("Work that was not saved"));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::ToolTipBase);
    const QString name = recovery.project.isEmpty() ? tr("a project without a name")
                                                    : QFileInfo(recovery.project).fileName();
    auto *const label =
        new QLabel(tr("Work on %1 of %2 was not saved.")
                       .arg(name, QLocale().toString(recovery.saved, QLocale::ShortFormat)));
    label->setTextFormat(Qt::PlainText);
    label->setForegroundRole(QPalette::ToolTipText);
    label->setWordWrap(true);
    auto *const restore = new QPushButton(tr("Restore it"));
    restore->setObjectName(QStringLiteral("recover"));
    auto *const discard = new QPushButton(tr("Discard it"));
    discard->setObjectName(QStringLiteral("discardRecovery"));
    auto *const row = new QHBoxLayout(this);
    row->addWidget(label, 1);
    row->addWidget(restore);
    row->addWidget(discard);
    connect(restore, &QPushButton::clicked, this, &RecoveryBar::recoverWanted);
    connect(discard, &QPushButton::clicked, this, [this, file = recovery.file] {
        QFile::remove(file);
        hide();
        deleteLater();
    });
}

} // namespace meridor
