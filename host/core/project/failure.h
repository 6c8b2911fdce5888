// SPDX-License-Identifier: MIT
/// How work ends that cannot be done.
#pragma once
#include <QByteArray>
#include <QString>
#include <exception>
#include "core/export.h"

namespace meridor {

enum class FailureKind {
    Refused,  ///< the data or the disk do not allow it
    Misused,  ///< what was asked for makes no sense, whatever the data
    Cancelled ///< the user stopped it
};

/// Unwinds to the boundary of whoever asked for the work, who tells the text to the user.
class MERIDOR_EXPORT Failure : public std::exception {
public:
    /// @param setting  see setting(); a literal.
    Failure(FailureKind kind, const QString &text, const char *setting = "");
    ~Failure() override;
    Failure(const Failure &);
    Failure &operator=(const Failure &) = delete;
    FailureKind kind() const { return mKind; }
    const QString &text() const { return mText; }
    /// The name of the setting that would decide otherwise, such as "overwrite"; empty for none. A
    /// command line shows it as an option, a scripting interface as a keyword.
    const char *setting() const { return mSetting; }
    /// The text as UTF-8.
    const char *what() const noexcept override { return mWhat.constData(); }

private:
    FailureKind mKind;
    QString mText;
    const char *mSetting;
    QByteArray mWhat;
};

[[noreturn]] MERIDOR_EXPORT void fail(const QString &text, const char *setting = "");
[[noreturn]] MERIDOR_EXPORT void failUsage(const QString &text, const char *setting = "");
[[noreturn]] MERIDOR_EXPORT void cancelled();

} // namespace meridor
