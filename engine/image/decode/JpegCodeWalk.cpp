#include "engine/image/decode/JpegCodeWalk.h"

#include "engine/image/decode/JpegCodeWriter.h"
#include "engine/image/decode/JpegStream.h"

#include <QtEndian>

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

namespace pagestack {

namespace {

    constexpr std::uint64_t byteBits = 8;
    /// An MCU that is damaged is walked to its end, and a register reads ahead.
    constexpr std::size_t spareBytes = JpegCodes::mostUnitBytes + 2 * sizeof(std::uint64_t);
    constexpr std::size_t mostUnitBlocks = 10; // ITU-T T.81, section B.2.3

    [[noreturn]] void leave() { throw UnfitCodes("its codes are damaged or unusual"); }

} // namespace

/// The next bits, by a register that is filled up whenever it may not suffice.
class JpegCodeWalk::Bits
{
public:
    Bits(const std::uint8_t* bytes, std::uint64_t at)
        : m_next(bytes + at / byteBits)
    {
        fill();
        skip(static_cast<int>(at % byteBits));
    }

    /// Has 56 bits or more ready.
    void fill()
    {
        m_window |= qFromBigEndian<std::uint64_t>(m_next) >> m_count;
        m_next += (63 - m_count) >> 3;
        m_count |= 56;
    }
    void fillFor(int bits)
    {
        if (m_count < bits)
            fill();
    }

    unsigned peek(int count) const { return static_cast<unsigned>(m_window >> 1 >> (63 - count)); }
    void skip(int count)
    {
        m_window <<= count;
        m_count -= count;
    }

    std::uint64_t placeIn(const std::uint8_t* bytes) const
    {
        return static_cast<std::uint64_t>(m_next - bytes) * byteBits
            - static_cast<std::uint64_t>(m_count);
    }

private:
    const std::uint8_t* m_next;
    std::uint64_t m_window = 0; ///< the next bits from its highest one on
    int m_count = 0; ///< of them that are counted, up to 63
};

JpegCodeWalk::JpegCodeWalk(JpegStream& stream, std::size_t bufferBytes)
    : m_stream(stream)
    , m_bytes(std::max(bufferBytes, 2 * JpegCodes::mostUnitBytes) + spareBytes)
{
}

void JpegCodeWalk::begin(const JpegFrame& frame)
{
    m_blocks.clear();
    for (std::size_t c = 0; c < frame.components.size(); ++c) {
        const JpegComponent& component = frame.components[c];
        if (component.standardCodes < 0)
            leave();
        for (int i = 0; i < component.horizontal * component.vertical; ++i)
            m_blocks.push_back({ &JpegCodes::standard(component.standardCodes), c, i == 0 });
    }
    if (m_blocks.size() > mostUnitBlocks)
        leave();
    m_unitsAcross = frame.unitsAcross();
    m_rowsLeft = frame.unitsDown();
    m_corners = {};
    m_filled = 0;
    m_at = 0;
    m_written = 0;
    m_isEscaped = false;
    m_isAtEnd = false;
}

void JpegCodeWalk::next(int units, JpegCodeWriter& to)
{
    --m_rowsLeft;
    m_written = m_at;
    for (int unit = 0; unit < m_unitsAcross; ++unit) {
        JpegCodeWriter* const writer = unit < units ? &to : nullptr;
        prepareUnit(writer);
        if (unit == 0 && writer != nullptr)
            walkUnit<true>(writer);
        else
            walkUnit<false>(nullptr);
        if (unit + 1 == units) {
            to.copy(m_bytes.data(), m_written, m_at);
            to.corners() = m_corners;
        }
    }
}

void JpegCodeWalk::finish()
{
    for (; m_rowsLeft > 0; --m_rowsLeft)
        for (int unit = 0; unit < m_unitsAcross; ++unit) {
            prepareUnit(nullptr);
            walkUnit<false>(nullptr);
        }
    while (!m_isAtEnd && m_filled * byteBits < m_at + 2 * byteBits)
        read(); // up to the marker behind the last byte
    if (!m_isAtEnd || m_at > m_filled * byteBits || m_filled * byteBits - m_at >= byteBits)
        leave();
}

template <bool joins>
void JpegCodeWalk::walkUnit(JpegCodeWriter* to)
{
    constexpr int differenceBits = 32; // the code and the value
    constexpr int lastCoefficient = 63;
    constexpr int mostCorner = 1023;
    const std::uint8_t* const bytes = m_bytes.data();
    Bits bits(bytes, m_at);
    for (const Block& block : m_blocks) {
        const JpegCodes& codes = *block.codes;
        bits.fillFor(differenceBits);
        if (joins && block.isFirst)
            to->copy(bytes, m_written, bits.placeIn(bytes));
        const JpegCodes::Difference code = codes.difference(bits.peek(JpegCodes::windowBits));
        if (code.length == 0)
            leave();
        bits.skip(code.length);
        const auto value = static_cast<int>(bits.peek(code.size));
        bits.skip(code.size);
        // ITU-T T.81, section F.2.2.1: the lower half stands for negative differences.
        const int half = (1 << code.size) >> 1;
        int& corner = m_corners[block.component];
        corner += value < half ? value - 2 * half + 1 : value;
        // Up to 10 bits, and 11 for the difference between two, as with coefficients.
        if (corner > mostCorner || corner < -mostCorner - 1)
            leave();
        if (joins && block.isFirst) {
            const int difference = corner - to->corners()[block.component];
            const auto size
                = static_cast<int>(std::bit_width(static_cast<unsigned>(std::abs(difference))));
            const JpegCodes::Code joined = codes.ofDifference(size);
            to->put(joined.bits, joined.length);
            const int low = difference < 0 ? difference + (1 << size) - 1 : difference;
            to->put(static_cast<unsigned>(low), size);
            m_written = bits.placeIn(bytes);
        }
        for (int last = 0; last < lastCoefficient;) {
            bits.fillFor(JpegCodes::windowBits + JpegCodes::mostSymbolBits);
            const unsigned window = bits.peek(JpegCodes::windowBits);
            JpegCodes::Steps steps = codes.steps(window);
            // Behind the last coefficient no end of the block is coded.
            if (steps.bits == 0 || last + steps.coefficients >= lastCoefficient) {
                steps = codes.step(window);
                if (steps.bits == 0)
                    steps = codes.longStep(bits.peek(16));
                if (steps.bits == 0)
                    leave();
            }
            bits.skip(steps.bits);
            last += steps.coefficients;
            if (last > lastCoefficient)
                leave();
            if (steps.isEnd)
                break;
        }
    }
    m_at = bits.placeIn(bytes);
}

/// Has the bytes of an MCU ready, which may move those that `to` (null: nobody) has not got yet.
void JpegCodeWalk::prepareUnit(JpegCodeWriter* to)
{
    while (!m_isAtEnd && m_filled < m_at / byteBits + JpegCodes::mostUnitBytes) {
        if (to != nullptr)
            to->copy(m_bytes.data(), m_written, m_at);
        read();
    }
    if (m_at > m_filled * byteBits)
        leave();
}

/// Drops what was walked and takes more bytes in behind the rest.
void JpegCodeWalk::read()
{
    const std::size_t done = std::min<std::size_t>(m_at / byteBits, m_filled);
    std::memmove(m_bytes.data(), m_bytes.data() + done, m_filled - done);
    m_filled -= done;
    m_at -= done * byteBits;
    m_written = m_at;
    takePlain(m_stream.takeBytes(m_bytes.size() - spareBytes - m_filled));
}

void JpegCodeWalk::takePlain(std::span<const std::uint8_t> bytes)
{
    constexpr std::uint8_t marker = 0xFF;
    constexpr std::uint8_t endMarker = 0xD9; // EOI
    if (bytes.empty()) // without a marker of the end
        leave();
    std::uint8_t* to = m_bytes.data() + m_filled;
    const std::uint8_t* from = bytes.data();
    const std::uint8_t* const end = from + bytes.size();
    while (from != end) {
        if (m_isEscaped) {
            m_isEscaped = false;
            m_isAtEnd = *from == endMarker;
            if (m_isAtEnd) {
                --to; // the FF is the marker's
                break;
            }
            if (*from++ != 0)
                leave();
            continue;
        }
        const auto left = static_cast<std::size_t>(end - from);
        const auto* found = static_cast<const std::uint8_t*>(std::memchr(from, marker, left));
        const std::uint8_t* const next = found == nullptr ? end : found + 1;
        to = std::copy(from, next, to);
        from = next;
        m_isEscaped = found != nullptr;
    }
    m_filled = static_cast<std::size_t>(to - m_bytes.data());
    if (m_isAtEnd) // whatever reads on finds zeros, and where it is
        std::fill(to, to + spareBytes, std::uint8_t { 0 });
}

} // namespace pagestack
