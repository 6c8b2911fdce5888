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

/// A modal warning with one button. Nothing under the testing flag or without a QApplication.
DATAINTERFACE_EXPORT void VORN_ShowWarningDialog(const QString &title, const QString &text);
/// Runs the exception dialog modally. Nothing without a QApplication.
/// @param text     what the user reads.
/// @param what     the failure's what(): the subject of the mail.
/// @param details  the stack text and whatever the host adds: the body of the mail.
DATAINTERFACE_EXPORT void VORN_ShowExceptionDialog(const QString &text, const QString &what,
                                                   const QString &details);
