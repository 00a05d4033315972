#include "engine/image/deflate/MatchDeflate.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <new>
#include <stdexcept>

namespace pagestack {

namespace {

    constexpr std::size_t emptyBlockBytes = 5;

    /// Positions in a deflate stream, counted in bits from its start.
    struct StreamEnd
    {
        std::size_t lastBlock = 0; ///< the bit that marks the last block as the last one
        std::size_t end = 0; ///< behind the last block
    };

    /// Looks for them by expanding the stream, which takes little of the time that making it took.
    StreamEnd findStreamEnd(const std::uint8_t* stream, std::size_t size)
    {
        // What data_type holds after Z_BLOCK (zlib.h): the unused bits of the last byte, and flags.
        constexpr int inLastBlock = 64;
        constexpr int atBlockEnd = 128;
        z_stream inflater = {};
        if (inflateInit2(&inflater, -MAX_WBITS) != Z_OK)
            throw std::bad_alloc();
        std::array<std::uint8_t, std::size_t { 32 } * 1024> expanded;
        inflater.next_in = const_cast<std::uint8_t*>(stream);
        inflater.avail_in = static_cast<unsigned>(size);
        StreamEnd found;
        for (int result = Z_OK; result == Z_OK && found.end == 0;) {
            inflater.next_out = expanded.data();
            inflater.avail_out = expanded.size();
            result = inflate(&inflater, Z_BLOCK);
            if ((inflater.data_type & atBlockEnd) != 0) {
                const bool isLast = (inflater.data_type & inLastBlock) != 0;
                (isLast ? found.end : found.lastBlock)
                    = 8 * inflater.total_in - static_cast<unsigned>(inflater.data_type & 7);
            }
        }
        inflateEnd(&inflater);
        if (found.end == 0)
            throw std::logic_error("compressed pixels cannot be expanded");
        return found;
    }

    /// Takes the mark of the last block from it and adds an empty stored block, which ends with a
    /// byte. Returns the new size.
    std::size_t reopenStream(std::uint8_t* stream, std::size_t size)
    {
        const StreamEnd at = findStreamEnd(stream, size);
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
    return libdeflate_deflate_compress_bound(nullptr, count) + emptyBlockBytes;
}

std::size_t MatchDeflate::compress(std::span<const std::uint8_t> bytes, bool endsStream,
                                   std::uint8_t* out)
{
    if (m_codec == nullptr)
        m_codec.reset(libdeflate_alloc_compressor(m_level));
    if (m_codec == nullptr)
        throw std::bad_alloc();
    const std::size_t room = bound(bytes.size()) - emptyBlockBytes;
    const std::size_t size
        = libdeflate_deflate_compress(m_codec.get(), bytes.data(), bytes.size(), out, room);
    if (size == 0)
        throw std::logic_error("compressed pixels take more than their bound");
    return endsStream ? size : reopenStream(out, size);
}

} // namespace pagestack
