#pragma once

#include "engine/image/deflate/BitWriter.h"

#include <array>
#include <cstddef>
#include <span>

namespace pagestack {

/// The code words of the 256 literals of a block, for writing many of them fast.
class LiteralWords
{
public:
    /// Four literals fit between two flushes.
    static constexpr int longestWord = 14;

    /// `lengths` are at most `longestWord`; `words` are those of `makeCodeWords`.
    void set(std::span<const std::uint8_t> lengths, std::span<const std::uint16_t> words)
    {
        for (std::size_t value = 0; value < m_words.size(); ++value)
            m_words[value] = { words[value], lengths[value] };
    }

    void put(const std::uint8_t* from, const std::uint8_t* end, BitWriter& writer) const
    {
        for (; end - from >= 4; from += 4) {
            const Word one = m_words[from[0]];
            const Word two = m_words[from[1]];
            const Word three = m_words[from[2]];
            const Word four = m_words[from[3]];
            const std::uint64_t pair = one.bits | std::uint64_t { two.bits } << one.bitCount;
            const std::uint64_t other = three.bits | std::uint64_t { four.bits } << three.bitCount;
            const unsigned pairCount = one.bitCount + two.bitCount;
            writer.put(pair | other << pairCount, pairCount + three.bitCount + four.bitCount);
            writer.flush();
        }
        for (; from != end; ++from) {
            writer.put(m_words[*from].bits, m_words[*from].bitCount);
            writer.flush();
        }
    }

private:
    struct Word
    {
        std::uint32_t bits = 0;
        std::uint32_t bitCount = 0;
    };

    std::array<Word, 256> m_words;
};

} // namespace pagestack
