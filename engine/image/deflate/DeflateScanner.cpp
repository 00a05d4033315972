#include "engine/image/deflate/DeflateScanner.h"

#include "engine/image/deflate/HuffmanCode.h"

#include <QtEndian>

#include <algorithm>
#include <array>

namespace pagestack {

namespace {

    constexpr unsigned tableBits = 11;
    constexpr unsigned longestCodeAllowed = 15;
    constexpr std::size_t endOfBlock = 256;
    constexpr std::size_t mostLiterals = 288;
    constexpr std::size_t mostDistances = 32;

    class BitReader
    {
    public:
        explicit BitReader(const std::uint8_t* bytes)
            : m_bytes(bytes)
        {
        }

        std::size_t position() const { return m_position; }
        void skip(std::size_t count) { m_position += count; }
        /// At least 57 bits from the position on, the next one as the least significant.
        std::uint64_t peek() const
        {
            return qFromLittleEndian<quint64>(m_bytes + m_position / 8) >> m_position % 8;
        }
        unsigned take(unsigned count)
        {
            const auto bits = static_cast<unsigned>(peek() & ((1U << count) - 1));
            skip(count);
            return bits;
        }

    private:
        const std::uint8_t* m_bytes;
        std::size_t m_position = 0;
    };

    enum class Kind : std::uint8_t { Literal, Match, End, LongCode };

    struct Step
    {
        std::uint8_t codeBits = 0;
        std::uint8_t allBits = 0; ///< with the extra bits of a length or distance
        Kind kind = Kind::Literal;
        std::uint8_t symbol = 0; ///< the code lengths need it
    };

    Step literalStep(std::size_t symbol, unsigned codeBits)
    {
        const auto code = static_cast<std::uint8_t>(codeBits);
        if (symbol <= endOfBlock)
            return { code, code, symbol == endOfBlock ? Kind::End : Kind::Literal };
        const std::size_t extra = symbol < 265 || symbol == 285 ? 0 : (symbol - 261) / 4;
        return { code, static_cast<std::uint8_t>(codeBits + extra), Kind::Match };
    }

    Step distanceStep(std::size_t symbol, unsigned codeBits)
    {
        const std::size_t extra = symbol < 4 ? 0 : symbol / 2 - 1;
        return { static_cast<std::uint8_t>(codeBits), static_cast<std::uint8_t>(codeBits + extra) };
    }

    Step lengthStep(std::size_t symbol, unsigned codeBits)
    {
        const auto code = static_cast<std::uint8_t>(codeBits);
        return { code, code, Kind::Literal, static_cast<std::uint8_t>(symbol) };
    }

    /// Finds the step that the next code stands for.
    class Decoder
    {
    public:
        template <typename MakeStep>
        Decoder(std::span<const std::uint8_t> lengths, MakeStep makeStep)
        {
            std::array<std::uint16_t, mostLiterals> words {};
            makeCodeWords(lengths, words);
            for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
                const unsigned length = lengths[symbol];
                if (length == 0)
                    continue;
                const Step step = makeStep(symbol, length);
                if (length <= tableBits) {
                    for (std::size_t i = words[symbol]; i < m_table.size(); i += 1U << length)
                        m_table[i] = step;
                } else {
                    m_table[words[symbol] % m_table.size()].kind = Kind::LongCode;
                    m_longCodes[m_longCount++] = { words[symbol], step };
                }
            }
        }

        Step next(const BitReader& reader) const
        {
            const std::uint64_t bits = reader.peek();
            const Step step = m_table[bits % m_table.size()];
            return step.kind == Kind::LongCode ? longStep(bits) : step;
        }

    private:
        struct LongCode
        {
            std::uint16_t word = 0;
            Step step;
        };

        Step longStep(std::uint64_t bits) const
        {
            for (std::size_t i = 0; i < m_longCount; ++i) {
                const LongCode& code = m_longCodes[i];
                if (code.word == (bits & ((1U << code.step.codeBits) - 1)))
                    return code.step;
            }
            return {};
        }

        std::array<Step, 1U << tableBits> m_table {};
        std::array<LongCode, mostLiterals> m_longCodes;
        std::size_t m_longCount = 0;
    };

    struct BlockCode
    {
        std::array<std::uint8_t, mostLiterals + mostDistances> lengths {};
        std::size_t literals = mostLiterals;
        std::size_t distances = mostDistances;
    };

    BlockCode fixedCode()
    {
        BlockCode code;
        auto next = code.lengths.begin();
        next = std::fill_n(next, 144, std::uint8_t { 8 });
        next = std::fill_n(next, 112, std::uint8_t { 9 });
        next = std::fill_n(next, 24, std::uint8_t { 7 });
        next = std::fill_n(next, 8, std::uint8_t { 8 });
        std::fill_n(next, mostDistances, std::uint8_t { 5 });
        return code;
    }

    BlockCode readCode(BitReader& reader)
    {
        BlockCode code;
        code.literals = reader.take(5) + 257;
        code.distances = reader.take(5) + 1;
        std::array<std::uint8_t, codeLengthOrder.size()> lengths {};
        for (unsigned i = 0, count = reader.take(4) + 4; i < count; ++i)
            lengths[codeLengthOrder[i]] = static_cast<std::uint8_t>(reader.take(3));
        const Decoder decoder(lengths, lengthStep);
        for (std::size_t i = 0; i < code.literals + code.distances;) {
            const Step step = decoder.next(reader);
            reader.skip(step.codeBits);
            std::size_t times = 1;
            if (step.symbol >= 16)
                times = step.symbol == 16 ? 3 + reader.take(2)
                    : step.symbol == 17   ? 3 + reader.take(3)
                                          : 11 + reader.take(7);
            const std::uint8_t length = step.symbol < 16 ? step.symbol
                : step.symbol == 16 && i > 0             ? code.lengths[i - 1]
                                                         : std::uint8_t { 0 };
            times = std::min(times, code.lengths.size() - i);
            std::fill_n(code.lengths.begin() + static_cast<std::ptrdiff_t>(i), times, length);
            i += times;
        }
        return code;
    }

    void skipStored(BitReader& reader)
    {
        reader.skip((8 - reader.position() % 8) % 8);
        const std::size_t bytes = reader.take(16);
        reader.skip(16 + 8 * bytes);
    }

    void skipCoded(const BlockCode& code, BitReader& reader, std::size_t endBit)
    {
        const std::span<const std::uint8_t> lengths = code.lengths;
        const Decoder literals(lengths.first(code.literals), literalStep);
        const Decoder distances(lengths.subspan(code.literals, code.distances), distanceStep);
        while (reader.position() < endBit) {
            const Step step = literals.next(reader);
            reader.skip(step.allBits);
            if (step.kind == Kind::Match)
                reader.skip(distances.next(reader).allBits);
            else if (step.kind == Kind::End)
                return;
        }
    }

} // namespace

StreamEnd findStreamEnd(std::span<const std::uint8_t> stream)
{
    const std::size_t endBit = stream.size() * 8;
    BitReader reader(stream.data());
    StreamEnd found;
    for (bool isLast = false; !isLast && reader.position() < endBit;) {
        found.lastBlock = reader.position();
        isLast = reader.take(1) != 0;
        switch (reader.take(2)) {
        case 0:
            skipStored(reader);
            break;
        case 1:
            skipCoded(fixedCode(), reader, endBit);
            break;
        default:
            skipCoded(readCode(reader), reader, endBit);
            break;
        }
    }
    found.end = reader.position();
    return found;
}

} // namespace pagestack
