// SPDX-License-Identifier: MIT
#include "datainterface/DiagnosticsAPI.h"
#include <cstdarg>
#include "datainterface/ControllerBase.h"
#include "frame/dialogs.h"
#include "frame/frameState.h"

void VORN_AddToLog(const QString &text)
{
    datainterface::controller()->AddToLog(text, true);
}

void VORN_AddToLog(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QString text = QString::vasprintf(format, arguments);
    va_end(arguments);
    VORN_AddToLog(text);
}

void VORN_ShowWarningDialog(const QString &title, const QString &text)
{
    if (datainterface::isTesting())
        return;
    if (HostDialogs *dialogs = datainterface::dialogs())
        dialogs->ShowWarning(title, text);
}

void VORN_ShowExceptionDialog(const QString &text, const QString &what, const QString &details)
{
    if (HostDialogs *dialogs = datainterface::dialogs())
        dialogs->ShowException(text, what, details);
}
