#include "engine/image/decode/EncodedBytes.h"

#include "engine/image/tiff/OpenTiffFile.h"

#include <tiffio.h>

#include <algorithm>

namespace pagestack {

EncodedBytes::EncodedBytes(const OpenTiffFile& file, std::uint64_t offset, std::uint64_t size,
                           bool isReversed)
    : m_file(file)
    , m_offset(offset)
    , m_left(std::min(size, file.sizeBytes() - std::min(offset, file.sizeBytes())))
    , m_isReversed(isReversed)
{
}

std::span<const std::uint8_t> EncodedBytes::next(std::uint64_t most)
{
    m_chunk.resize(std::min(most, m_left));
    if (m_chunk.empty())
        return m_chunk;
    m_file.readAt(m_offset, m_chunk);
    m_offset += m_chunk.size();
    m_left -= m_chunk.size();
    if (m_isReversed)
        TIFFReverseBits(m_chunk.data(), static_cast<tmsize_t>(m_chunk.size()));
    return m_chunk;
}

} // namespace pagestack
