// SPDX-License-Identifier: MIT
/// What work has to say besides its result.
#pragma once
#include <QString>
#include "core/export.h"

namespace meridor {

/// Implemented by whoever asks for work.
class MERIDOR_EXPORT Notes {
public:
    Notes();
    virtual ~Notes();
    Notes(const Notes &);
    Notes &operator=(const Notes &);
    /// Something worth knowing, one line.
    virtual void note(const QString &text) const = 0;
    /// Something that the user has to know: what was read is not what was meant. Here it is a note.
    virtual void warn(const QString &text) const;
};

/// For work whose notes nobody wants.
class MERIDOR_EXPORT NoNotes : public Notes {
public:
    void note(const QString &text) const override;
};

} // namespace meridor
