// SPDX-License-Identifier: MIT
/// CRC-32C (Castagnoli), the checksum of the geometry file's chunks.
#pragma once
#include <cstddef>
#include <cstdint>

namespace fennimark {

/// Continues `crc` (0 to begin with) over `size` bytes. "123456789" gives 0xE3069283.
std::uint32_t crc32c(std::uint32_t crc, const void *data, std::size_t size);

} // namespace fennimark
