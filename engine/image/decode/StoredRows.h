#pragma once

#include "engine/image/decode/StripDecoder.h"
#include "engine/image/tiff/MappedTiffCopy.h"
#include "engine/image/tiff/TiffPageTags.h"
#include "engine/threads/SharedWork.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
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

/// What of a page a pass is to read, for who looks at the page and does not convert it.
struct PagePart
{
    std::uint32_t firstRow = 0; ///< as startRow() gives it; the pass goes on to the end of the page
    std::uint32_t firstColumn = 0; ///< samples of tiles outside mean nothing
    std::uint32_t endColumn = std::numeric_limits<std::uint32_t>::max();
};

/// The last row up to `row` at which a pass over such a page can begin without decoding others.
std::uint32_t startRow(const TiffPageTags& tags, std::uint32_t row);

/// About what a pass over such a page holds of its samples at a time.
std::uint64_t heldBytes(const TiffPageTags& tags);

/// Whether every pass over the page copies its strips to a temporary file first, since they are
/// large and the decoder would hold them.
bool isReadFromCopy(const TiffPage& page);

/// One pass over the rows of a TIFF page in stored order, decoded but not interpreted: strips or
/// tiles are put together to bands. Memory follows the strip or the row of tiles; a strip that is
/// too large to be held is decoded row by row.
///
/// Only for pages whose samples lie pixel by pixel: not for sub-sampled YCbCr.
class StoredRows
{
public:
    /// Starts at the top of `page`, which must outlive the pass and stay the current one of its
    /// reader. Strips and tiles of a band are decoded as parts of `work`, which may be null. Throws
    /// std::runtime_error.
    explicit StoredRows(const TiffPage& page, const std::optional<PagePart>& part = {},
                        SharedWork* work = nullptr);

    /// The next rows. Throws std::runtime_error when they cannot be decoded completely.
    StoredBand nextBand();

private:
    /// A strip or tile that is wanted.
    struct Piece
    {
        std::uint32_t number = 0;
        std::uint8_t* to = nullptr; ///< its first row
        std::size_t bytes = 0; ///< of the strip, or of a row of the tile that belongs to the page
        PiecePlace place {}; ///< set where it is decoded as a part of the work
        bool isDone = false;
    };

    bool hasAllPlainBytes() const;
    void begin(const PagePart& part);
    void readPlain(int rows);
    void readStrips(int rows);
    void readRowByRow(int rows);
    void readTiles(int rows);
    void read(const Piece& piece, int rows);
    void readTogether(int rows);
    void shareOut(int rows);
    void decode(const Piece& piece, int rows);
    std::span<std::uint8_t> roomFor(const Piece& piece, std::vector<std::uint8_t>& tile) const;
    void putInPlace(const Piece& piece, int rows, std::span<const std::uint8_t> decoded) const;
    std::uint8_t* planeStart(int plane);

    tiff* m_handle;
    const TiffPage& m_page;
    const TiffPageTags& m_tags;
    const std::optional<PagePart> m_part; ///< none: all of the page
    SharedWork* m_work; ///< null: all is decoded by this thread
    qsizetype m_strideBytes = 0;
    int m_rowsPerBand = 0;
    std::uint32_t m_nextRow = 0;
    bool m_isRowByRow = false;
    std::optional<SampleOrder> m_plainOrder; ///< of uncompressed rows that are read as they lie
    std::unique_ptr<MappedTiffCopy> m_mappedCopy; ///< owns `m_handle` where it is needed
    std::optional<StripDecoder> m_decoder; ///< set by the constructor
    std::vector<std::uint8_t> m_samples; ///< of a band, plane after plane
    std::size_t m_tileBytes = 0;
    std::vector<std::uint8_t> m_tile;
    std::vector<Piece> m_pieces; ///< of the band, to be read together
};

} // namespace pagestack
