#pragma once

#include "engine/image/deflate/BitWriter.h"

#include <array>
#include <span>

namespace pagestack {

/// The start of a deflate block with codes of its own (RFC 1951, 3.2.7): the lengths of its code
/// for literals and runs, and the only distance code, that of distance 1, which has one bit.
class BlockHeader
{
public:
    static constexpr std::size_t literalSymbols = 286;

    /// `literalLengths` holds `literalSymbols` lengths of at most 15.
    explicit BlockHeader(std::span<const std::uint8_t> literalLengths);

    std::uint64_t bitCount() const;
    void put(bool isFinal, BitWriter& writer) const;

private:
    static constexpr std::size_t lengthSymbols = 19;

    struct Item
    {
        std::uint8_t symbol = 0; ///< a length of 0 to 15, or one of the three repetitions
        std::uint8_t repetition = 0; ///< less the fewest that the symbol stands for
    };

    void addRepeated(std::uint8_t length, int times);
    void add(std::uint8_t symbol, int repetition = 0);

    std::size_t m_literalCount = 0; ///< of literal codes, without those at the end that have none
    std::array<Item, literalSymbols + 1> m_items;
    std::size_t m_itemCount = 0;
    std::array<std::uint32_t, lengthSymbols> m_counts {};
    std::array<std::uint8_t, lengthSymbols> m_lengths {};
    std::size_t m_lengthCount = 0; ///< of `m_lengths` in the order of the format
};

} // namespace pagestack
