#pragma once

#include "engine/image/deflate/DeflateSymbols.h"
#include "engine/image/deflate/LiteralWords.h"

#include <array>
#include <span>
#include <vector>

namespace pagestack {

/// A deflate coder (RFC 1951) without a search for matches: it codes literals and runs of one byte.
/// Filtered pixels with noise become smaller that way than with a match search, in a fraction of
/// the time. One thread at a time.
class HuffmanDeflate
{
public:
    HuffmanDeflate();

    /// The most bytes that `compress` touches for `count` bytes.
    static std::size_t bound(std::size_t count);

    /// Stores `bytes` at `out` as deflate blocks that refer to nothing before them and returns
    /// their size. The last one ends the stream if it `endsStream`; else the blocks end with a
    /// byte, so that others can follow.
    std::size_t compress(std::span<const std::uint8_t> bytes, bool endsStream, std::uint8_t* out);

private:
    using Bytes = std::span<const std::uint8_t>;

    struct Run
    {
        std::uint32_t start = 0;
        std::uint32_t length = 0; ///< 3 to 258; all are equal to the byte before `start`
    };
    /// What goes into the stream for a run, and how many bits it has.
    struct Token
    {
        std::uint32_t bits = 0;
        std::uint32_t bitCount = 0;
    };

    void putBlock(Bytes block, bool isFinal, BitWriter& writer);
    void findRuns(Bytes block);
    void addRuns(std::size_t start, std::size_t end);
    void countSymbols(Bytes block);
    std::uint64_t tokenBits() const;
    void makeTokens();
    void putTokens(Bytes block, BitWriter& writer) const;

    std::vector<Run> m_runs; ///< of the block in hand
    std::array<std::uint32_t, literalSymbols> m_counts {};
    std::array<std::uint8_t, literalSymbols> m_lengths {};
    LiteralWords m_literals;
    std::array<Token, longestMatch + 1> m_runTokens; ///< by the length of the run
    Token m_endOfBlock;
};

} // namespace pagestack
