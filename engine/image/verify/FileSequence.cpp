#include "engine/image/verify/ImageReaders.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace pagestack {

namespace {

    constexpr std::uint64_t bufferBytes = 65536;

} // namespace

std::size_t FileSequence::read(std::span<std::uint8_t> bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        if (m_used == m_buffer.size()) {
            m_buffer.resize(std::min(bufferBytes, m_file.size() - m_offset));
            m_used = 0;
            if (m_buffer.empty())
                break;
            m_file.readAt(m_offset, m_buffer);
            m_offset += m_buffer.size();
        }
        const std::size_t part = std::min(bytes.size() - done, m_buffer.size() - m_used);
        std::copy_n(m_buffer.begin() + static_cast<std::ptrdiff_t>(m_used), part,
                    bytes.begin() + static_cast<std::ptrdiff_t>(done));
        m_used += part;
        done += part;
    }
    return done;
}

void FileSequence::checkEnd(std::size_t unused) const
{
    const std::uint64_t behind = m_file.size() - m_offset + (m_buffer.size() - m_used) + unused;
    if (behind > 0)
        throw std::runtime_error(std::to_string(behind) + " bytes lie behind its end");
}

} // namespace pagestack
