// SPDX-License-Identifier: MIT
/// Reports to a caller's progress callback.
#pragma once
#include <QtGlobal>
#include "fennimark/ProgressCallback.h"

namespace fennimark {

/// Reports step i of n when i is a multiple of 256. False when the callback, which may be null,
/// returns false.
inline bool reported(ProgressCallback progress, int i, int n)
{
    return !progress || (i & 0xff) != 0 || progress(int(qint64(i) * 100 / n), nullptr);
}

} // namespace fennimark
