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

/// True when widgets may be made: a QApplication exists. A library never aborts its host for want
/// of one.
bool canShowWidgets();

} // namespace datainterface
