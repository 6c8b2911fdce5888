// SPDX-License-Identifier: MIT
/// How a long operation reports progress to its caller.
#pragma once

namespace fennimark {

/// Receives the percentage done and a text, which may be null. Returns false to cancel the
/// operation.
using ProgressCallback = bool (*)(int percent, const char *text);

} // namespace fennimark
