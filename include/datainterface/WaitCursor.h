// SPDX-License-Identifier: MIT
/// Shows the wait cursor for a scope.
#pragma once
#include "datainterface/export.h"

/// Does nothing without a QGuiApplication.
class DATAINTERFACE_EXPORT WaitCursor {
public:
    WaitCursor();
    ~WaitCursor();
    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;
};
