#include "engine/image/deflate/HuffmanDeflate.h"

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

    /// The start of a deflate block with codes of its own (RFC 1951, 3.2.7): the lengths of its
    /// code for literals and runs, and the only distance code, that of distance 1, which has one
    /// bit.
    class BlockHeader
    {
    public:
        /// `literalLengths` holds `literalSymbols` lengths of at most 15.
        explicit BlockHeader(std::span<const std::uint8_t> literalLengths)
        {
            std::array<std::uint8_t, literalSymbols + 1> lengths {};
            m_literalCount = literalSymbols;
            while (m_literalCount > 257 && literalLengths[m_literalCount - 1] == 0)
                --m_literalCount;
            std::copy_n(literalLengths.begin(), m_literalCount, lengths.begin());
            lengths[m_literalCount] = 1; // of distance 1
            const std::size_t count = m_literalCount + 1;
            for (std::size_t start = 0; start < count;) {
                std::size_t end = start + 1;
                while (end < count && lengths[end] == lengths[start])
                    ++end;
                addRepeated(lengths[start], static_cast<int>(end - start));
                start = end;
            }
            makeCodeLengths(m_counts, longestLengthCode, m_lengths);
            m_lengthCount = lengthSymbols;
            while (m_lengths[codeLengthOrder[m_lengthCount - 1]] == 0)
                --m_lengthCount;
        }

        std::uint64_t bitCount() const
        {
            std::uint64_t bits = fixedBits + 3 * m_lengthCount;
            for (std::size_t symbol = 0; symbol < lengthSymbols; ++symbol)
                bits += std::uint64_t { m_counts[symbol] }
                    * (m_lengths[symbol] + repetitionBits(static_cast<std::uint8_t>(symbol)));
            return bits;
        }

        void put(bool isFinal, BitWriter& writer) const
        {
            std::array<std::uint16_t, lengthSymbols> words {};
            makeCodeWords(m_lengths, words);
            writer.put(isFinal ? 1 : 0, 1);
            writer.put(2, 2);
            writer.put(m_literalCount - 257, 5);
            writer.put(0, 5); // one distance code
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

    private:
        static constexpr std::size_t lengthSymbols = 19;

        struct Item
        {
            std::uint8_t symbol = 0; ///< a length of 0 to 15, or one of the three repetitions
            std::uint8_t repetition = 0; ///< less the fewest that the symbol stands for
        };

        void addRepeated(std::uint8_t length, int times)
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

        void add(std::uint8_t symbol, int repetition = 0)
        {
            m_items[m_itemCount++] = { symbol, static_cast<std::uint8_t>(repetition) };
            ++m_counts[symbol];
        }

        std::size_t m_literalCount = 0; ///< of codes, without those at the end that have none
        std::array<Item, literalSymbols + 1> m_items;
        std::size_t m_itemCount = 0;
        std::array<std::uint32_t, lengthSymbols> m_counts {};
        std::array<std::uint8_t, lengthSymbols> m_lengths {};
        std::size_t m_lengthCount = 0; ///< of `m_lengths` in the order of the format
    };

    // What a stored block can hold, so that each block can be stored when coding does not pay.
    constexpr std::size_t blockBytes = 65535;
    constexpr std::size_t endOfBlockSymbol = 256;
    // Four literals, and a run with its extra bits and distance, fit between two flushes.
    constexpr int longestCode = 14;
    constexpr std::size_t longestRun = 258;
    constexpr std::size_t shortestRun = 3;
    // Shorter runs cost about as much as their literals.
    constexpr std::size_t shortestUsefulRun = 8;
    // Every run of twice this length less one is seen by looking at this distance only.
    constexpr std::size_t lookDistance = 4;

    struct RunSymbol
    {
        std::uint16_t symbol = 0;
        std::uint8_t extraBits = 0;
        std::uint8_t extra = 0;
    };

    /// The symbols of lengths (RFC 1951, 3.2.5): four each for 1, 2, ... extra bits after the
    /// eight that have none, and one for the longest.
    constexpr std::array<RunSymbol, longestRun + 1> makeRunSymbols()
    {
        std::array<RunSymbol, longestRun + 1> symbols {};
        std::size_t length = shortestRun;
        for (unsigned symbol = 257; length < longestRun; ++symbol) {
            const unsigned extraBits = symbol < 265 ? 0 : (symbol - 261) / 4;
            for (unsigned extra = 0; extra < 1U << extraBits && length < longestRun; ++extra)
                symbols[length++]
                    = { static_cast<std::uint16_t>(symbol), static_cast<std::uint8_t>(extraBits),
                        static_cast<std::uint8_t>(extra) };
        }
        symbols[longestRun] = { 285, 0, 0 };
        return symbols;
    }
    constexpr std::array<RunSymbol, longestRun + 1> runSymbols = makeRunSymbols();

    std::uint32_t fourBytes(const std::uint8_t* at)
    {
        std::uint32_t bytes = 0;
        std::memcpy(&bytes, at, sizeof bytes);
        return bytes;
    }

    void putStored(std::span<const std::uint8_t> block, bool isFinal, BitWriter& writer)
    {
        writer.put(isFinal ? 1 : 0, 3);
        writer.alignToByte();
        writer.put(block.size(), 16);
        writer.put(~block.size() & 0xFFFFU, 16);
        std::uint8_t* out = writer.alignToByte();
        std::copy(block.begin(), block.end(), out);
        writer.skipTo(out + block.size());
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
        putStored({}, false, writer); // ends with a byte
    return static_cast<std::size_t>(writer.alignToByte() - out);
}

void HuffmanDeflate::putBlock(Bytes block, bool isFinal, BitWriter& writer)
{
    findRuns(block);
    countSymbols(block);
    makeCodeLengths(m_counts, longestCode, m_lengths);
    const BlockHeader header(m_lengths);
    if ((header.bitCount() + tokenBits()) / 8 > block.size()) {
        putStored(block, isFinal, writer);
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
    while (end - start >= shortestRun) {
        const std::size_t length = std::min(end - start, longestRun);
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
        ++m_counts[runSymbols[run.length].symbol];
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
        bits += runSymbols[run.length].extraBits + 1U;
    return bits;
}

void HuffmanDeflate::makeTokens()
{
    std::array<std::uint16_t, literalSymbols> words {};
    makeCodeWords(m_lengths, words);
    for (std::size_t value = 0; value < m_literals.size(); ++value)
        m_literals[value] = { words[value], m_lengths[value] };
    m_endOfBlock = { words[endOfBlockSymbol], m_lengths[endOfBlockSymbol] };
    for (std::size_t length = shortestRun; length <= longestRun; ++length) {
        const RunSymbol& run = runSymbols[length];
        // The only distance code is a zero bit.
        m_runTokens[length]
            = { words[run.symbol] | static_cast<std::uint32_t>(run.extra) << m_lengths[run.symbol],
                m_lengths[run.symbol] + run.extraBits + 1U };
    }
}

void HuffmanDeflate::putTokens(Bytes block, BitWriter& writer) const
{
    const std::uint8_t* next = block.data();
    for (const Run& run : m_runs) {
        putLiterals(next, block.data() + run.start, writer);
        const Token& token = m_runTokens[run.length];
        writer.put(token.bits, token.bitCount);
        writer.flush();
        next = block.data() + run.start + run.length;
    }
    putLiterals(next, block.data() + block.size(), writer);
    writer.put(m_endOfBlock.bits, m_endOfBlock.bitCount);
    writer.flush();
}

void HuffmanDeflate::putLiterals(const std::uint8_t* from, const std::uint8_t* end,
                                 BitWriter& writer) const
{
    BitWriter out = writer; // a copy stays in registers
    for (; end - from >= 4; from += 4) {
        const Token one = m_literals[from[0]];
        const Token two = m_literals[from[1]];
        const Token three = m_literals[from[2]];
        const Token four = m_literals[from[3]];
        const std::uint64_t pair = one.bits | std::uint64_t { two.bits } << one.bitCount;
        const std::uint64_t other = three.bits | std::uint64_t { four.bits } << three.bitCount;
        const unsigned pairCount = one.bitCount + two.bitCount;
        out.put(pair | other << pairCount, pairCount + three.bitCount + four.bitCount);
        out.flush();
    }
    for (; from != end; ++from) {
        const Token token = m_literals[*from];
        out.put(token.bits, token.bitCount);
        out.flush();
    }
    writer = out;
}

} // namespace pagestack
