#include "engine/image/decode/InflateStream.h"

#include <libdeflate.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <new>
#include <stdexcept>

namespace pagestack {

namespace {

    constexpr std::size_t mostAtOnce = std::size_t { 1 } << 30U; // zlib counts in 32 bits

    struct DecompressorFreer
    {
        void operator()(libdeflate_decompressor* decompressor) const noexcept
        {
            libdeflate_free_decompressor(decompressor);
        }
    };

    [[noreturn]] void failDamaged() { throw std::runtime_error("its Deflate data are damaged"); }

    [[noreturn]] void failShort()
    {
        throw std::runtime_error("its Deflate data end before its last row");
    }

} // namespace

struct InflateStream::State
{
    State()
    {
        if (inflateInit(&stream) != Z_OK)
            throw std::bad_alloc();
    }
    ~State() { inflateEnd(&stream); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    z_stream stream = {};
};

InflateStream::InflateStream(EncodedBytes bytes)
    : m_bytes(std::move(bytes))
    , m_state(std::make_unique<State>())
{
}

InflateStream::~InflateStream() = default;

/// How many bytes of `to` are filled: all of them unless the stream ends.
std::size_t InflateStream::inflateSome(std::span<std::uint8_t> to)
{
    z_stream& stream = m_state->stream;
    stream.next_out = to.data();
    stream.avail_out = static_cast<uInt>(std::min(to.size(), mostAtOnce));
    const uInt wanted = stream.avail_out;
    while (!m_isAtEnd && stream.avail_out > 0) {
        if (stream.avail_in == 0) {
            const std::span<const std::uint8_t> chunk = m_bytes.next();
            stream.next_in = const_cast<Bytef*>(chunk.data()); // only read
            stream.avail_in = static_cast<uInt>(chunk.size());
            if (chunk.empty())
                failShort();
        }
        const int result = inflate(&stream, Z_NO_FLUSH);
        if (result == Z_MEM_ERROR)
            throw std::bad_alloc();
        if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
            failDamaged();
        m_isAtEnd = result == Z_STREAM_END;
    }
    return wanted - stream.avail_out;
}

void InflateStream::read(std::span<std::uint8_t> to)
{
    while (!to.empty()) {
        const std::size_t got = inflateSome(to);
        if (got == 0)
            failShort();
        to = to.subspan(got);
    }
}

std::uint64_t InflateStream::skipRest(std::uint64_t most)
{
    std::array<std::uint8_t, 32768> skipped {};
    std::uint64_t count = 0;
    while (!m_isAtEnd && count <= most)
        count += inflateSome(skipped);
    return count;
}

bool inflateWhole(std::span<const std::uint8_t> encoded, std::span<std::uint8_t> to)
{
    thread_local const std::unique_ptr<libdeflate_decompressor, DecompressorFreer> decompressor(
        libdeflate_alloc_decompressor());
    if (!decompressor)
        throw std::bad_alloc();
    std::size_t got = 0;
    switch (libdeflate_zlib_decompress(decompressor.get(), encoded.data(), encoded.size(),
                                       to.data(), to.size(), &got)) {
    case LIBDEFLATE_SUCCESS:
        break;
    case LIBDEFLATE_INSUFFICIENT_SPACE:
        return false;
    default:
        failDamaged();
    }
    if (got < to.size())
        failShort();
    return true;
}

} // namespace pagestack
