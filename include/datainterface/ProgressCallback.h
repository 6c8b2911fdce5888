// SPDX-License-Identifier: MIT
/// The geometry library's progress callback under the name that this library's functions use.
#pragma once
#include "fennimark/ProgressCallback.h"

using fennimark::ProgressCallback;
