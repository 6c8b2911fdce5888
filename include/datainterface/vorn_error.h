// SPDX-License-Identifier: MIT
/// The exception that reports a broken internal condition, after which the model can no longer be
/// trusted.
#pragma once
#include <stdexcept>
#include <string>
#include "datainterface/export.h"

/// Raised when an internal condition of the library does not hold, never for a condition that a
/// user or a file can cause. `what()` is the condition in double quotes, a line break, and "(file,
/// line n)". The host catches it at its own boundary and shows VORN_ShowExceptionDialog.
class DATAINTERFACE_EXPORT vorn_error : public std::runtime_error {
public:
    /// @param text   the whole message, as what() returns it.
    vorn_error(const char *text, const std::string &stack);
    vorn_error(const vorn_error &other);
    ~vorn_error() override;

    /// The calls that led to the failure, one line a frame, innermost first; may be empty.
    std::string stack;
};
