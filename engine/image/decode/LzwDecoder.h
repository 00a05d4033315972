#pragma once

#include <cstdint>
#include <span>

namespace pagestack {

/// Decodes a strip or tile of LZW data (TIFF 6.0, section 13) as far as `to` is full. Returns
/// false for whatever a sound writer would not make: data that end before, codes of no meaning, a
/// table that is not emptied in time, the bit order from before TIFF 5.0; `to` then has anything.
/// Any thread.
bool decodeLzw(std::span<const std::uint8_t> encoded, std::span<std::uint8_t> to);

} // namespace pagestack
