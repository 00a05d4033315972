#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace pagestack {

/// The order of the lengths of the code of code lengths in a block: RFC 1951, 3.2.7.
constexpr std::array<std::uint8_t, 19> codeLengthOrder
    = { 16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15 };

/// Sets `lengths` to those of a complete prefix code for symbols that occur `counts` times: at most
/// `longest`, 0 for symbols that do not occur. At least two symbols get a code, since decoders
/// refuse other codes. At most 288 symbols and 2^(`longest` - 1); fewer than 2^31 occurrences.
void makeCodeLengths(std::span<const std::uint32_t> counts, int longest,
                     std::span<std::uint8_t> lengths);

/// Sets `words` to the code words of deflate (RFC 1951, 3.2.2) for `lengths` of at most 15, with
/// their first bit as the least significant one.
void makeCodeWords(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> words);

} // namespace pagestack
