// SPDX-License-Identifier: MIT
/// How a command ends when it cannot do its work.
#pragma once
#include <QString>
#include <exception>

namespace meridor {

enum ExitCode : int { Done = 0, Failed = 1, WrongUsage = 2, Cancelled = 130 };

/// Unwinds to the command line's one boundary, which prints the text and ends with the code.
class Failure : public std::exception {
public:
    explicit Failure(const QString &text, ExitCode code = Failed) : mText(text), mCode(code) {}
    const QString &text() const { return mText; }
    ExitCode code() const { return mCode; }
    const char *what() const noexcept override { return "command failed"; }

private:
    QString mText;
    ExitCode mCode;
};

[[noreturn]] inline void fail(const QString &text)
{
    throw Failure(text);
}

[[noreturn]] inline void failUsage(const QString &text)
{
    throw Failure(text, WrongUsage);
}

[[noreturn]] inline void cancelled()
{
    throw Failure(QStringLiteral("cancelled"), Cancelled);
}

} // namespace meridor
