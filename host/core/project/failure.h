// SPDX-License-Identifier: MIT
/// The exception that ends work which cannot be completed.
#pragma once
#include <QByteArray>
#include <QString>
#include <exception>
#include "core/export.h"

namespace meridor {

enum class FailureKind {
    Refused,  ///< the data or the disk do not allow the work
    Misused,  ///< the request is wrong, whatever the data
    Cancelled ///< the user stopped the work
};

/// Thrown by everything in core; the caller of core catches it and shows the text to the user.
class MERIDOR_EXPORT Failure : public std::exception {
public:
    /// @param setting  see setting(); a string literal, which is not copied.
    Failure(FailureKind kind, const QString &text, const char *setting = "");
    ~Failure() override;
    Failure(const Failure &);
    Failure &operator=(const Failure &) = delete;
    FailureKind kind() const { return mKind; }
    const QString &text() const { return mText; }
    /// The name of the setting that would change the outcome, such as "overwrite"; empty for none.
    /// A command line shows it as an option, a scripting interface as a keyword.
    const char *setting() const { return mSetting; }
    /// The text as UTF-8.
    const char *what() const noexcept override { return mWhat.constData(); }

private:
    FailureKind mKind;
    QString mText;
    const char *mSetting;
    QByteArray mWhat;
};

/// These throw a Failure of kind Refused, Misused and Cancelled.
[[noreturn]] MERIDOR_EXPORT void fail(const QString &text, const char *setting = "");
[[noreturn]] MERIDOR_EXPORT void failUsage(const QString &text, const char *setting = "");
[[noreturn]] MERIDOR_EXPORT void cancelled();

} // namespace meridor
