// SPDX-License-Identifier: MIT
/// The progress bar and the messages that the library shows. A host without windows, or with
/// windows of its own, can replace them.
#pragma once
#include <QString>
#include "datainterface/export.h"

/// The host's own progress bar and messages, in place of Qt's dialogs. They need no QApplication,
/// and the library processes no events while they are set.
///
/// There is one bar at a time: calls of BeginProgress and EndProgress are paired, and the other
/// progress operations are called between them. Nothing is called under the testing flag.
class DATAINTERFACE_EXPORT HostDialogs {
public:
    HostDialogs();
    virtual ~HostDialogs();
    HostDialogs(const HostDialogs &) = delete;
    HostDialogs &operator=(const HostDialogs &) = delete;

    /// Shows the bar at 0 with a title, a label and the text of its cancel button.
    virtual void BeginProgress(const QString &title, const QString &label,
                               const QString &cancelText) = 0;
    virtual void SetProgressLabel(const QString &text) = 0;
    /// @param percent  position in the whole bar, after the mapping of sections. It can be outside
    ///                 0 to 100.
    virtual void SetProgressPercent(int percent) = 0;
    /// Called after each report and by each poll. A host can process events here.
    /// @return false to cancel the work.
    virtual bool PollProgress() = 0;
    /// Changes the text of the cancel button. The base class does nothing.
    /// @param resetOnCancel  whether a cancel ends only the present step; see ResetProgress.
    virtual void SetProgressButton(const QString &text, bool resetOnCancel);
    /// Called when a cancelled step has ended under `resetOnCancel`: clear the cancel, so that the
    /// next poll returns true. The base class does nothing.
    virtual void ResetProgress();
    /// Called by destructors: it must not throw.
    virtual void EndProgress() = 0;

    /// See VORN_ShowWarningDialog.
    virtual void ShowWarning(const QString &title, const QString &text) = 0;
    /// See VORN_ShowExceptionDialog.
    virtual void ShowException(const QString &text, const QString &what,
                               const QString &details) = 0;
};

/// Installs the host's dialogs, which the host continues to own; null restores Qt's. An open
/// progress bar is closed first. While dialogs are set, warnings go to them whatever
/// ControllerBase::HasGUI returns.
DATAINTERFACE_EXPORT void VORN_SetHostDialogs(HostDialogs *dialogs);

/// Qt's dialogs, which the library shows while the host has set none. A host whose dialogs replace
/// only some of them passes the other calls on. Valid until the process ends; null without a
/// QApplication.
DATAINTERFACE_EXPORT HostDialogs *VORN_GetQtDialogs();
