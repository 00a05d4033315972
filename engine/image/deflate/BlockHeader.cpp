#include "engine/image/deflate/BlockHeader.h"

#include "engine/image/deflate/HuffmanCode.h"

#include <algorithm>

namespace pagestack {

namespace {

    constexpr std::uint8_t repeatsLast = 16; ///< 3 to 6 times
    constexpr std::uint8_t repeatsZero = 17; ///< 3 to 10 times
    constexpr std::uint8_t repeatsZeroLong = 18; ///< 11 to 138 times
    constexpr int longestLengthCode = 7;
    constexpr unsigned fixedBits = 3 + 5 + 5 + 4; // kind of block and the three counts

    unsigned repetitionBits(std::uint8_t symbol)
    {
        return symbol == repeatsLast    ? 2
            : symbol == repeatsZero     ? 3
            : symbol == repeatsZeroLong ? 7
                                        : 0;
    }

} // namespace

BlockHeader::BlockHeader(std::span<const std::uint8_t> literalLengths,
                         std::span<const std::uint8_t> distanceLengths)
    : m_distanceCount(distanceLengths.size())
{
    while (m_literalCount > firstLengthSymbol && literalLengths[m_literalCount - 1] == 0)
        --m_literalCount;
    while (m_distanceCount > 1 && distanceLengths[m_distanceCount - 1] == 0)
        --m_distanceCount;
    std::array<std::uint8_t, literalSymbols + distanceSymbols> lengths {};
    std::copy_n(distanceLengths.begin(), m_distanceCount,
                std::copy_n(literalLengths.begin(), m_literalCount, lengths.begin()));
    const std::size_t count = m_literalCount + m_distanceCount;
    for (std::size_t start = 0; start < count;) {
        std::size_t end = start + 1;
        while (end < count && lengths[end] == lengths[start])
            ++end;
        addRepeated(lengths[start], static_cast<int>(end - start));
        start = end;
    }
    makeCodeLengths(m_counts, longestLengthCode, m_lengths);
    while (m_lengths[codeLengthOrder[m_lengthCount - 1]] == 0)
        --m_lengthCount;
}

std::uint64_t BlockHeader::bitCount() const
{
    std::uint64_t bits = fixedBits + 3 * m_lengthCount;
    for (std::size_t symbol = 0; symbol < lengthSymbols; ++symbol)
        bits += std::uint64_t { m_counts[symbol] }
            * (m_lengths[symbol] + repetitionBits(static_cast<std::uint8_t>(symbol)));
    return bits;
}

void BlockHeader::put(bool isFinal, BitWriter& writer) const
{
    std::array<std::uint16_t, lengthSymbols> words {};
    makeCodeWords(m_lengths, words);
    writer.put(isFinal ? 1 : 0, 1);
    writer.put(2, 2);
    writer.put(m_literalCount - firstLengthSymbol, 5);
    writer.put(m_distanceCount - 1, 5);
    writer.put(m_lengthCount - 4, 4);
    writer.flush();
    for (std::size_t i = 0; i < m_lengthCount; ++i) {
        writer.put(m_lengths[codeLengthOrder[i]], 3);
        writer.flush();
    }
    for (std::size_t i = 0; i < m_itemCount; ++i) {
        const Item item = m_items[i];
        writer.put(words[item.symbol], m_lengths[item.symbol]);
        writer.put(item.repetition, repetitionBits(item.symbol));
        writer.flush();
    }
}

void BlockHeader::addRepeated(std::uint8_t length, int times)
{
    if (length == 0) {
        for (; times >= 11; times -= std::min(times, 138))
            add(repeatsZeroLong, std::min(times, 138) - 11);
        if (times >= 3) {
            add(repeatsZero, times - 3);
            times = 0;
        }
    } else {
        add(length);
        --times;
        for (; times >= 3; times -= std::min(times, 6))
            add(repeatsLast, std::min(times, 6) - 3);
    }
    for (; times > 0; --times)
        add(length);
}

void BlockHeader::add(std::uint8_t symbol, int repetition)
{
    m_items[m_itemCount++] = { symbol, static_cast<std::uint8_t>(repetition) };
    ++m_counts[symbol];
}

void putStoredBlock(std::span<const std::uint8_t> block, bool isFinal, BitWriter& writer)
{
    writer.put(isFinal ? 1 : 0, 3);
    writer.alignToByte();
    writer.put(block.size(), 16);
    writer.put(~block.size() & 0xFFFFU, 16);
    std::uint8_t* out = writer.alignToByte();
    std::copy(block.begin(), block.end(), out);
    writer.skipTo(out + block.size());
}

} // namespace pagestack
