#include "engine/image/deflate/MatchPrices.h"

#include <algorithm>
#include <bit>
#include <numeric>

namespace pagestack {

namespace {

    // Words of symbols that have not been seen would about have these lengths.
    constexpr int rareLiteralBits = 13;
    constexpr int rareLengthBits = 12;
    constexpr int rareDistanceBits = 9;
    // In an unknown block one symbol in so many is one certain length.
    constexpr std::uint32_t literalsPerLength = 400;
    constexpr std::size_t guessBytes = 16384;

    /// The logarithm of `count`, which is not 0, in sixteenths of a bit; between powers of two a
    /// straight line. In whole numbers, so that every machine makes the same file.
    int logarithm(std::uint32_t count)
    {
        const int zeros = std::countl_zero(count);
        const std::uint32_t fraction = count << static_cast<unsigned>(zeros) << 1U >> 28U;
        return (31 - zeros) * MatchPrices::perBit + static_cast<int>(fraction);
    }

    std::uint16_t price(std::uint32_t count, std::uint32_t total, int rareBits)
    {
        const int rare = rareBits * MatchPrices::perBit;
        if (count == 0)
            return static_cast<std::uint16_t>(rare);
        return static_cast<std::uint16_t>(
            std::clamp(logarithm(total) - logarithm(count), MatchPrices::perBit, rare));
    }

    std::uint16_t extraPrice(const SymbolRange& range)
    {
        return static_cast<std::uint16_t>(range.extraBits * MatchPrices::perBit);
    }

} // namespace

void MatchPrices::guess(std::span<const std::uint8_t> bytes)
{
    SymbolCounts counts;
    const std::size_t count = std::min(bytes.size(), guessBytes);
    for (const std::uint8_t value : bytes.first(count))
        ++counts.literals[value];
    std::fill(counts.literals.begin() + firstLengthSymbol, counts.literals.end(),
              static_cast<std::uint32_t>(count) / literalsPerLength + 1);
    counts.distances.fill(1);
    learn(counts);
}

void MatchPrices::learn(const SymbolCounts& counts)
{
    const auto total = [](const auto& table) {
        return std::accumulate(table.begin(), table.end(), std::uint32_t { 1 });
    };
    const std::uint32_t literals = total(counts.literals);
    const std::uint32_t distances = total(counts.distances);
    for (std::size_t value = 0; value < m_literals.size(); ++value)
        m_literals[value] = price(counts.literals[value], literals, rareLiteralBits);
    for (std::size_t length = shortestMatch; length <= longestMatch; ++length) {
        const std::size_t index = lengthIndexes[length];
        m_lengths[length] = static_cast<std::uint16_t>(
            price(counts.literals[firstLengthSymbol + index], literals, rareLengthBits)
            + extraPrice(lengthRanges[index]));
    }
    for (std::size_t symbol = 0; symbol < distanceSymbols; ++symbol)
        m_distances[symbol] = static_cast<std::uint16_t>(
            price(counts.distances[symbol], distances, rareDistanceBits)
            + extraPrice(distanceRanges[symbol]));
}

} // namespace pagestack
