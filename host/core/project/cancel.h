// SPDX-License-Identifier: MIT
/// Cancelling: long work asks between its steps whether the user wants it to stop.
#pragma once
#include <functional>
#include "core/export.h"

namespace meridor {

/// Returns true to stop the work. Called often, on the thread that does the work.
using Cancel = std::function<bool()>;

/// Whether the user of the open session asked to stop; false if no session is open.
MERIDOR_EXPORT bool isCancelled();
/// Calls cancelled() if isCancelled().
MERIDOR_EXPORT void stopIfCancelled();

} // namespace meridor
