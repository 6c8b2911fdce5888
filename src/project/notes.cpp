// SPDX-License-Identifier: MIT
#include "frame/notes.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/DiagnosticsAPI.h"
#include "datainterface/VersionAPI.h"
#include "frame/dialogs.h"
#include "frame/frameState.h"

namespace datainterface {

void noteToLog(const QString &text)
{
    if (controller())
        controller()->AddToLog(text, false);
}

void warnUser(const QString &text)
{
    if (hostDialogs() || (controller() && controller()->HasGUI()))
        VORN_ShowWarningDialog(applicationName, text);
}

} // namespace datainterface
