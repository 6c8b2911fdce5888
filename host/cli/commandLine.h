// SPDX-License-Identifier: MIT
/// The command line as a whole.
#pragma once

namespace meridor {

/// Parses, runs the chosen verb and reports how it ended. Needs the application object. @return the
/// exit code
int runCommandLine(int argc, char **argv);

} // namespace meridor
