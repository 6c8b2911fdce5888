// SPDX-License-Identifier: MIT
#include "desk/window/startPage.h"
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>
#include "desk/window/recoveryBar.h"
#include "desk/window/settings.h"

namespace meridor {
namespace {

QLabel *makeHeading(const QString &text, double size)
{
    auto *const label = new QLabel(text);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * size);
    font.setBold(true);
    label->setFont(font);
    return label;
}

} // namespace

StartPage::StartPage(QWidget *parent)
    : QWidget(parent),
      mRecoveries(new QVBoxLayout),
      mRecent(new QListWidget),
      mTrouble(new QLabel),
      mUnlocked(new QPushButton(tr("&Look at it; changes are saved under another name")))
{
    setObjectName(QStringLiteral("startPage"));
    setAccessibleName(tr("Start"));
    auto *const column = new QVBoxLayout;
    column->addLayout(mRecoveries);
    column->addWidget(makeHeading(tr("Meridor"), 2.2));
    auto *const subtitle = new QLabel(tr("Maps, graphs and statistics in space and time"));
    column->addWidget(subtitle);
    mTrouble->setObjectName(QStringLiteral("startTrouble"));
    mTrouble->setWordWrap(true);
    mTrouble->setTextFormat(Qt::PlainText);
    mTrouble->setTextInteractionFlags(Qt::TextSelectableByMouse);
    mTrouble->hide();
    column->addWidget(mTrouble);
    mUnlocked->setObjectName(QStringLiteral("startUnlocked"));
    mUnlocked->hide();
    connect(mUnlocked, &QPushButton::clicked, this, [this] { Q_EMIT unlockedWanted(mHeld); });
    column->addWidget(mUnlocked, 0, Qt::AlignLeft);
    column->addSpacing(fontMetrics().height());

    auto *const buttons = new QHBoxLayout;
    const auto addButton = [&](const char *name, const QString &text, void (StartPage::*wanted)()) {
        auto *const button = new QPushButton(text);
        button->setObjectName(QLatin1String(name));
        connect(button, &QPushButton::clicked, this, wanted);
        buttons->addWidget(button);
    };
    addButton("startOpen", tr("&Open a project..."), &StartPage::openWanted);
    addButton("startImport", tr("&Import a map or grid..."), &StartPage::importWanted);
    addButton("startSample", tr("Open the &sample"), &StartPage::sampleWanted);
    buttons->addStretch();
    column->addLayout(buttons);
    auto *const hint =
        new QLabel(tr("Or drop a project, or any map, table or grid, on this window."));
    column->addWidget(hint);
    column->addSpacing(fontMetrics().height());

    auto *const heading = makeHeading(tr("&Recent projects"), 1.1);
    heading->setBuddy(mRecent);
    column->addWidget(heading);
    mRecent->setObjectName(QStringLiteral("recentProjects"));
    mRecent->setAccessibleName(tr("Recent projects"));
    mRecent->setFrameShape(QFrame::NoFrame);
    connect(mRecent, &QListWidget::itemActivated, this, [this](const QListWidgetItem *item) {
        Q_EMIT projectWanted(item->data(Qt::UserRole).toString());
    });
    column->addWidget(mRecent, 1);

    const int em = fontMetrics().height();
    auto *const row = new QHBoxLayout(this);
    row->setContentsMargins(3 * em, 2 * em, 3 * em, em);
    row->addLayout(column);
    refresh();
}

void StartPage::refresh()
{
    const QStringList recent = recentProjects();
    mRecent->clear();
    for (const QString &project : recent) {
        const QFileInfo file(project);
        auto *const item =
            new QListWidgetItem(QStringLiteral("%1\n%2").arg(
                                    file.fileName(), QDir::toNativeSeparators(file.absolutePath())),
                                mRecent);
        item->setData(Qt::UserRole, project);
    }
    if (recent.isEmpty()) {
        auto *const item = new QListWidgetItem(tr("None yet"), mRecent);
        item->setFlags(Qt::NoItemFlags);
    }
    showRecoveries(Workspace::recoveries(recent));
}

void StartPage::showRecoveries(const QVector<Recovery> &found)
{
    while (QLayoutItem *const item = mRecoveries->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater(); // its button may be what brought this about
        delete item;
    }
    for (const Recovery &recovery : found) {
        auto *const bar = new RecoveryBar(recovery);
        connect(bar, &RecoveryBar::recoverWanted, this,
                [this, recovery] { Q_EMIT recoverWanted(recovery); });
        mRecoveries->addWidget(bar);
    }
}

void StartPage::showTrouble(const QString &text)
{
    mTrouble->setText(text);
    mTrouble->setVisible(!text.isEmpty());
    mUnlocked->hide();
}

void StartPage::offerUnlocked(const QString &project)
{
    mHeld = project;
    mUnlocked->show();
}

} // namespace meridor
