#include "engine/files/ByteSpool.h"

#include "engine/files/PosixFile.h"

#include <algorithm>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace pagestack {

ByteSpool::~ByteSpool()
{
    if (m_file >= 0)
        ::close(m_file);
}

void ByteSpool::moveToFile()
{
    m_file = openUnnamedFile();
    const std::vector<std::uint8_t> bytes = std::exchange(m_memory, {});
    writeFully(m_file, 0, bytes);
}

void ByteSpool::writeAt(std::uint64_t offset, std::span<const std::uint8_t> bytes)
{
    const std::uint64_t end = offset + bytes.size();
    if (m_file < 0 && end > m_mostInMemory)
        moveToFile();
    if (m_file < 0) {
        m_memory.resize(std::max<std::size_t>(m_memory.size(), end));
        std::copy(bytes.begin(), bytes.end(),
                  m_memory.begin() + static_cast<std::ptrdiff_t>(offset));
    } else {
        writeFully(m_file, offset, bytes);
    }
    m_size = std::max(m_size, end);
}

void ByteSpool::readAt(std::uint64_t offset, std::span<std::uint8_t> bytes)
{
    if (m_file >= 0) {
        readFully(m_file, offset, bytes);
        return;
    }
    if (offset > m_size || bytes.size() > m_size - offset)
        throw std::runtime_error("cannot read: the bytes were never written");
    std::copy_n(m_memory.begin() + static_cast<std::ptrdiff_t>(offset), bytes.size(),
                bytes.begin());
}

} // namespace pagestack
