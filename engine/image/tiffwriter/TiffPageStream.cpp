#include "engine/image/tiffwriter/TiffPageStream.h"

#include "engine/files/ByteFile.h"
#include "engine/image/pixels/ByteOrder.h"

#include <algorithm>
#include <stdexcept>

namespace pagestack {

TiffPageStream::TiffPageStream(ByteFile& staged, const TiffFormat& format, std::uint64_t limitBytes)
    : m_staged(staged)
    , m_format(format)
    , m_header(format.headerBytes())
    , m_limitBytes(limitBytes)
{
}

/// How many of `size` bytes from `offset` on lie in the header.
std::size_t TiffPageStream::headerPart(std::uint64_t offset, std::size_t size) const
{
    const std::uint64_t begin = std::min<std::uint64_t>(offset, m_header.size());
    return std::min<std::uint64_t>(size, m_header.size() - begin);
}

/// Keeps the reason of a failure.
template <typename Transfer>
void TiffPageStream::guarded(Transfer transfer)
try {
    transfer();
} catch (const std::runtime_error& error) {
    m_writeError = error.what();
    throw;
}

std::uint64_t TiffPageStream::sizeBytes() { return m_staged.size(); }

std::size_t TiffPageStream::read(std::uint64_t offset, std::span<std::uint8_t> bytes)
{
    const std::size_t inHeader = headerPart(offset, bytes.size());
    std::copy_n(m_header.begin() + static_cast<std::ptrdiff_t>(offset), inHeader, bytes.begin());
    const std::uint64_t begin = offset + inHeader;
    const std::uint64_t end = std::max(m_staged.size(), begin);
    bytes = bytes.subspan(inHeader);
    bytes = bytes.first(std::min<std::uint64_t>(bytes.size(), end - begin));
    if (!bytes.empty())
        guarded([&] { m_staged.readAt(begin, bytes); });
    return inHeader + bytes.size();
}

void TiffPageStream::write(std::uint64_t offset, std::span<const std::uint8_t> bytes)
{
    const std::size_t inHeader = headerPart(offset, bytes.size());
    std::copy_n(bytes.begin(), inHeader, m_header.begin() + static_cast<std::ptrdiff_t>(offset));
    bytes = bytes.subspan(inHeader);
    if (bytes.empty())
        return;
    if (offset + inHeader + bytes.size() > m_limitBytes) {
        m_isFull = true;
        throw std::runtime_error("the file is full");
    }
    if (m_reserve && offset + inHeader != m_staged.size())
        throw std::runtime_error("the page cannot be encoded"); // the room would be elsewhere
    guarded([&] {
        if (m_reserve)
            m_reserve(bytes.size());
        else
            m_staged.writeAt(offset + inHeader, bytes);
    });
}

std::uint64_t TiffPageStream::directoryOffset() const
{
    return numberIn(std::span(m_header).subspan(m_format.firstLinkAt(), m_format.offsetBytes()),
                    false);
}

} // namespace pagestack
