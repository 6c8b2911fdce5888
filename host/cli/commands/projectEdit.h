// SPDX-License-Identifier: MIT
/// Verbs that change a project. It is written whole beside the old file, which goes only when the
/// new one is complete.
#pragma once
#include "cli/commands/commands.h"

namespace meridor {

struct EditTarget {
    QString project;
    QString output; ///< empty: the project itself
    QString file() const { return output.isEmpty() ? project : output; }
};

/// --output and --overwrite.
void targetOptions(const Command &command, EditTarget &target, Context &context);

/// Loads, changes and saves; nothing is written when the change fails.
void editProject(const EditTarget &target, const Context &context,
                 const std::function<void(Session &)> &change);

} // namespace meridor
