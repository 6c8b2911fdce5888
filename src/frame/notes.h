// SPDX-License-Identifier: MIT
/// What the library tells its host or user beside its results. The controller takes both, so they
/// are defined where it is known, in project/.
#pragma once

class QString;

namespace datainterface {

/// A line in the host's log; lost while no controller is installed.
void noteToLog(const QString &text);

/// A warning under the application's name, when the host has dialogs of its own or a user interface.
void warnUser(const QString &text);

} // namespace datainterface
