#pragma once

#include <cstdint>
#include <span>

namespace pagestack {

/// Decodes a strip or tile of LZW data (TIFF 6.0, section 13) that fills `to`. Returns false for
/// whatever a sound writer would not make: data that end before or go on behind, codes of no
/// meaning, a table that is not emptied in time, the bit order from before TIFF 5.0; `to` then has
/// anything. Any thread.
bool decodeLzw(std::span<const std::uint8_t> encoded, std::span<std::uint8_t> to);

/// How many bytes such data decode to, up to their end or to where they stop making sense. 0 for
/// the bit order from before TIFF 5.0. Any thread.
std::uint64_t decodedLzwBytes(std::span<const std::uint8_t> encoded);

} // namespace pagestack
