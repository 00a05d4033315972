#include "engine/image/decode/StoredRows.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/threads/StopScope.h"

#include <tiffio.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <new>
#include <stdexcept>

namespace pagestack {

namespace {

    /// What a band aims at: large enough to make calls cheap, small enough for the cache.
    constexpr std::uint64_t wantedBandBytes = std::uint64_t { 512 } * 1024;

    /// A strip up to this size is decoded as a whole.
    constexpr std::uint64_t largestWholeStripBytes = std::uint64_t { 4 } * 1024 * 1024;

    /// A strip or tile up to this size, encoded or decoded, is one of those that several threads
    /// hold.
    constexpr std::uint64_t largestSharedPieceBytes = std::uint64_t { 4 } * 1024 * 1024;

    /// So many strips are worth while to be decoded by several threads, in a band up to that size.
    constexpr std::uint64_t wantedSharedStrips = 4;
    constexpr std::uint64_t largestSharedBandBytes = std::uint64_t { 2 } * 1024 * 1024;

    /// So many pieces are laid out for the threads at a time.
    constexpr std::size_t mostSharedPieces = 512;

    /// An encoded strip up to this size may be held as a whole.
    constexpr std::uint64_t largestEncodedStripBytes = std::uint64_t { 16 } * 1024 * 1024;

    /// More than this is never held at a time.
    constexpr std::uint64_t largestBandBytes = std::uint64_t { 256 } * 1024 * 1024;

    /// libtiff 4.5 takes a fax row for one sample a pixel, and JPEG strips that are smaller than
    /// they should be, and leaves the other bytes as they were: they must not be those of other
    /// rows.
    bool mayLeaveGaps(const TiffPageTags& tags)
    {
        return tags.isFax() || tags.compression == COMPRESSION_JPEG;
    }

    /// Switching planes in mid-strip would decode the strip from its start again. JBIG has no rows.
    bool isRowByRow(const TiffPageTags& tags)
    {
        const std::uint64_t rowBytes = tags.planeRowBytes() * static_cast<unsigned>(tags.planes());
        return !tags.isTiled && !tags.planesAreSeparate && tags.compression != COMPRESSION_JBIG
            && tags.rowsPerStrip * rowBytes > largestWholeStripBytes;
    }

    /// The samples lie in the file as they are, but for their byte order.
    bool isPlain(const TiffPageTags& tags)
    {
        return tags.compression == COMPRESSION_NONE && tags.predictor == PREDICTOR_NONE
            && tags.fillOrder == FILLORDER_MSB2LSB && !tags.isTiled && !tags.planesAreSeparate
            && (tags.bitsPerSample <= 8 || tags.bitsPerSample == 16);
    }

    std::uint64_t stripsOfBand(std::uint64_t stripBytes, bool isShared)
    {
        const std::uint64_t strips = std::max<std::uint64_t>(1, wantedBandBytes / stripBytes);
        return isShared
            ? std::max(strips, std::min(wantedSharedStrips, largestSharedBandBytes / stripBytes))
            : strips;
    }

    bool hasLargeEncodedStrip(tiff* handle)
    {
        const std::uint32_t strips = TIFFNumberOfStrips(handle);
        for (std::uint32_t strip = 0; strip < strips; ++strip)
            if (TIFFGetStrileByteCount(handle, strip) > largestEncodedStripBytes)
                return true;
        return false;
    }

} // namespace

std::uint64_t heldBytes(const TiffPageTags& tags)
{
    const std::uint64_t rowBytes = tags.planeRowBytes() * static_cast<unsigned>(tags.planes());
    const std::uint64_t rows = tags.isTiled ? tags.tileHeightPx : tags.rowsPerStrip;
    const std::uint64_t pieces = std::min<std::uint64_t>(rows, tags.heightPx) * rowBytes;
    return isRowByRow(tags) ? std::max(rowBytes, wantedBandBytes)
                            : std::max(pieces, wantedBandBytes);
}

bool isReadFromCopy(const TiffPage& page)
{
    const TiffPageTags& tags = page.tags();
    return isRowByRow(tags) && !isPlain(tags) && isDecodedByLibtiff(tags)
        && hasLargeEncodedStrip(page.load());
}

std::uint32_t startRow(const TiffPageTags& tags, std::uint32_t row)
{
    if (isRowByRow(tags) && isPlain(tags))
        return row;
    const std::uint32_t step = tags.isTiled ? tags.tileHeightPx : tags.rowsPerStrip;
    return row - row % step;
}

StoredRows::StoredRows(const TiffPage& page, const std::optional<PagePart>& part, SharedWork* work)
    : m_handle(page.restart())
    , m_page(page)
    , m_tags(page.tags())
    , m_part(part)
    , m_work(PieceDecoder::knows(m_tags) && !isRowByRow(m_tags) ? work : nullptr)
    , m_strideBytes(static_cast<qsizetype>(m_tags.planeRowBytes()))
{
    const TiffPageTags& tags = m_tags;
    const std::uint64_t rowBytes = tags.planeRowBytes() * static_cast<unsigned>(tags.planes());
    const std::uint64_t pieceRows = tags.isTiled ? tags.tileHeightPx : tags.rowsPerStrip;
    std::uint64_t rows = std::min<std::uint64_t>(pieceRows, tags.heightPx);
    m_isRowByRow = isRowByRow(tags);
    if (m_part && m_isRowByRow && isPlain(tags) && hasAllPlainBytes())
        m_plainOrder.emplace(tags, TIFFIsByteSwapped(m_handle) != 0);
    if (m_isRowByRow && !m_plainOrder && isDecodedByLibtiff(tags)
        && hasLargeEncodedStrip(m_handle)) {
        m_mappedCopy = std::make_unique<MappedTiffCopy>(page.reader(), page.index());
        m_handle = m_mappedCopy->handle();
        applyRowsPerStrip(m_handle, tags);
    }
    if (tags.compression == COMPRESSION_JPEG && tags.photometric == PHOTOMETRIC_YCBCR
        && !tags.planesAreSeparate)
        TIFFSetField(m_handle, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (m_isRowByRow)
        rows = std::max<std::uint64_t>(1, wantedBandBytes / rowBytes);
    else if (!tags.isTiled)
        rows *= stripsOfBand(rows * rowBytes, m_work != nullptr);
    rows = std::min<std::uint64_t>(rows, tags.heightPx);
    if (rows * rowBytes > largestBandBytes)
        throw std::runtime_error(tags.isTiled ? "its tiles are too large"
                                              : "its strips are too large");
    m_rowsPerBand = static_cast<int>(rows);
    m_samples.resize(rows * rowBytes);
    if (tags.isTiled) {
        const tmsize_t tileBytes = TIFFTileSize(m_handle);
        if (tileBytes <= 0
            || static_cast<std::uint64_t>(tileBytes) * (tags.isFax() ? 2 : 1)
                > largestBandBytes - m_samples.size())
            throw std::runtime_error("its tiles are too large");
        if (tags.bitsOf(tags.tileWidthPx) % 8 != 0)
            throw std::runtime_error("a tile width of " + std::to_string(tags.tileWidthPx)
                                     + " is not supported");
        m_tileBytes = static_cast<std::size_t>(tileBytes);
        if (m_tileBytes > largestSharedPieceBytes)
            m_work = nullptr;
    }
    m_decoder.emplace(page, m_handle);
    if (m_part)
        begin(*m_part);
}

void StoredRows::begin(const PagePart& part)
{
    m_nextRow = part.firstRow;
    if (m_plainOrder || !m_isRowByRow)
        return;
    for (m_nextRow -= part.firstRow % m_tags.rowsPerStrip; m_nextRow < part.firstRow; ++m_nextRow) {
        StopScope::leavePageIfStopped();
        readRowByRow(1);
    }
}

std::uint8_t* StoredRows::planeStart(int plane)
{
    return m_samples.data() + static_cast<std::ptrdiff_t>(plane) * m_rowsPerBand * m_strideBytes;
}

StoredBand StoredRows::nextBand()
{
    StoredBand band;
    const int rows = static_cast<int>(std::min<std::uint32_t>(
        static_cast<std::uint32_t>(m_rowsPerBand), m_tags.heightPx - m_nextRow));
    if (rows == 0)
        return band;
    if (mayLeaveGaps(m_tags))
        std::fill(m_samples.begin(), m_samples.end(), std::uint8_t { 0 });
    if (m_plainOrder)
        readPlain(rows);
    else if (m_tags.isTiled)
        readTiles(rows);
    else if (m_isRowByRow)
        readRowByRow(rows);
    else
        readStrips(rows);
    m_nextRow += static_cast<std::uint32_t>(rows);
    band.rows = rows;
    band.strideBytes = m_strideBytes;
    for (int plane = 0; plane < m_tags.planes(); ++plane)
        band.planes.push_back(planeStart(plane));
    return band;
}

void StoredRows::readStrips(int rows)
{
    for (int plane = 0; plane < m_tags.planes(); ++plane) {
        std::uint8_t* to = planeStart(plane);
        for (std::uint32_t done = 0; done < static_cast<std::uint32_t>(rows);) {
            const std::uint32_t row = m_nextRow + done;
            const std::uint32_t count = std::min(m_tags.rowsPerStrip, m_tags.heightPx - row);
            const auto bytes = static_cast<std::size_t>(count * m_strideBytes);
            const std::uint32_t strip = static_cast<std::uint32_t>(plane) * m_tags.stripsInPlane()
                + row / m_tags.rowsPerStrip;
            read({ strip, to, bytes }, rows);
            to += bytes;
            done += count;
        }
    }
    readTogether(rows);
}

void StoredRows::readRowByRow(int rows)
{
    for (int i = 0; i < rows; ++i) {
        const std::uint32_t row = m_nextRow + static_cast<std::uint32_t>(i);
        if (row % m_tags.rowsPerStrip == 0)
            m_decoder->begin(row / m_tags.rowsPerStrip,
                             std::min(m_tags.rowsPerStrip, m_tags.heightPx - row));
        m_decoder->nextRow(
            { m_samples.data() + i * m_strideBytes, static_cast<std::size_t>(m_strideBytes) });
    }
    if (m_mappedCopy)
        m_mappedCopy->dropPages();
}

/// Whether every strip says that it has the bytes of its rows; where one does not, libtiff tells
/// what is wrong.
bool StoredRows::hasAllPlainBytes() const
{
    for (std::uint32_t strip = 0; strip < m_tags.stripsInPlane(); ++strip) {
        const std::uint32_t rows
            = std::min(m_tags.rowsPerStrip, m_tags.heightPx - strip * m_tags.rowsPerStrip);
        if (TIFFGetStrileOffset(m_handle, strip) == 0
            || TIFFGetStrileByteCount(m_handle, strip) < m_tags.planeRowBytes() * rows)
            return false;
    }
    return true;
}

void StoredRows::readPlain(int rows)
{
    std::uint8_t* to = m_samples.data();
    for (std::uint32_t done = 0; done < static_cast<std::uint32_t>(rows);) {
        const std::uint32_t row = m_nextRow + done;
        const std::uint32_t inStrip = row % m_tags.rowsPerStrip;
        const std::uint32_t count
            = std::min(m_tags.rowsPerStrip - inStrip, static_cast<std::uint32_t>(rows) - done);
        const std::span<std::uint8_t> bytes(to, static_cast<std::size_t>(count * m_strideBytes));
        m_page.document().readAt(TIFFGetStrileOffset(m_handle, row / m_tags.rowsPerStrip)
                                     + m_tags.planeRowBytes() * inStrip,
                                 bytes);
        m_plainOrder->restore(bytes, static_cast<std::size_t>(m_strideBytes));
        to += bytes.size();
        done += count;
    }
}

void StoredRows::readTiles(int rows)
{
    const auto tileRowBytes = static_cast<qsizetype>(m_tags.bitsOf(m_tags.tileWidthPx) / 8);
    const auto isWanted = [&](std::uint32_t x) {
        return !m_part || (x < m_part->endColumn && m_part->firstColumn < x + m_tags.tileWidthPx);
    };
    for (int plane = 0; plane < m_tags.planes(); ++plane) {
        qsizetype column = 0;
        for (std::uint32_t x = 0; x < m_tags.widthPx; x += m_tags.tileWidthPx) {
            const std::uint32_t tile
                = TIFFComputeTile(m_handle, x, m_nextRow, 0, static_cast<std::uint16_t>(plane));
            const qsizetype bytes = std::min(tileRowBytes, m_strideBytes - column);
            if (isWanted(x))
                read({ tile, planeStart(plane) + column, static_cast<std::size_t>(bytes) }, rows);
            column += tileRowBytes;
            if (m_tags.widthPx - x <= m_tags.tileWidthPx)
                break; // x would overflow
        }
    }
    readTogether(rows);
}

/// Now, or with others before the band is complete.
void StoredRows::read(const Piece& piece, int rows)
{
    if (m_work == nullptr)
        return decode(piece, rows);
    m_pieces.push_back(piece);
    m_pieces.back().place = m_decoder->place(piece.number);
    if (m_pieces.size() == mostSharedPieces)
        readTogether(rows);
}

/// The pieces that are sound are any thread's. The others are left to this one, in their order, so
/// that what there is to say of them is what would be said without help.
void StoredRows::readTogether(int rows)
{
    if (m_pieces.size() > 1)
        shareOut(rows);
    for (const Piece& piece : m_pieces)
        if (!piece.isDone)
            decode(piece, rows);
    m_pieces.clear();
}

void StoredRows::shareOut(int rows)
{
    std::atomic<std::size_t> next = 0;
    m_work->run([&] {
        try {
            std::vector<std::uint8_t> encoded;
            std::vector<std::uint8_t> tile;
            for (std::size_t i = next++; i < m_pieces.size() && !StopScope::isPageStopped();
                 i = next++) {
                Piece& piece = m_pieces[i];
                const std::span<std::uint8_t> to = roomFor(piece, tile);
                piece.isDone = piece.place.bytes <= largestSharedPieceBytes
                    && m_decoder->pieces()->decode(piece.place, to, encoded);
                if (piece.isDone)
                    putInPlace(piece, rows, to);
            }
        } catch (const std::bad_alloc&) {
            // The piece is one of those that are left.
        }
    });
}

void StoredRows::decode(const Piece& piece, int rows)
{
    StopScope::leavePageIfStopped();
    const std::span<std::uint8_t> to = roomFor(piece, m_tile);
    m_decoder->decode(piece.number, to);
    putInPlace(piece, rows, to);
}

/// Of a tile all is decoded, and then what belongs to the page put in its place.
std::span<std::uint8_t> StoredRows::roomFor(const Piece& piece,
                                            std::vector<std::uint8_t>& tile) const
{
    if (!m_tags.isTiled)
        return { piece.to, piece.bytes };
    tile.resize(m_tileBytes);
    return tile;
}

void StoredRows::putInPlace(const Piece& piece, int rows,
                            std::span<const std::uint8_t> decoded) const
{
    if (!m_tags.isTiled)
        return;
    const auto tileRowBytes = static_cast<std::size_t>(m_tags.bitsOf(m_tags.tileWidthPx) / 8);
    for (int i = 0; i < rows; ++i)
        std::memcpy(piece.to + i * m_strideBytes,
                    decoded.data() + static_cast<std::size_t>(i) * tileRowBytes, piece.bytes);
}

} // namespace pagestack
