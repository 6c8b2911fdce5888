// SPDX-License-Identifier: MIT
// CRC-32C by the processor's own instruction, when it has one (tested at run time), otherwise by
// eight tables and eight bytes a step: M. Kounavis and F. Berry, "A systematic approach to building
// high performance, software-based, CRC generators", ISCC 2005. Both give the same checksums.
#include "file/crc32c.h"
#include <array>
#include <cstring>

namespace fennimark {
namespace {

constexpr std::uint32_t kPolynomial = 0x82f63b78U; // reflected

constexpr std::array<std::array<std::uint32_t, 256>, 8> makeTables()
{
    std::array<std::array<std::uint32_t, 256>, 8> tables{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t crc = i;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1U) ? kPolynomial : 0U);
        tables[0][i] = crc;
    }
    for (std::size_t t = 1; t < 8; ++t) {
        for (std::size_t i = 0; i < 256; ++i)
            tables[t][i] = (tables[t - 1][i] >> 8) ^ tables[0][tables[t - 1][i] & 0xffU];
    }
    return tables;
}

constexpr auto kTables = makeTables();

#if defined(__x86_64__) && defined(__GNUC__)
#define FENNIMARK_HAS_CRC_INSTRUCTION 1
// The instruction has a latency of three cycles and a throughput of one a cycle. So three
// independent lanes of kLane bytes are processed at the same time:
//
//     | first lane | second lane | third lane |
//
// The checksum of the whole is shifted(shifted(first) ^ second) ^ third, where `shifted` appends a
// lane of zeros to a checksum. That is a linear map of its bits, which is tabulated.
constexpr std::size_t kLane = 4096;

using Map = std::array<std::uint32_t, 32>; // a linear map: the image of each bit

constexpr std::uint32_t mapped(const Map &map, std::uint32_t crc)
{
    std::uint32_t result = 0;
    for (std::size_t bit = 0; bit < 32; ++bit)
        result ^= (crc >> bit & 1U) ? map[bit] : 0U;
    return result;
}

constexpr std::array<std::array<std::uint32_t, 256>, 4> makeLaneTables()
{
    Map map{};
    for (std::size_t bit = 0; bit < 32; ++bit) {
        const std::uint32_t crc = std::uint32_t(1) << bit;
        map[bit] = (crc >> 8) ^ kTables[0][crc & 0xffU];
    }
    for (std::size_t zeros = 1; zeros < kLane; zeros *= 2) {
        Map twice{};
        for (std::size_t bit = 0; bit < 32; ++bit)
            twice[bit] = mapped(map, map[bit]);
        map = twice;
    }
    std::array<std::array<std::uint32_t, 256>, 4> tables{};
    for (std::size_t t = 0; t < 4; ++t) {
        for (std::uint32_t i = 0; i < 256; ++i)
            tables[t][i] = mapped(map, i << (8 * t));
    }
    return tables;
}

constexpr auto kLaneTables = makeLaneTables();

std::uint32_t shifted(std::uint64_t crc)
{
    return kLaneTables[0][crc & 0xffU] ^ kLaneTables[1][crc >> 8 & 0xffU]
           ^ kLaneTables[2][crc >> 16 & 0xffU] ^ kLaneTables[3][crc >> 24 & 0xffU];
}

std::uint64_t wordAt(const unsigned char *bytes)
{
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// Continues the inverted `crc` over all whole words of 8 bytes. @return the number of these bytes.
__attribute__((target("sse4.2"))) std::size_t
wordsByInstruction(std::uint32_t &crc, const unsigned char *bytes, std::size_t size)
{
    std::uint64_t state = crc;
    std::size_t done = 0;
    for (; size - done >= 3 * kLane; done += 3 * kLane) {
        std::uint64_t second = 0, third = 0;
        const unsigned char *const lane = bytes + done;
        for (std::size_t i = 0; i < kLane; i += 8) {
            state = __builtin_ia32_crc32di(state, wordAt(lane + i));
            second = __builtin_ia32_crc32di(second, wordAt(lane + kLane + i));
            third = __builtin_ia32_crc32di(third, wordAt(lane + 2 * kLane + i));
        }
        state = shifted(shifted(state) ^ second) ^ third;
    }
    for (; size - done >= 8; done += 8)
        state = __builtin_ia32_crc32di(state, wordAt(bytes + done));
    crc = static_cast<std::uint32_t>(state);
    return done;
}
#endif

} // namespace

std::uint32_t crc32c(std::uint32_t crc, const void *data, std::size_t size)
{
    const auto *bytes = static_cast<const unsigned char *>(data);
    crc = ~crc;
#ifdef FENNIMARK_HAS_CRC_INSTRUCTION
    static const bool hasInstruction = __builtin_cpu_supports("sse4.2") != 0;
    if (hasInstruction) {
        const std::size_t done = wordsByInstruction(crc, bytes, size);
        bytes += done;
        size -= done;
    }
#endif
    for (; size >= 8; size -= 8, bytes += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, 8);
        word ^= crc;
        crc = 0;
        for (unsigned i = 0; i < 8; ++i)
            crc ^= kTables[7 - i][(word >> (8 * i)) & 0xffU];
    }
    for (; size > 0; --size, ++bytes)
        crc = (crc >> 8) ^ kTables[0][(crc ^ *bytes) & 0xffU];
    return ~crc;
}

} // namespace fennimark
