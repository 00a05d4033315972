#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pagestack {

/// Encodes strips and tiles as LZW data (TIFF 6.0, section 13), code by code as libtiff does. One
/// thread at a time.
class LzwEncoder
{
public:
    /// The data of `samples`, which are not empty; valid until the next call.
    std::span<const std::uint8_t> encode(std::span<const std::uint8_t> samples);

private:
    /// Places for strings of two and more bytes. There are twice as many as a table can have.
    static constexpr int placeBits = 13;
    static constexpr std::size_t places = std::size_t { 1 } << placeBits;

    /// Of each string the code of all but its last byte, that byte, and its own code; 0: none.
    std::array<std::uint32_t, places> m_strings {};
    std::vector<std::uint8_t> m_bytes;
};

} // namespace pagestack
