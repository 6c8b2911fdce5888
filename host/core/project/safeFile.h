// SPDX-License-Identifier: MIT
/// Files that are whole or not there: written beside their target and moved over it once complete.
#pragma once
#include <QString>
#include <functional>

namespace meridor {

/// Raises a Failure when the target is there and may not be replaced, or its directory is not.
void requireWritable(const QString &target, bool overwrite);

/// Calls `write` with the name of a new empty file in the target's directory (with the target's
/// extension), brings what was written to the disk, and renames it to the target. When `write`
/// gives false or raises, or the disk refuses, the target is as it was and the new file is gone. A
/// link is followed. @return false when `write` gave false
bool replaceFile(const QString &target, const std::function<bool(const QString &)> &write);

} // namespace meridor
