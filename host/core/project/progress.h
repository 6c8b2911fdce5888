// SPDX-License-Identifier: MIT
/// Progress of long work.
#pragma once
#include <QString>
#include <functional>
#include "core/export.h"
#include "datainterface/VORN_Progress.h"

namespace meridor {

/// Receives the percentage of the present work and a label; -1 when the work has ended.
using ProgressReport = std::function<void(int percent, const QString &text)>;
/// Receives the progress of calculations on plain values, 0 to 100; throws to stop.
using Meter = std::function<void(int)>;

/// The progress bar of one piece of work, for a scope. Only one may be open at a time; nested work
/// reports through part(). It opens the library's own bar, so that work inside the library advances
/// the same bar.
class MERIDOR_EXPORT Progress {
public:
    /// Raises a Failure of kind Misused if a bar is open.
    Progress(const char *title, const char *label);
    /// Raises a Failure of kind Cancelled if the user cancelled.
    /// @param percent  of the work of this scope.
    /// @param text     the new label; null keeps the present one.
    void report(int percent, const char *text = nullptr) const;
    /// A function that maps 0 to 100 to the range from `from` to `to` of this bar. It must not
    /// outlive this object.
    auto part(int from, int to) const
    {
        return [this, from, to](int percent) { report(from + (to - from) * percent / 100); };
    }

private:
    VORN_Progress mBar;
};

} // namespace meridor
