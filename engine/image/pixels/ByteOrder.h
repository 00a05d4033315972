#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace pagestack {

/// The unsigned number that at most eight `bytes` of a file hold.
inline std::uint64_t numberIn(std::span<const std::uint8_t> bytes, bool isBigEndian)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i)
        value = value << 8U | bytes[isBigEndian ? i : bytes.size() - 1 - i];
    return value;
}

/// Fills `bytes` with the low bytes of `value`.
inline void putNumber(std::span<std::uint8_t> bytes, std::uint64_t value, bool isBigEndian)
{
    for (std::size_t i = 0; i < bytes.size(); ++i, value >>= 8U)
        bytes[isBigEndian ? bytes.size() - 1 - i : i] = static_cast<std::uint8_t>(value);
}

} // namespace pagestack
