#include "engine/fleet/LineSpool.h"

#include <algorithm>
#include <span>

namespace pagestack {

namespace {

    constexpr qsizetype blockBytes = 1 << 20;

    template <typename Byte, typename Bytes>
    std::span<Byte> spanOf(Bytes& bytes)
    {
        return { reinterpret_cast<Byte*>(bytes.data()), static_cast<std::size_t>(bytes.size()) };
    }

} // namespace

std::uint64_t LineSpool::append(const QByteArray& line)
{
    const std::uint64_t offset = m_bytes.size() + static_cast<std::uint64_t>(m_waiting.size());
    m_waiting += line;
    if (m_waiting.size() >= blockBytes)
        flush();
    return offset;
}

void LineSpool::flush()
{
    m_bytes.writeAt(m_bytes.size(), spanOf<const std::uint8_t>(m_waiting));
    m_waiting.clear();
}

std::optional<QByteArray> LineSpool::lineAt(std::uint64_t offset)
{
    flush();
    if (offset >= m_bytes.size())
        return std::nullopt;
    for (qsizetype wanted = blockBytes;; wanted *= 2) {
        const auto have = static_cast<std::uint64_t>(m_loaded.size());
        if (offset >= m_loadedAt && offset < m_loadedAt + have) {
            const auto start = static_cast<qsizetype>(offset - m_loadedAt);
            const qsizetype end = m_loaded.indexOf('\n', start);
            if (end >= 0)
                return m_loaded.mid(start, end - start + 1);
        }
        m_loaded.resize(static_cast<qsizetype>(
            std::min(static_cast<std::uint64_t>(wanted), m_bytes.size() - offset)));
        m_loadedAt = offset;
        m_bytes.readAt(offset, spanOf<std::uint8_t>(m_loaded));
    }
}

} // namespace pagestack
