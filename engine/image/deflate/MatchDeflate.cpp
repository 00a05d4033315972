#include "engine/image/deflate/MatchDeflate.h"

#include "engine/image/deflate/BlockHeader.h"
#include "engine/image/deflate/HuffmanCode.h"
#include "engine/image/deflate/LiteralWords.h"

#include <algorithm>

namespace pagestack {

namespace {

    using Effort = MatchDeflate::Effort;

    // The finder counts positions by 32 bits.
    constexpr std::size_t mostPartBytes = std::size_t { 1 } << 30U;
    constexpr std::size_t mostSequences = 16384;
    constexpr std::size_t mostBlockBytes = std::size_t { 1 } << 18U;
    constexpr std::size_t mostStoredBytes = 65535;

    // Among more candidates a better match is seldom enough.
    constexpr MatchFinder::Search usualSearch { 8, true, 64 };
    // For the position behind a match, which has to have a better one.
    constexpr MatchFinder::Search nextSearch { 4, true, 64 };
    constexpr MatchFinder::Search quickSearch { 1, true, 64 };
    // For one of this length the next position is not tried.
    constexpr unsigned enoughLength = 32;
    constexpr std::size_t mostTries = 64;
    // Of a long match or a run only both ends are noted: what lies between has been noted before.
    constexpr std::size_t longLength = 64;
    constexpr std::size_t notedEnd = 16;

    // Literals are priced so many at a time, by what is known by then.
    constexpr std::size_t pricedBytes = 16384;
    constexpr std::size_t pricedAhead = mostTries + longestMatch + 1;
    // A quick search leaves out the more the longer it has found nothing.
    constexpr std::uint32_t literalsPerLeap = 32;

} // namespace

std::size_t MatchDeflate::bound(std::size_t count)
{
    constexpr std::size_t storedOverhead = 6; // with the bits before its first byte
    // A block that does not end with the bytes has at least so many.
    constexpr std::size_t fewestBlockBytes = mostSequences * shortestMatch;
    return count + (count / fewestBlockBytes + count / mostStoredBytes + 3) * storedOverhead
        + BitWriter::slackBytes;
}

std::size_t MatchDeflate::compress(Bytes bytes, Effort effort, bool endsStream, std::uint8_t* out)
{
    if (!m_finder)
        m_finder.emplace();
    BitWriter writer(out);
    do {
        const Bytes part = bytes.first(std::min(bytes.size(), mostPartBytes));
        bytes = bytes.subspan(part.size());
        compressPart(part, effort, endsStream && bytes.empty(), writer);
    } while (!bytes.empty());
    if (!endsStream)
        putStoredBlock({}, false, writer); // ends with a byte
    return static_cast<std::size_t>(writer.alignToByte() - out);
}

void MatchDeflate::compressPart(Bytes bytes, Effort effort, bool endsStream, BitWriter& writer)
{
    m_finder->start(bytes.data());
    m_prices.guess(bytes);
    m_pricedTo = 0;
    std::size_t blockStart = 0;
    std::size_t at = 0;
    do {
        while (at < bytes.size() && m_sequences.size() < mostSequences
               && at - blockStart < mostBlockBytes)
            at = addSequence(bytes, at, effort);
        endBlock(bytes.subspan(blockStart, at - blockStart), endsStream && at == bytes.size(),
                 writer);
        blockStart = at;
    } while (at < bytes.size());
}

/// Adds literals, or some and a match; returns the position behind them.
std::size_t MatchDeflate::addSequence(Bytes bytes, std::size_t at, Effort effort)
{
    if (at + pricedAhead > m_pricedTo && m_pricedTo < bytes.size())
        priceLiterals(bytes, at);
    const bool isQuick = effort == Effort::Quick;
    Match match;
    std::size_t matchStart = at;
    std::size_t tried = at;
    const std::size_t lastTried = isQuick ? at : at + mostTries;
    for (; tried + MatchFinder::tailBytes < bytes.size(); ++tried) {
        const std::uint32_t* const prices = m_literalPrices.data() + (tried - m_pricedFrom);
        const auto gain = [&](unsigned length, unsigned distance) {
            return static_cast<int>(prices[length] - prices[0])
                - static_cast<int>(m_prices.match(length, distance));
        };
        const auto longest = static_cast<unsigned>(std::min(longestMatch, bytes.size() - tried));
        const Match found = m_finder->find(tried, longest,
                                           isQuick          ? quickSearch
                                               : tried > at ? nextSearch
                                                            : usualSearch,
                                           match.gain, gain);
        if (found.length == 0)
            break;
        match = found;
        matchStart = tried;
        if (match.length >= enoughLength || tried == lastTried)
            break;
    }
    if (match.length == 0) {
        const std::size_t leap = isQuick ? m_literals / literalsPerLeap : 0;
        return addLiterals(bytes, at, std::min(1 + leap, bytes.size() - at));
    }
    at = addLiterals(bytes, at, matchStart - at);
    enterMatched(bytes, tried + 1, at, match);
    m_sequences.push_back({ std::exchange(m_literals, 0), static_cast<std::uint16_t>(match.length),
                            static_cast<std::uint16_t>(match.distance) });
    ++m_counts.literals[firstLengthSymbol + lengthIndexes[match.length]];
    ++m_counts.distances[distanceSymbol(match.distance)];
    return at + match.length;
}

/// Returns the position behind them.
std::size_t MatchDeflate::addLiterals(Bytes bytes, std::size_t at, std::size_t count)
{
    for (const std::uint8_t value : bytes.subspan(at, count))
        ++m_counts.literals[value];
    m_literals += static_cast<std::uint32_t>(count);
    return at + count;
}

/// Notes the positions of the match at `at` that have not been tried.
void MatchDeflate::enterMatched(Bytes bytes, std::size_t from, std::size_t at, const Match& match)
{
    const std::size_t last
        = bytes.size() > MatchFinder::tailBytes ? bytes.size() - MatchFinder::tailBytes : 0;
    const std::size_t end = std::min(at + match.length, last);
    const bool isLong
        = match.length > longLength || (match.distance == 1 && match.length > 2 * notedEnd);
    const std::size_t pause = isLong ? from + notedEnd : end;
    const std::size_t goOn = isLong ? at + match.length - notedEnd : end;
    for (; from < std::min(pause, end); ++from)
        m_finder->enter(from);
    for (from = std::max(from, goOn); from < end; ++from)
        m_finder->enter(from);
}

void MatchDeflate::priceLiterals(Bytes bytes, std::size_t at)
{
    m_pricedFrom = at;
    m_pricedTo = std::min(bytes.size(), at + pricedBytes);
    m_literalPrices.resize(pricedBytes + 1);
    std::uint32_t sum = 0;
    std::uint32_t* price = m_literalPrices.data();
    *price = 0;
    for (const std::uint8_t value : bytes.subspan(at, m_pricedTo - at)) {
        sum += m_prices.literal(value);
        *++price = sum;
    }
}

void MatchDeflate::endBlock(Bytes block, bool isFinal, BitWriter& writer)
{
    m_counts.literals[endOfBlockSymbol] = 1;
    std::array<std::uint8_t, literalSymbols> lengths {};
    std::array<std::uint8_t, distanceSymbols> distanceLengths {};
    makeCodeLengths(m_counts.literals, LiteralWords::longestWord, lengths);
    makeCodeLengths(m_counts.distances, LiteralWords::longestWord, distanceLengths);
    const BlockHeader header(lengths, distanceLengths);
    if ((header.bitCount() + tokenBits(lengths, distanceLengths)) / 8 > block.size()) {
        do {
            const Bytes stored = block.first(std::min(block.size(), mostStoredBytes));
            block = block.subspan(stored.size());
            putStoredBlock(stored, isFinal && block.empty(), writer);
        } while (!block.empty());
    } else {
        header.put(isFinal, writer);
        putTokens(block, lengths, distanceLengths, writer);
    }
    m_prices.learn(m_counts);
    m_counts = {};
    m_sequences.clear();
    m_literals = 0;
}

std::uint64_t MatchDeflate::tokenBits(std::span<const std::uint8_t> lengths,
                                      std::span<const std::uint8_t> distanceLengths) const
{
    std::uint64_t bits = 0;
    for (std::size_t symbol = 0; symbol < literalSymbols; ++symbol) {
        const unsigned extraBits
            = symbol < firstLengthSymbol ? 0 : lengthRanges[symbol - firstLengthSymbol].extraBits;
        bits += std::uint64_t { m_counts.literals[symbol] } * (lengths[symbol] + extraBits);
    }
    for (std::size_t symbol = 0; symbol < distanceSymbols; ++symbol)
        bits += std::uint64_t { m_counts.distances[symbol] }
            * (distanceLengths[symbol] + distanceRanges[symbol].extraBits);
    return bits;
}

void MatchDeflate::putTokens(Bytes block, std::span<const std::uint8_t> lengths,
                             std::span<const std::uint8_t> distanceLengths, BitWriter& writer) const
{
    std::array<std::uint16_t, literalSymbols> words {};
    std::array<std::uint16_t, distanceSymbols> distanceWords {};
    makeCodeWords(lengths, words);
    makeCodeWords(distanceLengths, distanceWords);
    LiteralWords literals;
    literals.set(lengths, words);
    BitWriter out = writer; // a copy stays in registers
    const std::uint8_t* next = block.data();
    for (const Sequence& sequence : m_sequences) {
        literals.put(next, next + sequence.literals, out);
        const std::size_t index = lengthIndexes[sequence.length];
        const std::size_t symbol = firstLengthSymbol + index;
        // 14 + 5 + 14 + 13 bits at most
        out.put(words[symbol], lengths[symbol]);
        out.put(sequence.length - std::uint64_t { lengthRanges[index].first },
                lengthRanges[index].extraBits);
        const unsigned distance = distanceSymbol(sequence.distance);
        out.put(distanceWords[distance], distanceLengths[distance]);
        out.put(sequence.distance - std::uint64_t { distanceRanges[distance].first },
                distanceRanges[distance].extraBits);
        out.flush();
        next += sequence.literals + sequence.length;
    }
    literals.put(next, next + m_literals, out);
    out.put(words[endOfBlockSymbol], lengths[endOfBlockSymbol]);
    out.flush();
    writer = out;
}

} // namespace pagestack
