// SPDX-License-Identifier: MIT
#include "cli/terminalProgress.h"
#include <QApplication>
#include <QEvent>
#include <QMessageBox>
#include <QProgressDialog>
#include <cstdio>
#include <unistd.h>
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "cli/interrupt.h"
#include "core/project/catalog.h"

namespace meridor {
namespace {

constexpr int kBarWidth = 30;
constexpr int kPollMilliseconds = 80;

} // namespace

TerminalProgress::TerminalProgress(bool visible) : mVisible(visible && ::isatty(STDERR_FILENO))
{
    qApp->installEventFilter(this);
    connect(&mTimer, &QTimer::timeout, this, &TerminalProgress::poll);
}

TerminalProgress::~TerminalProgress()
{
    wipe();
}

bool TerminalProgress::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Show) {
        if (auto *dialog = qobject_cast<QProgressDialog *>(watched)) {
            follow(dialog);
        } else if (auto *box = qobject_cast<QMessageBox *>(watched)) {
            wipe();
            controller().AddToLog(box->text(), false);
            QTimer::singleShot(0, box, &QDialog::accept);
        } else if (auto *other = qobject_cast<QDialog *>(watched)) {
            QTimer::singleShot(0, other, &QDialog::reject);
        }
    }
    return QObject::eventFilter(watched, event);
}

void TerminalProgress::follow(QProgressDialog *dialog)
{
    mDialog = dialog;
    connect(dialog, &QObject::destroyed, this, [this] {
        mTimer.stop();
        wipe();
    });
    mTimer.start(kPollMilliseconds);
}

void TerminalProgress::poll()
{
    if (!mDialog)
        return;
    if (interrupted() && !mDialog->wasCanceled()) {
        mDialog->cancel();
        return;
    }
    draw(qMax(0, mDialog->value()), mDialog->labelText());
}

void TerminalProgress::draw(int percent, const QString &text)
{
    if (!mVisible)
        return;
    const int filled = kBarWidth * qBound(0, percent, 100) / 100;
    const QString line =
        QStringLiteral("[%1%2] %3%  %4")
            .arg(QString(filled, QLatin1Char('#')), QString(kBarWidth - filled, QLatin1Char('.')))
            .arg(percent, 3)
            .arg(text.left(40));
    if (line == mShown)
        return;
    std::fprintf(stderr, "\r%s\033[K", line.toUtf8().constData());
    std::fflush(stderr);
    mShown = line;
}

void TerminalProgress::wipe()
{
    if (mShown.isEmpty())
        return;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    mShown.clear();
}

void Progress::report(int percent, const char *text) const
{
    const bool goOn = VORN_Progress::UpdateProgress(percent, text);
    if (!goOn || interrupted())
        cancelled();
}

} // namespace meridor
