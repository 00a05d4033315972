#pragma once

#include <QtEndian>

#include <cstdint>

namespace pagestack {

/// Writes codes of a deflate stream (RFC 1951): from the least significant bit of each byte on.
/// The memory belongs to the caller, who leaves `slackBytes` behind the last byte written.
class BitWriter
{
public:
    static constexpr int slackBytes = 8;

    explicit BitWriter(std::uint8_t* out)
        : m_out(out)
    {
    }

    /// Adds the lowest `count` bits of `bits`, whose other bits are 0. Between two calls of `flush`
    /// there is room for 56 bits.
    void put(std::uint64_t bits, unsigned count)
    {
        m_bits |= bits << m_count;
        m_count += count;
    }

    /// Stores the whole bytes.
    void flush()
    {
        qToLittleEndian(m_bits, m_out);
        m_out += m_count / 8;
        m_bits >>= m_count & ~7U;
        m_count &= 7U;
    }

    /// Fills the byte begun with zeros and stores it. Returns where the next byte goes.
    std::uint8_t* alignToByte()
    {
        m_count = (m_count + 7) & ~7U;
        flush();
        return m_out;
    }

    /// Goes on behind bytes that were stored past the end; only after `alignToByte`.
    void skipTo(std::uint8_t* out) { m_out = out; }

private:
    std::uint8_t* m_out;
    std::uint64_t m_bits = 0;
    unsigned m_count = 0; ///< of bits that are in `m_bits`
};

} // namespace pagestack
