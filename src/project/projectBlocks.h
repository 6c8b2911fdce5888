// SPDX-License-Identifier: MIT
/// Saves and restores the blocks of a project file, with reports to the progress bar if one is
/// shown.
#pragma once
#include <QDataStream>

namespace datainterface {

/// RestoreProjectData, or leaves the blocks packed in the stream's file if the host chose this.
bool restoreBlocksOfFile(QDataStream &in, bool compressed);

} // namespace datainterface
