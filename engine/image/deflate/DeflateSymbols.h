#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace pagestack {

/// The symbols of a deflate block (RFC 1951, 3.2.5): literals, the end, lengths and distances.
constexpr std::size_t endOfBlockSymbol = 256;
constexpr std::size_t firstLengthSymbol = 257;
constexpr std::size_t literalSymbols = 286; ///< with those of lengths
constexpr std::size_t distanceSymbols = 30;
constexpr std::size_t shortestMatch = 3;
constexpr std::size_t longestMatch = 258;

/// What a symbol of lengths or distances stands for: `first` and what the extra bits add to it.
struct SymbolRange
{
    std::uint16_t first = 0;
    std::uint8_t extraBits = 0;
};

/// The ranges of a code that begins at `first`: `pace` symbols each for 1, 2, ... extra bits behind
/// twice as many that have none.
template <std::size_t Count>
constexpr std::array<SymbolRange, Count> makeRanges(unsigned first, unsigned pace)
{
    std::array<SymbolRange, Count> ranges {};
    unsigned next = first;
    for (unsigned symbol = 0; symbol < Count; ++symbol) {
        const unsigned extraBits = symbol < 2 * pace ? 0 : symbol / pace - 1;
        ranges[symbol] = { static_cast<std::uint16_t>(next), static_cast<std::uint8_t>(extraBits) };
        next += 1U << extraBits;
    }
    return ranges;
}

constexpr std::array<SymbolRange, literalSymbols - firstLengthSymbol> makeLengthRanges()
{
    auto ranges = makeRanges<literalSymbols - firstLengthSymbol>(shortestMatch, 4);
    ranges.back() = { static_cast<std::uint16_t>(longestMatch), 0 }; // has a symbol of its own
    return ranges;
}

constexpr std::array<SymbolRange, distanceSymbols> distanceRanges
    = makeRanges<distanceSymbols>(1, 2);
constexpr auto lengthRanges = makeLengthRanges();

constexpr std::array<std::uint8_t, longestMatch + 1> makeLengthIndexes()
{
    std::array<std::uint8_t, longestMatch + 1> indexes {};
    for (std::size_t index = 0; index < lengthRanges.size(); ++index)
        for (std::size_t length = lengthRanges[index].first; length <= longestMatch; ++length)
            indexes[length] = static_cast<std::uint8_t>(index);
    return indexes;
}

/// By length, the index into `lengthRanges`.
constexpr auto lengthIndexes = makeLengthIndexes();

/// The symbol of a distance of at least 1, which is the index into `distanceRanges`.
constexpr unsigned distanceSymbol(unsigned distance)
{
    const unsigned less = distance - 1;
    if (less < 4)
        return less;
    const auto bits = static_cast<unsigned>(std::bit_width(less)) - 2; // below the two highest
    return 2 * bits + (less >> bits);
}

} // namespace pagestack
