// SPDX-License-Identifier: MIT
/// The call stack as text, for the report of a broken internal condition.
#pragma once
#include <string>

namespace datainterface {

/// One line a frame, innermost first: two blanks, the function "+0x" the distance into it, and
/// where debug information exists " in file(line)". At most 64 frames, names cut at 1024 bytes.
/// Starts with the caller's caller. Empty when the stack cannot be told; never throws.
std::string stackText() noexcept;

} // namespace datainterface
