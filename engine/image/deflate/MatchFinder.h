#pragma once

#include "engine/image/deflate/DeflateSymbols.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>

namespace pagestack {

/// Finds earlier occurrences of the bytes at a position: the latest ones of eight bytes, or the
/// last one of three.
class MatchFinder
{
public:
    /// Before the end, positions that are not looked at: their eight bytes might be cut off.
    static constexpr std::size_t tailBytes = 16;

    struct Match
    {
        unsigned length = 0; ///< 0: none
        unsigned distance = 0; ///< at most `longestDistance`
        int gain = 0;
    };

    /// How thoroughly to look.
    struct Search
    {
        int candidates = 1; ///< of eight bytes
        bool isShortToo = false; ///< also for three bytes
        unsigned goodLength = longestMatch; ///< none is looked at behind a match that good
    };

    MatchFinder()
        : m_latest(std::make_unique_for_overwrite<std::uint32_t[]>(1U << longBits))
        , m_latestShort(std::make_unique_for_overwrite<std::uint32_t[]>(1U << shortBits))
        , m_back(std::make_unique_for_overwrite<std::uint16_t[]>(window))
    {
    }

    /// Begins with bytes that replace those before.
    void start(const std::uint8_t* bytes)
    {
        m_bytes = bytes;
        std::fill_n(m_latest.get(), 1U << longBits, 0U);
        std::fill_n(m_latestShort.get(), 1U << shortBits, 0U);
    }

    /// Notes the position, so that later ones find it.
    void enter(std::size_t at) { link(at, wordAt(m_bytes + at)); }

    /// Notes the position, more than `tailBytes` before the end, and returns the match of at most
    /// `longest` bytes with the highest gain above `leastGain`, which `gain(length, distance)`
    /// tells.
    template <typename Gain>
    Match find(std::size_t at, unsigned longest, Search search, int leastGain, Gain gain)
    {
        const std::uint8_t* const here = m_bytes + at;
        std::uint64_t word = wordAt(here);
        const std::uint32_t lastShort = search.isShortToo ? linkShort(at, word) : window;
        std::uint32_t distance = link(at, word);
        Match best;
        best.gain = leastGain;
        // A longer match has the eight bytes that end the shortest length that would be longer.
        unsigned length = wordBytes - 1;
        for (; distance < window; distance += m_back[(at - distance) % window]) {
            const std::uint8_t* const there = here - distance;
            if (wordAt(there + length + 1 - wordBytes) == word) {
                const unsigned found = commonLength(here, there, longest);
                if (found > length) {
                    length = found;
                    take(found, distance, gain, best);
                    if (length >= search.goodLength || length == longest)
                        break;
                    word = wordAt(here + length + 1 - wordBytes);
                }
            }
            if (--search.candidates <= 0)
                break;
        }
        if (best.length == 0 && lastShort < window) {
            const unsigned found = commonLength(here, here - lastShort, longest);
            if (found >= shortestMatch)
                take(found, lastShort, gain, best);
        }
        return best;
    }

private:
    static constexpr std::uint32_t window = 32768;
    static constexpr unsigned wordBytes = 8;
    static constexpr unsigned longBits = 15;
    static constexpr unsigned shortBits = 13;
    static constexpr std::uint64_t spread = 0x9E37'79B9'7F4A'7C15; // 2^64 by the golden ratio

    static std::uint64_t wordAt(const std::uint8_t* bytes)
    {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, sizeof word);
        return word;
    }

    template <typename Gain>
    static void take(unsigned length, std::uint32_t distance, Gain gain, Match& best)
    {
        const int gained = gain(length, distance);
        if (gained > best.gain)
            best = { length, distance, gained };
    }

    static unsigned commonLength(const std::uint8_t* here, const std::uint8_t* there,
                                 unsigned longest)
    {
        unsigned length = 0;
        for (; length + wordBytes <= longest; length += wordBytes) {
            const std::uint64_t difference = wordAt(here + length) ^ wordAt(there + length);
            if (difference != 0)
                return length + firstByte(difference);
        }
        while (length < longest && here[length] == there[length])
            ++length;
        return length;
    }

    /// The first byte in memory that is not 0.
    static unsigned firstByte(std::uint64_t word)
    {
        const int bits = std::endian::native == std::endian::little ? std::countr_zero(word)
                                                                    : std::countl_zero(word);
        return static_cast<unsigned>(bits) / 8;
    }

    /// Positions are kept with a window added, so that 0 is far from all of them; of those behind
    /// 4 GB the lowest bits, since only their distance counts. Returns the distance to the latest
    /// position with that hash, or any from `window` on.
    std::uint32_t link(std::size_t at, std::uint64_t word)
    {
        const auto position = static_cast<std::uint32_t>(at + window);
        std::uint32_t& latest = m_latest[word * spread >> (64 - longBits)];
        const std::uint32_t distance = position - latest;
        latest = position;
        m_back[at % window] = static_cast<std::uint16_t>(std::min<std::uint32_t>(distance, 0xFFFF));
        return distance;
    }

    std::uint32_t linkShort(std::size_t at, std::uint64_t word)
    {
        const auto position = static_cast<std::uint32_t>(at + window);
        const std::uint64_t three = std::endian::native == std::endian::little
            ? word << (64 - 8 * shortestMatch)
            : word >> (64 - 8 * shortestMatch);
        std::uint32_t& latest = m_latestShort[three * spread >> (64 - shortBits)];
        return position - std::exchange(latest, position);
    }

    const std::uint8_t* m_bytes = nullptr;
    std::unique_ptr<std::uint32_t[]> m_latest; ///< by the hash of eight bytes
    std::unique_ptr<std::uint32_t[]> m_latestShort; ///< by the hash of three
    std::unique_ptr<std::uint16_t[]> m_back; ///< by position: to the one before with the same hash
};

} // namespace pagestack
