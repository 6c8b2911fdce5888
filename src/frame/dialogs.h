// SPDX-License-Identifier: MIT
/// Who shows the progress bar, warnings and failures.
#pragma once
#include "datainterface/HostDialogs.h"

namespace datainterface {

/// The host's own dialogs; null when it set none.
HostDialogs *hostDialogs();

/// The host's dialogs, else Qt's where a QApplication exists, else null: a library never aborts its
/// host for want of one.
HostDialogs *dialogs();

} // namespace datainterface
