// SPDX-License-Identifier: MIT
/// Options that the verbs of pictures and classes share.
#pragma once
#include <optional>
#include "cli/commands/command.h"
#include "core/render/classification.h"

namespace meridor {

/// A rule with the limits of a text, checked. Raises a Failure of kind Misused for parts that
/// contradict each other.
/// @param breaks  numbers separated by commas; may be empty.
/// @param prefix  of the names of settings in messages.
ClassRule checkedRule(ClassRule rule, const QString &breaks, bool isCountGiven,
                      const QString &prefix = QStringLiteral("--"));

/// --method, --count, --breaks, --palette and --reverse.
class ClassOptions {
public:
    void addTo(const Command &command, int mostClasses);
    /// Raises a Failure of kind Misused for options that contradict each other.
    ClassRule rule() const;

private:
    ClassRule mRule;
    QString mBreaks;
    std::optional<Setting> mCount; ///< of a command that has these options
};

/// --width, --height and --scale.
class SizeOptions {
public:
    void addTo(const Command &command);
    PictureSize size() const { return {QSize(mWidth, mHeight), mScale}; }

private:
    int mWidth = 1600;
    int mHeight = 1000;
    double mScale = 1;
};

} // namespace meridor
