// SPDX-License-Identifier: MIT
/// How a user stops work: the work asks between its steps.
#pragma once
#include <functional>
#include "core/export.h"

namespace meridor {

/// True asks the work to stop. Called often, on the thread that works.
using Cancel = std::function<bool()>;

/// Whether the user of the running session asked to stop; false without a session.
MERIDOR_EXPORT bool isCancelled();
/// Raises the cancel then.
MERIDOR_EXPORT void stopIfCancelled();

} // namespace meridor
