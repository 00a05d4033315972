#pragma once

#include "engine/image/decode/SampleOrder.h"

#include <cstdint>
#include <span>
#include <vector>

namespace pagestack {

class OpenTiffFile;
struct TiffPageTags;

/// Where the encoded bytes of a strip or tile lie.
struct PiecePlace
{
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;
};

/// Decodes strips and tiles that are plainly sound, of Deflate and LZW, without a handle of
/// libtiff. Any thread, several at once.
class PieceDecoder
{
public:
    /// Encoded data up to this size are held as a whole.
    static constexpr std::uint64_t mostBytes = std::uint64_t { 16 } * 1024 * 1024;

    static bool knows(const TiffPageTags& tags);

    /// For pieces in rows of `rowBytes` of a page that it knows; `file` and `tags` are borrowed.
    PieceDecoder(const OpenTiffFile& file, const TiffPageTags& tags, const SampleOrder& order,
                 std::size_t rowBytes);

    /// Fills `to` with the samples of a strip or tile. Returns false, with anything in `to`, for
    /// one that there may be something to say of: it is not there, too large to be held, longer or
    /// shorter than it should be, damaged. Throws nothing. `encoded` is scratch, which grows.
    bool decode(const PiecePlace& place, std::span<std::uint8_t> to,
                std::vector<std::uint8_t>& encoded) const noexcept;

private:
    bool decoded(std::span<const std::uint8_t> encoded, std::span<std::uint8_t> to) const;

    const OpenTiffFile& m_file;
    const TiffPageTags& m_tags;
    SampleOrder m_order;
    std::size_t m_rowBytes;
};

} // namespace pagestack
