// SPDX-License-Identifier: MIT
/// The call stack as text, for the report of a broken internal condition.
#pragma once
#include <string>

namespace datainterface {

/// One line for each frame, innermost first: two blanks, the function's name, "+0x" and the offset
/// in it, and " in file(line)" where debug information exists. At most 64 frames; names are cut at
/// 1024 bytes. The first frame is the caller's caller. Empty when the stack cannot be read; never
/// throws.
std::string stackText() noexcept;

} // namespace datainterface
