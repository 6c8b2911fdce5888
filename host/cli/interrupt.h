// SPDX-License-Identifier: MIT
/// Ctrl-C as a flag: the first one asks the running work to stop, a second one ends the process at
/// once.
#pragma once

namespace meridor {

void watchInterrupts();
bool interrupted();
/// Raises the cancel when the user asked for it.
void stopIfInterrupted();

} // namespace meridor
