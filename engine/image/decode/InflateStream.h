#pragma once

#include "engine/image/decode/EncodedBytes.h"
#include "engine/image/decode/StripStream.h"

#include <memory>
#include <vector>

namespace pagestack {

/// A strip in the zlib format (RFC 1950), which TIFF calls Deflate: compression 8 and 32946. Its
/// checksum is compared by `skipRest`.
class InflateStream : public StripStream
{
public:
    /// Throws std::bad_alloc.
    explicit InflateStream(EncodedBytes bytes);
    ~InflateStream() override;
    InflateStream(const InflateStream&) = delete;
    InflateStream& operator=(const InflateStream&) = delete;

    void read(std::span<std::uint8_t> to) override;
    std::uint64_t skipRest(std::uint64_t most) override;

private:
    struct State;

    std::size_t inflateSome(std::span<std::uint8_t> to);

    EncodedBytes m_bytes;
    std::unique_ptr<State> m_state;
    bool m_isAtEnd = false;
};

/// Decodes the whole of a zlib stream into `to` in one step, which takes less time than an
/// InflateStream. False when the stream has more bytes than that, and nothing is known of it.
/// Throws std::runtime_error when it has fewer, or is damaged.
bool inflateWhole(std::span<const std::uint8_t> encoded, std::span<std::uint8_t> to);

} // namespace pagestack
