#pragma once

#include "engine/image/deflate/DeflateSymbols.h"

#include <span>

namespace pagestack {

/// How often the symbols of a block occur.
struct SymbolCounts
{
    std::array<std::uint32_t, literalSymbols> literals {}; ///< with the end and the lengths
    std::array<std::uint32_t, distanceSymbols> distances {};
};

/// What literals and matches will about cost, in sixteenths of a bit.
class MatchPrices
{
public:
    static constexpr int perBit = 16;

    /// Guesses them before the first block: by the literals of `bytes`, which are not empty.
    void guess(std::span<const std::uint8_t> bytes);
    /// Takes those of a block that had `counts`.
    void learn(const SymbolCounts& counts);

    std::uint32_t literal(std::uint8_t value) const { return m_literals[value]; }
    std::uint32_t match(std::size_t length, unsigned distance) const
    {
        return m_lengths[length] + std::uint32_t { m_distances[distanceSymbol(distance)] };
    }

private:
    std::array<std::uint16_t, 256> m_literals {};
    std::array<std::uint16_t, longestMatch + 1> m_lengths {};
    std::array<std::uint16_t, distanceSymbols> m_distances {};
};

} // namespace pagestack
