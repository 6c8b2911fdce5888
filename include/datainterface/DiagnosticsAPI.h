// SPDX-License-Identifier: MIT
/// Messages to the user: notes in the host's log, warnings, and the report of a broken internal
/// condition.
#pragma once
#include <QString>
#include "datainterface/export.h"

/// Passes a note to the host's log (ControllerBase::AddToLog with the second argument true).
DATAINTERFACE_EXPORT void VORN_AddToLog(const QString &text);
/// The same for a printf format with the C library's flags, widths and lengths. "%s" reads UTF-8
/// and "%ls" UTF-16, both up to the precision; "%n" stores the number of UTF-16 units so far.
DATAINTERFACE_EXPORT void VORN_AddToLog(const char *format, ...);

/// Shows a modal warning with one button, or calls HostDialogs::ShowWarning if the host set its own
/// dialogs. Does nothing under the testing flag, nor without both a QApplication and dialogs of the
/// host.
DATAINTERFACE_EXPORT void VORN_ShowWarningDialog(const QString &title, const QString &text);
/// Shows the exception dialog modally, or calls HostDialogs::ShowException if the host set its own
/// dialogs. Does nothing without both a QApplication and dialogs of the host.
/// @param text     the sentence that the user reads.
/// @param what     the failure's what(): the subject of the mail.
/// @param details  the stack text and whatever the host adds: the body of the mail.
DATAINTERFACE_EXPORT void VORN_ShowExceptionDialog(const QString &text, const QString &what,
                                                   const QString &details);
