#include "engine/image/decode/StripStream.h"

#include "engine/image/tiff/OpenTiffFile.h"

#include <libdeflate.h>
#include <tiffio.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>
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

    [[noreturn]] void failShortDeflate()
    {
        throw std::runtime_error("its Deflate data end before its last row");
    }

    class InflateStream : public StripStream
    {
    public:
        explicit InflateStream(EncodedBytes bytes)
            : m_bytes(std::move(bytes))
        {
            if (inflateInit(&m_stream) != Z_OK)
                throw std::bad_alloc();
        }
        ~InflateStream() override { inflateEnd(&m_stream); }
        InflateStream(const InflateStream&) = delete;
        InflateStream& operator=(const InflateStream&) = delete;

    private:
        std::size_t readSome(std::span<std::uint8_t> to) override
        {
            m_stream.next_out = to.data();
            m_stream.avail_out = static_cast<uInt>(std::min(to.size(), mostAtOnce));
            const uInt wanted = m_stream.avail_out;
            while (!m_isAtEnd && m_stream.avail_out > 0) {
                if (m_stream.avail_in == 0) {
                    const std::span<const std::uint8_t> chunk = m_bytes.next();
                    m_stream.next_in = const_cast<Bytef*>(chunk.data()); // only read
                    m_stream.avail_in = static_cast<uInt>(chunk.size());
                    if (chunk.empty())
                        failShort();
                }
                const int result = inflate(&m_stream, Z_NO_FLUSH);
                if (result == Z_MEM_ERROR)
                    throw std::bad_alloc();
                if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR)
                    failDamaged();
                m_isAtEnd = result == Z_STREAM_END;
            }
            return wanted - m_stream.avail_out;
        }

        void failShort() const override { failShortDeflate(); }

        EncodedBytes m_bytes;
        z_stream m_stream = {};
        bool m_isAtEnd = false;
    };

    class PackBitsStream : public StripStream
    {
    public:
        explicit PackBitsStream(EncodedBytes bytes)
            : m_bytes(std::move(bytes))
        {
        }

    private:
        std::size_t readSome(std::span<std::uint8_t> to) override
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

        void failShort() const override
        {
            throw std::runtime_error("its PackBits data end before its last row");
        }

        bool nextByte(std::uint8_t& byte)
        {
            if (m_chunk.empty())
                m_chunk = m_bytes.next();
            if (m_chunk.empty())
                return false;
            byte = m_chunk.front();
            m_chunk = m_chunk.subspan(1);
            return true;
        }

        /// False when nothing but a run without its byte follows: some writers pad strips with a
        /// byte.
        bool startRun()
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

        EncodedBytes m_bytes;
        std::span<const std::uint8_t> m_chunk;
        std::size_t m_runLeft = 0; ///< decoded bytes
        bool m_isLiteral = false;
        std::uint8_t m_repeated = 0;
    };

} // namespace

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

void StripStream::read(std::span<std::uint8_t> to)
{
    while (!to.empty()) {
        const std::size_t got = readSome(to);
        if (got == 0)
            failShort();
        to = to.subspan(got);
    }
}

std::uint64_t StripStream::skipRest(std::uint64_t most)
{
    std::array<std::uint8_t, 32768> skipped {};
    std::uint64_t count = 0;
    for (std::size_t got = 1; got > 0 && count <= most; count += got)
        got = readSome(skipped);
    return count;
}

std::unique_ptr<StripStream> inflateStream(EncodedBytes bytes)
{
    return std::make_unique<InflateStream>(std::move(bytes));
}

std::unique_ptr<StripStream> packBitsStream(EncodedBytes bytes)
{
    return std::make_unique<PackBitsStream>(std::move(bytes));
}

WholeStream inflateWhole(std::span<const std::uint8_t> encoded, std::span<std::uint8_t> to)
{
    thread_local const std::unique_ptr<libdeflate_decompressor, DecompressorFreer> decompressor(
        libdeflate_alloc_decompressor());
    if (!decompressor)
        throw std::bad_alloc();
    std::size_t got = 0;
    switch (libdeflate_zlib_decompress(decompressor.get(), encoded.data(), encoded.size(),
                                       to.data(), to.size(), &got)) {
    case LIBDEFLATE_SUCCESS:
        return got < to.size() ? WholeStream::Shorter : WholeStream::Fitting;
    case LIBDEFLATE_INSUFFICIENT_SPACE:
        return WholeStream::Longer;
    default:
        return WholeStream::Damaged;
    }
}

bool isFitting(WholeStream stream)
{
    if (stream == WholeStream::Shorter)
        failShortDeflate();
    if (stream == WholeStream::Damaged)
        failDamaged();
    return stream == WholeStream::Fitting;
}

} // namespace pagestack
