// SPDX-License-Identifier: MIT
/// CRC-32C (Castagnoli), the checksum of the geometry file's chunks.
#pragma once
#include <cstddef>
#include <cstdint>

namespace fennimark {

/// Continues the checksum `crc`, which is 0 at the beginning, over `size` bytes. The checksum of
/// "123456789" is 0xE3069283.
std::uint32_t crc32c(std::uint32_t crc, const void *data, std::size_t size);

} // namespace fennimark
