// SPDX-License-Identifier: MIT
/// Messages of the library to its host and user. Both functions call the controller, so they are
/// defined in project/, which may include its class.
#pragma once

class QString;

namespace datainterface {

/// Adds a line to the host's log; does nothing while no controller is installed.
void noteToLog(const QString &text);

/// Shows a warning titled with the application's name. Does nothing unless the host has set its own
/// dialogs or has a user interface.
void warnUser(const QString &text);

} // namespace datainterface
