// SPDX-License-Identifier: MIT
#include "core/project/failure.h"

namespace meridor {

Failure::Failure(FailureKind kind, const QString &text, const char *setting)
    : mKind(kind), mText(text), mSetting(setting), mWhat(text.toUtf8())
{
}

Failure::Failure(const Failure &) = default;
Failure::~Failure() = default;

void fail(const QString &text, const char *setting)
{
    throw Failure(FailureKind::Refused, text, setting);
}

void failUsage(const QString &text, const char *setting)
{
    throw Failure(FailureKind::Misused, text, setting);
}

void cancelled()
{
    throw Failure(FailureKind::Cancelled, QStringLiteral("cancelled"));
}

} // namespace meridor
