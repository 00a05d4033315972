#include "engine/image/decode/PieceDecoder.h"

#include "engine/image/decode/LzwDecoder.h"
#include "engine/image/decode/StripStream.h"
#include "engine/image/tiff/OpenTiffFile.h"
#include "engine/image/tiff/TiffPageTags.h"

#include <tiffio.h>

#include <algorithm>
#include <exception>

namespace pagestack {

bool PieceDecoder::knows(const TiffPageTags& tags)
{
    return (tags.compression == COMPRESSION_DEFLATE || tags.compression == COMPRESSION_ADOBE_DEFLATE
            || tags.compression == COMPRESSION_LZW)
        && SampleOrder::knows(tags);
}

PieceDecoder::PieceDecoder(const OpenTiffFile& file, const TiffPageTags& tags,
                           const SampleOrder& order, std::size_t rowBytes)
    : m_file(file)
    , m_tags(tags)
    , m_order(order)
    , m_rowBytes(rowBytes)
{
}

bool PieceDecoder::decode(const PiecePlace& place, std::span<std::uint8_t> to,
                          std::vector<std::uint8_t>& encoded) const noexcept
try {
    const std::uint64_t size = m_file.sizeBytes();
    if (place.bytes == 0 || place.bytes > std::min(mostBytes, size)
        || place.offset > size - place.bytes)
        return false;
    if (encoded.size() < place.bytes)
        encoded.resize(place.bytes);
    const auto bytes = std::span(encoded).first(place.bytes);
    m_file.readAt(place.offset, bytes);
    if (m_tags.fillOrder == FILLORDER_LSB2MSB)
        TIFFReverseBits(bytes.data(), static_cast<tmsize_t>(bytes.size()));
    if (!decoded(bytes, to))
        return false;
    m_order.restore(to, m_rowBytes);
    return true;
} catch (const std::exception&) {
    return false;
}

bool PieceDecoder::decoded(std::span<const std::uint8_t> encoded, std::span<std::uint8_t> to) const
{
    return m_tags.compression == COMPRESSION_LZW
        ? decodeLzw(encoded, to)
        : inflateWhole(encoded, to) == WholeStream::Fitting;
}

} // namespace pagestack
