// SPDX-License-Identifier: MIT
/// What the library shows to the user while it works: the progress bar, and the texts that wait for
/// an answer. A host that has no windows, or other ones, takes them over.
#pragma once
#include <QString>
#include "datainterface/export.h"

/// The host's own progress bar and messages, in place of Qt's dialogs. A process needs no
/// QApplication for them, and the library runs no events of its own while they are set.
///
/// There is one bar at a time: BeginProgress and EndProgress come in pairs, the other operations of
/// the bar between them. Nothing is called under the testing flag.
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
    /// @param percent  of the whole bar, sections taken into account. Not limited to 0 to 100.
    virtual void SetProgressPercent(int percent) = 0;
    /// Called behind each report and by each poll of the work: the place to run events.
    /// @return false to cancel the work.
    virtual bool PollProgress() = 0;
    /// Another text for the cancel button; here nothing happens.
    /// @param resetOnCancel  a cancel ends the present step alone: see ResetProgress.
    virtual void SetProgressButton(const QString &text, bool resetOnCancel);
    /// A cancelled step was given up under `resetOnCancel`: the next poll goes on again. Here
    /// nothing happens.
    virtual void ResetProgress();
    /// Called by destructors: it must not throw.
    virtual void EndProgress() = 0;

    /// See VORN_ShowWarningDialog.
    virtual void ShowWarning(const QString &title, const QString &text) = 0;
    /// See VORN_ShowExceptionDialog.
    virtual void ShowException(const QString &text, const QString &what,
                               const QString &details) = 0;
};

/// Installs the host's dialogs, which stay the host's; null brings Qt's back. A progress bar that
/// is up is closed first. While dialogs are set, warnings go to them whatever HasGUI says.
DATAINTERFACE_EXPORT void VORN_SetHostDialogs(HostDialogs *dialogs);
