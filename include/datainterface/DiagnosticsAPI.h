// SPDX-License-Identifier: MIT
/// What the user must read: notes in the host's log, warnings, and the report of a broken internal
/// condition.
#pragma once
#include <QString>
#include "datainterface/export.h"

/// Hands a note to the host's log (ControllerBase::AddToLog with the second argument true).
DATAINTERFACE_EXPORT void VORN_AddToLog(const QString &text);
/// The same for a printf format with the C library's flags, widths and lengths. "%s" reads UTF-8
/// and "%ls" UTF-16, both up to the precision; "%n" stores the number of UTF-16 units so far.
DATAINTERFACE_EXPORT void VORN_AddToLog(const char *format, ...);

/// A modal warning with one button, or what the host's dialogs make of it (HostDialogs). Nothing
/// under the testing flag, and without a QApplication where the host set no dialogs.
DATAINTERFACE_EXPORT void VORN_ShowWarningDialog(const QString &title, const QString &text);
/// Runs the exception dialog modally, or what the host's dialogs make of it. Nothing without a
/// QApplication where the host set no dialogs.
/// @param text     what the user reads.
/// @param what     the failure's what(): the subject of the mail.
/// @param details  the stack text and whatever the host adds: the body of the mail.
DATAINTERFACE_EXPORT void VORN_ShowExceptionDialog(const QString &text, const QString &what,
                                                   const QString &details);
