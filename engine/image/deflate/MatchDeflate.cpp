#include "engine/image/deflate/MatchDeflate.h"

#include "engine/image/deflate/DeflateScanner.h"

#include <libdeflate.h>

#include <algorithm>
#include <new>
#include <stdexcept>

namespace pagestack {

namespace {

    /// Takes the mark of the last block from it and adds an empty stored block, which ends with a
    /// byte. Returns the new size.
    std::size_t reopenStream(std::uint8_t* stream, std::size_t size)
    {
        const StreamEnd at = findStreamEnd({ stream, size });
        stream[at.lastBlock / 8]
            &= static_cast<std::uint8_t>(~(1U << static_cast<unsigned>(at.lastBlock % 8)));
        // Three zero bits say that a stored block follows which is not the last one.
        std::uint8_t* const lengths = stream + (at.end + 3 + 7) / 8;
        std::fill(stream + size, std::max(stream + size, lengths), std::uint8_t { 0 });
        std::uint8_t* end = std::fill_n(lengths, 2, std::uint8_t { 0 });
        end = std::fill_n(end, 2, std::uint8_t { 0xFF });
        return static_cast<std::size_t>(end - stream);
    }

} // namespace

MatchDeflate::MatchDeflate(int level)
    : m_level(level)
{
}

void MatchDeflate::Closer::operator()(libdeflate_compressor* codec) const noexcept
{
    libdeflate_free_compressor(codec);
}

std::size_t MatchDeflate::bound(std::size_t count)
{
    return libdeflate_deflate_compress_bound(nullptr, count) + streamEndSlack;
}

std::size_t MatchDeflate::compress(std::span<const std::uint8_t> bytes, bool endsStream,
                                   std::uint8_t* out)
{
    if (m_codec == nullptr)
        m_codec.reset(libdeflate_alloc_compressor(m_level));
    if (m_codec == nullptr)
        throw std::bad_alloc();
    const std::size_t room = bound(bytes.size()) - streamEndSlack;
    const std::size_t size
        = libdeflate_deflate_compress(m_codec.get(), bytes.data(), bytes.size(), out, room);
    if (size == 0)
        throw std::logic_error("compressed pixels take more than their bound");
    return endsStream ? size : reopenStream(out, size);
}

} // namespace pagestack
