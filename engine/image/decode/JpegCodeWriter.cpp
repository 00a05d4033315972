#include "engine/image/decode/JpegCodeWriter.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace pagestack {

namespace {

    constexpr std::size_t bufferBytes = std::size_t { 64 } * 1024;
    constexpr int wordBits = 32;

} // namespace

JpegCodeWriter::JpegCodeWriter(const Take& take)
    : m_take(take)
    , m_plain(bufferBytes)
    , m_escaped(2 * bufferBytes)
{
}

void JpegCodeWriter::put(std::uint64_t bits, int count)
{
    m_bits = m_bits << count | bits;
    m_count += count;
    if (m_count < wordBits)
        return;
    m_count -= wordBits;
    if (m_plainBytes + sizeof(std::uint32_t) > m_plain.size())
        flush();
    qToBigEndian(static_cast<std::uint32_t>(m_bits >> m_count), m_plain.data() + m_plainBytes);
    m_plainBytes += sizeof(std::uint32_t);
}

void JpegCodeWriter::copy(const std::uint8_t* bytes, std::uint64_t begin, std::uint64_t end)
{
    while (begin < end) {
        const int count = static_cast<int>(std::min<std::uint64_t>(end - begin, wordBits));
        const auto window = qFromBigEndian<std::uint64_t>(bytes + begin / 8) << begin % 8;
        put(window >> (64 - count), count);
        begin += static_cast<unsigned>(count);
    }
}

void JpegCodeWriter::finish()
{
    constexpr int byteBits = 8;
    const int missing = (byteBits - m_count % byteBits) % byteBits;
    put((1U << missing) - 1, missing);
    flush();
    for (; m_count > 0; m_count -= byteBits)
        m_plain[m_plainBytes++] = static_cast<std::uint8_t>(m_bits >> (m_count - byteBits));
    flush();
}

void JpegCodeWriter::flush()
{
    constexpr std::uint8_t marker = 0xFF;
    std::uint8_t* to = m_escaped.data();
    const std::uint8_t* from = m_plain.data();
    const std::uint8_t* const end = from + m_plainBytes;
    while (from != end) {
        const auto left = static_cast<std::size_t>(end - from);
        const auto* found = static_cast<const std::uint8_t*>(std::memchr(from, marker, left));
        const std::uint8_t* const next = found == nullptr ? end : found + 1;
        to = std::copy(from, next, to);
        from = next;
        if (found != nullptr)
            *to++ = 0;
    }
    m_take({ m_escaped.data(), to });
    m_plainBytes = 0;
}

} // namespace pagestack
