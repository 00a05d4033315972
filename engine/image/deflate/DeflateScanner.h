#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace pagestack {

/// Positions in a deflate stream, counted in bits from its start.
struct StreamEnd
{
    std::size_t lastBlock = 0; ///< the bit that marks the last block as the last one
    std::size_t end = 0; ///< behind the last block
};

/// Reads through a correct deflate stream without expanding it, in far less time than making it
/// took. `streamEndSlack` more bytes behind the stream must be readable.
StreamEnd findStreamEnd(std::span<const std::uint8_t> stream);
constexpr std::size_t streamEndSlack = 16;

} // namespace pagestack
