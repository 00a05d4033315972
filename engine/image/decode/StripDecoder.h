#pragma once

#include "engine/image/decode/PieceDecoder.h"
#include "engine/image/decode/SampleOrder.h"
#include "engine/image/decode/StripStream.h"
#include "engine/image/tiff/TiffPageTags.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

struct tiff;

namespace pagestack {

class TiffPage;

/// Decodes the strips or tiles of the page that is the current one of a handle, to samples in the
/// machine's byte order.
///
/// Deflate and PackBits are decoded here, since libtiff 4.5 takes damaged Deflate data for sound
/// and drops bytes of PackBits runs that reach over the end of a row, and sound LZW data, which
/// takes less than half the time; everything else by libtiff, LZW data with a fault as well.
/// Strips and tiles without data (sparse files: offset and size 0) are filled with 0, or with the
/// value of GDAL_NODATA where the page has it, and the page gets a warning.
class StripDecoder
{
public:
    /// `handle` is one on `page`, just restarted; both are borrowed. Throws std::runtime_error for
    /// samples that cannot be decoded.
    StripDecoder(const TiffPage& page, tiff* handle);

    /// Fills `to` with the rows of the page in strip `number`, or with all rows of a tile. Throws
    /// std::runtime_error if it is damaged or holds less.
    void decode(std::uint32_t number, std::span<std::uint8_t> to);

    /// What `decode` tries first; null if it does not know such pages.
    const PieceDecoder* pieces() const { return m_pieces ? &*m_pieces : nullptr; }
    PiecePlace place(std::uint32_t number) const;

    /// Begins a strip of `rows` rows that is too large to be held. Of pages with one plane.
    void begin(std::uint32_t strip, std::uint32_t rows);
    /// Fills `to` with the next row of that strip. Throws as `decode` does.
    void nextRow(std::span<std::uint8_t> to);

private:
    void decodeDoubtful(std::uint32_t number, std::span<std::uint8_t> to);
    EncodedBytes encoded(std::uint32_t number) const;
    std::unique_ptr<StripStream> openStream(std::uint32_t number) const;
    bool inflatedWhole(std::uint32_t number, std::span<std::uint8_t> to) const;
    std::uint64_t paddingBytes(std::uint64_t rows) const;
    void endStream(StripStream& stream, std::uint64_t rows);
    void endLzw(std::uint32_t number, std::uint64_t rows);
    void tellOfRest();
    bool decodedByLibtiff(std::uint32_t number, std::span<std::uint8_t> to);
    bool decodedTile(std::uint32_t number, std::span<std::uint8_t> to);
    void check(bool ok, std::uint32_t number);
    void checkScans(std::uint32_t number);
    void judgeTail(std::uint32_t number, std::uint64_t leftBytes);

    const TiffPage& m_page;
    tiff* m_handle;
    const TiffPageTags& m_tags;
    std::size_t m_rowBytes; ///< of a strip or tile; of sub-sampled pages, a row of blocks
    std::optional<SampleOrder> m_order; ///< of what can be decoded here, not by libtiff alone
    std::optional<PieceDecoder> m_pieces;
    std::vector<std::uint8_t> m_encoded; ///< scratch of `m_pieces`
    std::uint64_t m_noData = 0; ///< the bits of a sample where the file has no data
    std::vector<std::uint8_t> m_scratch;

    // Of the strip that is decoded row by row.
    std::uint32_t m_strip = 0;
    std::uint32_t m_row = 0; ///< of the page, the next
    std::uint32_t m_rows = 0;
    std::uint32_t m_rowsLeft = 0;
    bool m_isStripSparse = false;
    std::unique_ptr<StripStream> m_stream; ///< null: libtiff decodes it
};

/// False when StripDecoder decodes such pages itself, whatever their data.
bool isDecodedByLibtiff(const TiffPageTags& tags);

/// Number of strips and tiles of the current page of `handle` that have no data in the file.
std::uint32_t sparseStrips(tiff* handle);

} // namespace pagestack
