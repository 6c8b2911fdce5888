// SPDX-License-Identifier: MIT
/// Work on rows of a picture by two threads.
#pragma once
#include <functional>

namespace meridor {

/// Calls `work(first, end)` for bands that together are the rows `first` to `end` - 1, on this
/// thread and, when `threads` is above 1, on further ones of the global thread pool that are free.
/// Returns when all bands are done. The work must not call the library, which knows one thread
/// alone. What it raises is raised here once all threads have ended.
/// @param bandsPerThread  several even out work that is not spread evenly over the rows.
void inBands(int first, int end, int threads, int bandsPerThread,
             const std::function<void(int, int)> &work);

} // namespace meridor
