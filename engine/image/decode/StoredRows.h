#pragma once

#include "engine/image/decode/StripDecoder.h"
#include "engine/image/tiff/MappedTiffCopy.h"
#include "engine/image/tiff/TiffPageTags.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace pagestack {

/// Some rows of a page as the file's samples lie, a plane each: one plane of interleaved samples,
/// or one a sample. Rows are packed to whole bytes; samples of 16, 24, 32 and 64 bits have the
/// machine's byte order.
struct StoredBand
{
    int rows = 0; ///< 0: the page is at its end
    qsizetype strideBytes = 0;
    std::vector<const std::uint8_t*> planes;

    const std::uint8_t* row(int plane, int index) const
    {
        return planes[static_cast<std::size_t>(plane)] + index * strideBytes;
    }
};

/// One pass over the rows of a TIFF page in stored order, decoded but not interpreted: strips or
/// tiles are put together to bands. Memory follows the strip or the row of tiles; a strip that is
/// too large to be held is decoded row by row.
///
/// Only for pages whose samples lie pixel by pixel: not for sub-sampled YCbCr.
class StoredRows
{
public:
    /// Starts at the top of `page`, which must outlive the pass and stay the current one of its
    /// reader. Throws std::runtime_error.
    explicit StoredRows(const TiffPage& page);

    /// The next rows. Throws std::runtime_error when they cannot be decoded completely.
    StoredBand nextBand();

private:
    bool hasLargeEncodedStrip() const;
    void readStrips(int rows);
    void readRowByRow(int rows);
    void readTiles(int rows);
    std::uint8_t* planeStart(int plane);

    tiff* m_handle;
    const TiffPageTags& m_tags;
    qsizetype m_strideBytes = 0;
    int m_rowsPerBand = 0;
    std::uint32_t m_nextRow = 0;
    bool m_isRowByRow = false;
    std::unique_ptr<MappedTiffCopy> m_mappedCopy; ///< owns `m_handle` where it is needed
    std::optional<StripDecoder> m_decoder; ///< set by the constructor
    std::vector<std::uint8_t> m_samples; ///< of a band, plane after plane
    std::vector<std::uint8_t> m_tile;
};

} // namespace pagestack
