// SPDX-License-Identifier: MIT
/// Options that the verbs of pictures and classes share.
#pragma once
#include "cli/commands/command.h"
#include "core/render/classification.h"

namespace meridor {

/// --method, --count, --breaks, --palette and --reverse.
class ClassOptions {
public:
    void addTo(const Command &command, int mostClasses);
    /// Raises a Failure of kind Misused for options that contradict each other.
    ClassRule rule() const;

private:
    ClassRule mRule;
    QString mBreaks;
    Setting mCount{nullptr};
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
