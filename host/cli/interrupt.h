// SPDX-License-Identifier: MIT
/// Ctrl-C, a closed terminal and a polite kill as a flag: the first one asks the running work to
/// stop, a second one of its kind ends the process at once.
#pragma once

namespace meridor {

void watchInterrupts();
bool interrupted();

} // namespace meridor
