// SPDX-License-Identifier: MIT
/// Support for verbs that change a project. The new file is written beside the old one and replaces
/// it when it is complete.
#pragma once
#include "cli/commands/commands.h"

namespace meridor {

struct EditTarget {
    QString project;
    QString output; ///< empty: the project itself
    QString file() const { return output.isEmpty() ? project : output; }
};

/// Adds --output and --overwrite.
void targetOptions(const Command &command, EditTarget &target, Context &context);

enum class Values {
    Loaded, ///< with the project
    Packed  ///< those that `change` does not read are copied to the new file as they are
};

/// Loads the project, calls `change` and saves. Nothing is written if `change` throws.
void editProject(const EditTarget &target, const Context &context,
                 const std::function<void(Session &)> &change, Values values = Values::Loaded);

/// Prints the result of a verb while the project is open.
using Tell = std::function<void()>;

/// The same for a result that refers to the project. What `change` returns is called after the
/// project was saved, so that nothing is printed of a change that is not kept.
void editAndTell(const EditTarget &target, const Context &context,
                 const std::function<Tell()> &change);

/// For verbs that store their result only if they are asked to: calls `work` in editAndTell if
/// `stores`; else for the project as loadPacked opens it, which stays as it is.
/// @param option  the option that asks for the result to be stored; a Failure names it if --output
///                was given without it.
void editOrLook(bool stores, const char *option, const EditTarget &target, const Context &context,
                const std::function<Tell()> &work);

} // namespace meridor
