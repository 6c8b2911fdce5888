// SPDX-License-Identifier: MIT
/// The process-wide state of the frame: the host's controller and the testing flag.
#pragma once

class ControllerBase;

namespace datainterface {

/// The controller that the host installed; null before InitializeCInterface. Not owned.
ControllerBase *controller();
void setController(ControllerBase *controller);

/// True between VORN_InitializeForTesting and VORN_DoneWithTesting: no windows, no progress bar.
bool isTesting();
void setTesting(bool testing);

/// True when a QApplication exists. Making a widget without one would abort the process.
bool canShowWidgets();

} // namespace datainterface
