// SPDX-License-Identifier: MIT
/// The command line.
#pragma once

namespace meridor {

/// Parses the arguments, runs the verb and reports failures. Requires an application object.
/// @return the exit code.
int runCommandLine(int argc, char **argv);

} // namespace meridor
