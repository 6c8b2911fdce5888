// SPDX-License-Identifier: MIT
/// The dialogs that show the progress bar, warnings and failures.
#pragma once
#include "datainterface/HostDialogs.h"

namespace datainterface {

/// The host's own dialogs; null when it set none.
HostDialogs *hostDialogs();

/// The host's dialogs, else Qt's where a QApplication exists, else null: making a widget without a
/// QApplication would abort the process.
HostDialogs *dialogs();

} // namespace datainterface
