// SPDX-License-Identifier: MIT
#include "desk/window/logPanel.h"
#include <QClipboard>
#include <QFile>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextCursor>
#include <QVBoxLayout>
#include "core/project/failure.h"
#include "core/project/outputFile.h"
#include "desk/project/workspace.h"
#include "desk/views/saveName.h"

namespace meridor {

LogPanel::LogPanel(Workspace &workspace, QWidget *parent)
    : QWidget(parent), mWorkspace(workspace), mText(new QPlainTextEdit)
{
    mText->setObjectName(QStringLiteral("logText"));
    mText->setAccessibleName(tr("Command lines of this session"));
    mText->setReadOnly(true);
    mText->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    mText->setLineWrapMode(QPlainTextEdit::NoWrap);
    mText->setTabChangesFocus(true);
    mText->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    auto *const copyButton = new QPushButton(tr("Copy"));
    copyButton->setObjectName(QStringLiteral("logCopy"));
    connect(copyButton, &QPushButton::clicked, this, &LogPanel::copy);
    auto *const save = new QPushButton(tr("Save as script..."));
    save->setObjectName(QStringLiteral("logSave"));
    connect(save, &QPushButton::clicked, this, &LogPanel::askSave);
    auto *const buttons = new QVBoxLayout;
    buttons->addWidget(copyButton);
    buttons->addWidget(save);
    buttons->addStretch();
    auto *const row = new QHBoxLayout(this);
    row->addWidget(mText, 1);
    row->addLayout(buttons);
    ActionLog &log = workspace.log();
    const auto showAll = [this] {
        mText->setPlainText(mWorkspace.log().lines().join(QLatin1Char('\n')));
        mText->moveCursor(QTextCursor::End);
        mText->moveCursor(QTextCursor::StartOfBlock);
    };
    connect(&log, &ActionLog::added, mText, &QPlainTextEdit::appendPlainText);
    connect(&log, &ActionLog::rewritten, this, showAll);
    showAll();
}

void LogPanel::copy()
{
    // A selection of several lines has paragraph separators.
    QString text = mText->textCursor().selectedText().replace(QChar(0x2029), QLatin1Char('\n'));
    if (text.isEmpty())
        text = mWorkspace.log().script();
    QGuiApplication::clipboard()->setText(text);
}

bool LogPanel::saveScript(const QString &file)
{
    return mWorkspace.look([&] {
        const QByteArray script = mWorkspace.log().script().toUtf8();
        writeOutput(file, [&](QIODevice &out) { writeWhole(out, script, file); });
        if (!isStream(file)
            && !QFile::setPermissions(file,
                                      QFile::permissions(file) | QFile::ExeOwner | QFile::ExeUser))
            fail(tr("%1 cannot be made executable").arg(file));
    });
}

void LogPanel::askSave()
{
    const QString file = askSaveName(this, tr("Save the log as a script"), tr("Scripts (*.sh)"));
    if (!file.isEmpty() && saveScript(file))
        mWorkspace.tell(tr("Saved as %1").arg(file));
}

} // namespace meridor
