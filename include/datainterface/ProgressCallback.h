// SPDX-License-Identifier: MIT
/// How long work reports to whoever started it.
#pragma once

/// Percent and text (may be null); false asks the work to stop.
using ProgressCallback = bool (*)(int percent, const char *text);
