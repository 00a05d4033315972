#include "engine/image/deflate/HuffmanDeflate.h"

#include "engine/image/deflate/BlockHeader.h"
#include "engine/image/deflate/HuffmanCode.h"

#include <algorithm>

namespace pagestack {

namespace {

    // What a stored block can hold, so that each block can be stored when coding does not pay.
    constexpr std::size_t blockBytes = 65535;
    // Shorter runs cost about as much as their literals.
    constexpr std::size_t shortestUsefulRun = 8;
    // Every run of twice this length less one is seen by looking at this distance only.
    constexpr std::size_t lookDistance = 4;

    std::uint32_t fourBytes(const std::uint8_t* at)
    {
        std::uint32_t bytes = 0;
        std::memcpy(&bytes, at, sizeof bytes);
        return bytes;
    }

} // namespace

HuffmanDeflate::HuffmanDeflate() { m_runs.reserve(blockBytes / shortestUsefulRun + 1); }

std::size_t HuffmanDeflate::bound(std::size_t count)
{
    constexpr std::size_t storedOverhead = 6; // with the bits before its first byte
    return count + (count / blockBytes + 2) * storedOverhead + BitWriter::slackBytes;
}

std::size_t HuffmanDeflate::compress(Bytes bytes, bool endsStream, std::uint8_t* out)
{
    BitWriter writer(out);
    do {
        const Bytes block = bytes.first(std::min(bytes.size(), blockBytes));
        bytes = bytes.subspan(block.size());
        putBlock(block, endsStream && bytes.empty(), writer);
    } while (!bytes.empty());
    if (!endsStream)
        putStoredBlock({}, false, writer); // ends with a byte
    return static_cast<std::size_t>(writer.alignToByte() - out);
}

void HuffmanDeflate::putBlock(Bytes block, bool isFinal, BitWriter& writer)
{
    findRuns(block);
    countSymbols(block);
    makeCodeLengths(m_counts, LiteralWords::longestWord, m_lengths);
    // The only distance, 1, has a word of one bit.
    constexpr std::array<std::uint8_t, 1> distanceLengths = { 1 };
    const BlockHeader header(m_lengths, distanceLengths);
    if ((header.bitCount() + tokenBits()) / 8 > block.size()) {
        putStoredBlock(block, isFinal, writer);
        return;
    }
    header.put(isFinal, writer);
    makeTokens();
    putTokens(block, writer);
}

void HuffmanDeflate::findRuns(Bytes block)
{
    m_runs.clear();
    const std::uint8_t* bytes = block.data();
    std::size_t coded = 1; // a run repeats the byte before it
    for (std::size_t i = lookDistance; i + lookDistance <= block.size(); i += lookDistance) {
        if (fourBytes(bytes + i) != fourBytes(bytes + i - 1))
            continue;
        std::size_t start = i;
        while (start > coded && bytes[start - 1] == bytes[i] && bytes[start - 2] == bytes[i])
            --start;
        std::size_t end = i + lookDistance;
        while (end + lookDistance <= block.size() && fourBytes(bytes + end) == fourBytes(bytes + i))
            end += lookDistance;
        while (end < block.size() && bytes[end] == bytes[i])
            ++end;
        if (end - start >= shortestUsefulRun) {
            addRuns(start, end);
            coded = end;
        }
        i = end / lookDistance * lookDistance;
    }
}

void HuffmanDeflate::addRuns(std::size_t start, std::size_t end)
{
    while (end - start >= shortestMatch) {
        const std::size_t length = std::min(end - start, longestMatch);
        m_runs.push_back({ static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(length) });
        start += length;
    }
}

void HuffmanDeflate::countSymbols(Bytes block)
{
    // Several tables, since equal bytes in a row would wait for each other's count.
    std::array<std::array<std::uint32_t, 256>, 4> tables {};
    m_counts.fill(0);
    const auto countLiterals = [&](std::size_t start, std::size_t end) {
        const std::uint8_t* bytes = block.data();
        for (; start + 4 <= end; start += 4) {
            ++tables[0][bytes[start]];
            ++tables[1][bytes[start + 1]];
            ++tables[2][bytes[start + 2]];
            ++tables[3][bytes[start + 3]];
        }
        for (; start < end; ++start)
            ++tables[0][bytes[start]];
    };
    std::size_t start = 0;
    for (const Run& run : m_runs) {
        countLiterals(start, run.start);
        ++m_counts[firstLengthSymbol + lengthIndexes[run.length]];
        start = run.start + run.length;
    }
    countLiterals(start, block.size());
    for (std::size_t value = 0; value < 256; ++value)
        m_counts[value] = tables[0][value] + tables[1][value] + tables[2][value] + tables[3][value];
    m_counts[endOfBlockSymbol] = 1;
}

std::uint64_t HuffmanDeflate::tokenBits() const
{
    std::uint64_t bits = 0;
    for (std::size_t symbol = 0; symbol < m_counts.size(); ++symbol)
        bits += std::uint64_t { m_counts[symbol] } * m_lengths[symbol];
    for (const Run& run : m_runs)
        bits += lengthRanges[lengthIndexes[run.length]].extraBits + 1U;
    return bits;
}

void HuffmanDeflate::makeTokens()
{
    std::array<std::uint16_t, literalSymbols> words {};
    makeCodeWords(m_lengths, words);
    m_literals.set(m_lengths, words);
    m_endOfBlock = { words[endOfBlockSymbol], m_lengths[endOfBlockSymbol] };
    for (std::size_t length = shortestMatch; length <= longestMatch; ++length) {
        const SymbolRange range = lengthRanges[lengthIndexes[length]];
        const std::size_t symbol = firstLengthSymbol + lengthIndexes[length];
        const auto extra = static_cast<std::uint32_t>(length - range.first);
        // The distance is a zero bit.
        m_runTokens[length] = { words[symbol] | extra << m_lengths[symbol],
                                m_lengths[symbol] + range.extraBits + 1U };
    }
}

void HuffmanDeflate::putTokens(Bytes block, BitWriter& writer) const
{
    BitWriter out = writer; // a copy stays in registers
    const std::uint8_t* next = block.data();
    for (const Run& run : m_runs) {
        m_literals.put(next, block.data() + run.start, out);
        const Token& token = m_runTokens[run.length];
        out.put(token.bits, token.bitCount);
        out.flush();
        next = block.data() + run.start + run.length;
    }
    m_literals.put(next, block.data() + block.size(), out);
    out.put(m_endOfBlock.bits, m_endOfBlock.bitCount);
    out.flush();
    writer = out;
}

} // namespace pagestack
