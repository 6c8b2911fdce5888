// SPDX-License-Identifier: MIT
#include "frame/dialogs.h"
#include <QCoreApplication>
#include <QMessageBox>
#include <QProgressDialog>
#include "datainterface/VORNExceptionDlg.h"
#include "datainterface/VORN_Progress.h"
#include "frame/frameState.h"

namespace datainterface {
namespace {

HostDialogs *gHostDialogs = nullptr;

/// Dialogs of Qt's widgets, for use on the main thread. A call that runs events can also run a slot
/// of the host that calls EndProgress, so mBar is tested again after it.
class QtDialogs final : public HostDialogs {
public:
    void BeginProgress(const QString &title, const QString &label,
                       const QString &cancelText) override
    {
        mBar = new QProgressDialog(label, cancelText, 0, 100, nullptr,
                                   Qt::CustomizeWindowHint | Qt::WindowTitleHint
                                       | Qt::WindowSystemMenuHint);
        mBar->setObjectName(QStringLiteral("ProgressBar"));
        mBar->setModal(true);
        mBar->setWindowTitle(title);
        mBar->setMinimumDuration(500);
        mBar->show();
    }

    void SetProgressLabel(const QString &text) override { mBar->setLabelText(text); }

    void SetProgressPercent(int percent) override
    {
        pump([this, percent] { mBar->setValue(percent); });
    }

    bool PollProgress() override
    {
        pump([] { QCoreApplication::processEvents(); });
        return !mBar || !mBar->wasCanceled();
    }

    void SetProgressButton(const QString &text, bool resetOnCancel) override
    {
        mBar->setCancelButtonText(text);
        mBar->setAutoClose(resetOnCancel);
    }

    void ResetProgress() override
    {
        if (mBar)
            mBar->reset();
    }

    void EndProgress() override
    {
        // A slot that was called by the bar must not delete it before that call returns.
        if (mPumping > 0) {
            mBar->hide();
            mBar->deleteLater();
        } else {
            delete mBar;
        }
        mBar = nullptr;
    }

    void ShowWarning(const QString &title, const QString &text) override
    {
        QMessageBox::warning(nullptr, title, text, QMessageBox::Ok);
    }

    void ShowException(const QString &text, const QString &what, const QString &details) override
    {
        VORNExceptionDlg(text, what, details).exec();
    }

private:
    template <class Call> void pump(Call call)
    {
        struct Pumping {
            explicit Pumping(int &depth) : mDepth(depth) { ++mDepth; }
            ~Pumping() { --mDepth; }
            int &mDepth;
        } const pumping(mPumping);
        call();
    }

    QProgressDialog *mBar = nullptr;
    int mPumping = 0; ///< depth of nested calls that run events
};

} // namespace

HostDialogs *hostDialogs()
{
    return gHostDialogs;
}

HostDialogs *dialogs()
{
    return gHostDialogs ? gHostDialogs : VORN_GetQtDialogs();
}

} // namespace datainterface

HostDialogs::HostDialogs() = default;
HostDialogs::~HostDialogs() = default;

void HostDialogs::SetProgressButton(const QString &, bool)
{
}

void HostDialogs::ResetProgress()
{
}

void VORN_SetHostDialogs(HostDialogs *dialogs)
{
    VORN_Progress::Close();
    datainterface::gHostDialogs = dialogs;
}

HostDialogs *VORN_GetQtDialogs()
{
    static datainterface::QtDialogs qtDialogs;
    return datainterface::canShowWidgets() ? &qtDialogs : nullptr;
}
