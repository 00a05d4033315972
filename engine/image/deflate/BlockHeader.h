#pragma once

#include "engine/image/deflate/BitWriter.h"
#include "engine/image/deflate/DeflateSymbols.h"

#include <span>

namespace pagestack {

/// The start of a deflate block with codes of its own (RFC 1951, 3.2.7): the lengths of their
/// words.
class BlockHeader
{
public:
    /// `literalLengths` holds `literalSymbols` lengths of at most 15, `distanceLengths` as many of
    /// them as there are distance codes, at least one.
    BlockHeader(std::span<const std::uint8_t> literalLengths,
                std::span<const std::uint8_t> distanceLengths);

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

    std::size_t m_literalCount = literalSymbols; ///< without those at the end that have no code
    std::size_t m_distanceCount; ///< likewise, but at least one
    std::array<Item, literalSymbols + distanceSymbols> m_items;
    std::size_t m_itemCount = 0;
    std::array<std::uint32_t, lengthSymbols> m_counts {};
    std::array<std::uint8_t, lengthSymbols> m_lengths {};
    std::size_t m_lengthCount = lengthSymbols; ///< of `m_lengths` in the order of the format
};

/// Puts a stored block of at most 65,535 bytes.
void putStoredBlock(std::span<const std::uint8_t> block, bool isFinal, BitWriter& writer);

} // namespace pagestack
