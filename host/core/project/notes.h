// SPDX-License-Identifier: MIT
/// Messages of work to its user, besides the result.
#pragma once
#include <QString>
#include "core/export.h"

namespace meridor {

/// Implemented by the caller of core.
class MERIDOR_EXPORT Notes {
public:
    Notes();
    virtual ~Notes();
    Notes(const Notes &);
    Notes &operator=(const Notes &);
    /// Information, one line.
    virtual void note(const QString &text) const = 0;
    /// A warning, such as that a file could be read in part only. The default calls note().
    virtual void warn(const QString &text) const;
};

/// Discards all messages.
class MERIDOR_EXPORT NoNotes : public Notes {
public:
    void note(const QString &text) const override;
};

} // namespace meridor
