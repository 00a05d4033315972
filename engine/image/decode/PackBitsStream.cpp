#include "engine/image/decode/PackBitsStream.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

namespace pagestack {

PackBitsStream::PackBitsStream(EncodedBytes bytes)
    : m_bytes(std::move(bytes))
{
}

bool PackBitsStream::nextByte(std::uint8_t& byte)
{
    if (m_chunk.empty())
        m_chunk = m_bytes.next();
    if (m_chunk.empty())
        return false;
    byte = m_chunk.front();
    m_chunk = m_chunk.subspan(1);
    return true;
}

/// False when nothing but a run without its byte follows: some writers pad strips with a byte.
bool PackBitsStream::startRun()
{
    constexpr std::uint8_t nothing = 128;
    std::uint8_t head = nothing;
    while (head == nothing)
        if (!nextByte(head))
            return false;
    m_isLiteral = head < nothing;
    m_runLeft = m_isLiteral ? head + 1U : 257U - head;
    if (m_isLiteral ? m_chunk.empty() && m_bytes.left() == 0 : !nextByte(m_repeated))
        m_runLeft = 0;
    return m_runLeft > 0;
}

/// How many bytes of `to` are filled; 0 at the end.
std::size_t PackBitsStream::readSome(std::span<std::uint8_t> to)
{
    if (m_runLeft == 0 && !startRun())
        return 0;
    std::size_t count = std::min(m_runLeft, to.size());
    if (m_isLiteral) {
        if (m_chunk.empty())
            m_chunk = m_bytes.next();
        count = std::min(count, m_chunk.size());
        std::memcpy(to.data(), m_chunk.data(), count);
        m_chunk = m_chunk.subspan(count);
    } else {
        std::memset(to.data(), m_repeated, count);
    }
    m_runLeft -= count;
    return count;
}

void PackBitsStream::read(std::span<std::uint8_t> to)
{
    while (!to.empty()) {
        const std::size_t got = readSome(to);
        if (got == 0)
            throw std::runtime_error("its PackBits data end before its last row");
        to = to.subspan(got);
    }
}

std::uint64_t PackBitsStream::skipRest(std::uint64_t most)
{
    std::array<std::uint8_t, 128> skipped {};
    std::uint64_t count = 0;
    for (std::size_t got = 1; got > 0 && count <= most; count += got)
        got = readSome(skipped);
    return count;
}

} // namespace pagestack
