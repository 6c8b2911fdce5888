// SPDX-License-Identifier: MIT
/// SIGINT, SIGTERM and SIGHUP: the first one sets a flag that asks the running work to stop, a
/// second one of the same kind ends the process.
#pragma once

namespace meridor {

void watchInterrupts();
bool interrupted();

} // namespace meridor
