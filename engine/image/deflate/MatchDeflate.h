#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

struct libdeflate_compressor;

namespace pagestack {

/// A deflate coder (RFC 1951) that searches for matches. One thread at a time.
class MatchDeflate
{
public:
    /// `level` is 1 (fast) to 12 (small).
    explicit MatchDeflate(int level);

    /// The most bytes that `compress` touches for `count` bytes.
    static std::size_t bound(std::size_t count);

    /// As HuffmanDeflate::compress.
    std::size_t compress(std::span<const std::uint8_t> bytes, bool endsStream, std::uint8_t* out);

private:
    struct Closer
    {
        void operator()(libdeflate_compressor* codec) const noexcept;
    };

    int m_level;
    std::unique_ptr<libdeflate_compressor, Closer> m_codec; ///< from its first use on
};

} // namespace pagestack
