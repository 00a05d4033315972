#pragma once

#include <cstdint>
#include <cstring>

namespace pagestack {

/// The number of the machine's byte order at `from`, which need not be aligned.
template <typename Value>
Value loadSample(const std::uint8_t* from)
{
    Value value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

template <typename Value>
void storeSample(std::uint8_t* to, Value value)
{
    std::memcpy(to, &value, sizeof value);
}

/// Brings a sample of 16 bits to 8, rounded.
constexpr std::uint8_t toByte(std::uint16_t sample)
{
    return static_cast<std::uint8_t>((sample * 255U + 32767U) / 65535U);
}

/// Whether samples of so many bits lie in the byte order of the file; others are packed bits.
constexpr bool hasByteOrder(int bits)
{
    return bits == 16 || bits == 24 || bits == 32 || bits == 64;
}

} // namespace pagestack
