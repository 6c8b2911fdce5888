// SPDX-License-Identifier: MIT
/// How far work is.
#pragma once
#include <QString>
#include <functional>
#include "core/export.h"
#include "datainterface/VORN_Progress.h"

namespace meridor {

/// Told the percent of the work at hand and what is being done; -1 when the work is over.
using ProgressReport = std::function<void(int percent, const QString &text)>;

/// One long piece of work for a scope. There is one at a time: what is nested reports to it by
/// parts. It is the library's own bar, so that work inside the library moves the same one.
class MERIDOR_EXPORT Progress {
public:
    Progress(const char *title, const char *label) : mBar(title, label, "Cancel") {}
    /// Raises the cancel. @param percent  of this scope's work.
    void report(int percent, const char *text = nullptr) const;
    /// Reports 0 to 100 of a part of it.
    auto part(int from, int to) const
    {
        return [this, from, to](int percent) { report(from + (to - from) * percent / 100); };
    }

private:
    VORN_Progress mBar;
};

} // namespace meridor
