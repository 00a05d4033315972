#pragma once

#include "engine/image/deflate/BitWriter.h"
#include "engine/image/deflate/MatchFinder.h"
#include "engine/image/deflate/MatchPrices.h"

#include <optional>
#include <vector>

namespace pagestack {

/// A deflate coder (RFC 1951) that searches for matches and takes those that cost less than their
/// literals, by what these have cost in the block before. Filtered pixels need that: with two bits
/// a literal, a match of ten bytes may be too dear. One thread at a time.
class MatchDeflate
{
public:
    enum class Effort {
        Quick, ///< a glance, for what will be thrown away
        Usual,
    };

    /// The most bytes that `compress` touches for `count` bytes.
    static std::size_t bound(std::size_t count);

    /// As HuffmanDeflate::compress.
    std::size_t compress(std::span<const std::uint8_t> bytes, Effort effort, bool endsStream,
                         std::uint8_t* out);

private:
    using Bytes = std::span<const std::uint8_t>;
    using Match = MatchFinder::Match;

    /// Some literals and the match behind them.
    struct Sequence
    {
        std::uint32_t literals = 0;
        std::uint16_t length = 0;
        std::uint16_t distance = 0;
    };

    void compressPart(Bytes bytes, Effort effort, bool endsStream, BitWriter& writer);
    std::size_t addSequence(Bytes bytes, std::size_t at, Effort effort);
    std::size_t addLiterals(Bytes bytes, std::size_t at, std::size_t count);
    void enterMatched(Bytes bytes, std::size_t from, std::size_t at, const Match& match);
    void priceLiterals(Bytes bytes, std::size_t at);
    void endBlock(Bytes block, bool isFinal, BitWriter& writer);
    std::uint64_t tokenBits(std::span<const std::uint8_t> lengths,
                            std::span<const std::uint8_t> distanceLengths) const;
    void putTokens(Bytes block, std::span<const std::uint8_t> lengths,
                   std::span<const std::uint8_t> distanceLengths, BitWriter& writer) const;

    std::optional<MatchFinder> m_finder; ///< from its first use on
    MatchPrices m_prices;
    std::vector<std::uint32_t> m_literalPrices; ///< of all from `m_pricedFrom` to each position
    std::size_t m_pricedFrom = 0;
    std::size_t m_pricedTo = 0;
    // Of the block in hand:
    std::vector<Sequence> m_sequences;
    std::uint32_t m_literals = 0; ///< behind the last sequence
    SymbolCounts m_counts;
};

} // namespace pagestack
