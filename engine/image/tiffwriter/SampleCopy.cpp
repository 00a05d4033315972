#include "engine/image/tiffwriter/SampleCopy.h"

#include "engine/image/decode/StoredRows.h"
#include "engine/image/decode/StripDecoder.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/SampleMath.h"
#include "engine/image/tiff/TiffLimits.h"
#include "engine/image/tiffwriter/EncodedPieces.h"
#include "engine/image/tiffwriter/PageCoding.h"
#include "engine/image/tiffwriter/PieceWriter.h"
#include "engine/image/tiffwriter/TiffTagCopy.h"
#include "engine/threads/StopScope.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>
#include <vector>

namespace pagestack {

namespace {

    constexpr tmsize_t largestPieceBytes = tmsize_t { 64 } * 1024 * 1024;

    /// Compressions whose strips and tiles libtiff copies unread, and that every reader knows.
    bool isCopied(int compression)
    {
        constexpr std::array copied { COMPRESSION_CCITTRLE,  COMPRESSION_CCITTFAX3,
                                      COMPRESSION_CCITTFAX4, COMPRESSION_LZW,
                                      COMPRESSION_JPEG,      COMPRESSION_ADOBE_DEFLATE,
                                      COMPRESSION_DEFLATE,   COMPRESSION_PACKBITS };
        return std::ranges::find(copied, compression) != copied.end();
    }

    bool hasPredictor(int compression)
    {
        return compression == COMPRESSION_LZW || compression == COMPRESSION_ADOBE_DEFLATE
            || compression == COMPRESSION_DEFLATE;
    }

    /// A page of a TIFF file, written with its samples as they are.
    class SampleCopy
    {
    public:
        /// `to` may be null when nothing is written.
        SampleCopy(TIFF* to, const TiffPage& page, int compression)
            : m_to(to)
            , m_page(page)
            , m_tags(page.tags())
            , m_from(page.load())
            , m_wantedCompression(compression)
            , m_compression(compressionFor(compression, m_tags.isOneBitDeep()))
            , m_keepsTiles(m_tags.isTiled && !tilesAreOfOddSize(m_tags))
            , m_keepsCompression(page.treatment().keepsCompression && canKeepCompression())
        {
            if (m_keepsCompression)
                m_compression = m_tags.compression;
        }

        bool isRecoded() const
        {
            const bool isPlain
                = m_tags.compression == COMPRESSION_NONE && m_compression == COMPRESSION_NONE;
            return !isPlain && !encodedPiecesFit(m_compression);
        }

        void write(PagePosition position, const EncodedPieces& pieces)
        {
            m_page.checkSize();
            setGeometry();
            setPosition(m_to, &m_page, position);
            if (pieces.bytes) {
                setCodingOfPieces();
                copyPieces(m_to, m_page, pieces);
                return;
            }
            if (encodedPiecesFit(m_compression)) {
                copyEncoded();
            } else {
                setCodingOfPieces();
                if (m_keepsTiles || m_tags.isSubsampled())
                    recodePieces();
                else
                    recodeRows();
            }
            if (!m_keepsCompression)
                tellOfCompression(m_page, m_wantedCompression, m_compression);
            if (m_page.treatment().keepsCompression && !m_keepsCompression)
                tellOfLostCompression(m_page);
            if (const QString& refusal = m_page.change().refusal; !refusal.isEmpty())
                m_page.messages().addPageWarning(refusal);
        }

    private:
        bool canKeepCompression() const
        {
            // JPEG data may have Exif and comments of their own.
            if (m_tags.compression == COMPRESSION_JPEG && m_page.treatment().stripsMetadata)
                return false;
            return m_tags.compression == COMPRESSION_NONE
                || (isCopied(m_tags.compression) && encodedPiecesFit(m_tags.compression));
        }

        bool becomesRgb() const
        {
            return m_tags.compression == COMPRESSION_JPEG && m_compression != COMPRESSION_JPEG
                && m_tags.photometric == PHOTOMETRIC_YCBCR && !m_tags.planesAreSeparate;
        }

        void setGeometry()
        {
            setTag(m_to, TIFFTAG_IMAGEWIDTH, m_tags.widthPx);
            setTag(m_to, TIFFTAG_IMAGELENGTH, m_tags.heightPx);
            setTag(m_to, TIFFTAG_BITSPERSAMPLE, m_tags.bitsPerSample);
            setTag(m_to, TIFFTAG_SAMPLESPERPIXEL, m_tags.samplesPerPixel);
            setTag(m_to, TIFFTAG_COMPRESSION, m_compression);
            setTag(m_to, TIFFTAG_PHOTOMETRIC,
                   becomesRgb() ? static_cast<int>(PHOTOMETRIC_RGB) : m_tags.photometric);
            setTag(m_to, TIFFTAG_PLANARCONFIG,
                   m_tags.planesAreSeparate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
            setTag(m_to, TIFFTAG_ORIENTATION, m_tags.orientation);
            copyDescriptiveTags(m_from, m_to, m_page.treatment().stripsMetadata);
            copyInterpretationTags(m_from, m_to);
            if (becomesRgb())
                for (const ttag_t tag : { TIFFTAG_YCBCRCOEFFICIENTS, TIFFTAG_REFERENCEBLACKWHITE,
                                          TIFFTAG_YCBCRSUBSAMPLING, TIFFTAG_YCBCRPOSITIONING })
                    TIFFUnsetField(m_to, tag);
            if (m_keepsTiles) {
                setTag(m_to, TIFFTAG_TILEWIDTH, m_tags.tileWidthPx);
                setTag(m_to, TIFFTAG_TILELENGTH, m_tags.tileHeightPx);
            }
        }

        /// True when the strips or tiles are, as they lie, what an output of such a compression has
        /// to hold.
        bool encodedPiecesFit(int compression) const
        {
            if (m_tags.isTiled != m_keepsTiles || sparseStrips(m_from) > 0
                || m_tags.hasWrongRowsPerStrip)
                return false;
            // Uncompressed pages that come here are copied row by row: that checks them at no cost.
            if (m_tags.compression != compression || compression == COMPRESSION_NONE)
                return false;
            if (hasByteOrder(m_tags.bitsPerSample) && m_page.document().isBigEndian())
                return false;
            return hasSoundByteCounts() && (compression != COMPRESSION_LZW || !isOldStyleLzw());
        }

        /// Strips that share bytes would make a small file a large one, and libtiff writes byte
        /// counts of small strips in 16 bits.
        bool hasSoundByteCounts() const
        {
            constexpr std::uint64_t mostShortBytes = 0xFFFF;
            const std::uint32_t count = piecesOf(m_from);
            std::uint64_t sum = 0;
            for (std::uint32_t i = 0; i < count; ++i) {
                const std::uint64_t bytes = TIFFGetStrileByteCount(m_from, i);
                sum += bytes;
                if (sum > m_page.document().sizeBytes()
                    || (bytes > mostShortBytes && plainBytes(m_from, m_tags, i) <= mostShortBytes))
                    return false;
            }
            return true;
        }

        /// Files from before TIFF 5.0 have their LZW codes in the other bit order.
        bool isOldStyleLzw() const
        {
            const auto read = m_tags.isTiled ? TIFFReadRawTile : TIFFReadRawStrip;
            std::uint8_t start[2] = {};
            return read(m_from, 0, start, sizeof start) == sizeof start && start[0] == 0
                && (start[1] & 1U) != 0;
        }

        void copyEncoded()
        {
            setTag(m_to, TIFFTAG_FILLORDER, m_tags.fillOrder);
            if (hasPredictor(m_compression) && m_tags.predictor != PREDICTOR_NONE)
                setTag(m_to, TIFFTAG_PREDICTOR, m_tags.predictor);
            if (m_compression == COMPRESSION_JPEG)
                copyJpegTables();
            for (const ttag_t tag : { TIFFTAG_GROUP3OPTIONS, TIFFTAG_GROUP4OPTIONS }) {
                std::uint32_t options = 0;
                if (TIFFGetField(m_from, tag, &options) == 1)
                    TIFFSetField(m_to, tag, options);
            }
            if (!m_tags.isTiled)
                setTag(m_to, TIFFTAG_ROWSPERSTRIP, m_tags.rowsPerStrip);
            m_page.restart();
            const OpenTiffFile& file = m_page.document();
            const std::uint32_t count = piecesOf(m_from);
            for (std::uint32_t i = 0; i < count; ++i) {
                StopScope::leavePageIfStopped();
                const std::uint64_t bytes = TIFFGetStrileByteCount(m_from, i);
                const std::uint64_t offset = TIFFGetStrileOffset(m_from, i);
                if (bytes == 0 || offset >= file.sizeBytes() || bytes > file.sizeBytes() - offset)
                    throw std::runtime_error(
                        "a strip is missing or reaches past the end of the file");
                putPiece(m_to, { i, offset, bytes },
                         [&](std::uint64_t at, auto to) { file.readAt(at, to); });
            }
        }

        /// Those that its strips or tiles share; a page may have none.
        void copyJpegTables()
        {
            std::uint32_t size = 0;
            void* tables = nullptr;
            if (TIFFGetField(m_from, TIFFTAG_JPEGTABLES, &size, &tables) == 1 && size > 0)
                setTag(m_to, TIFFTAG_JPEGTABLES, size, tables);
            else
                setTag(m_to, TIFFTAG_JPEGTABLESMODE, 0);
        }

        /// Tags for strips or tiles that are encoded anew.
        void setCodingOfPieces()
        {
            const bool isPredicted = m_tags.photometric != PHOTOMETRIC_PALETTE
                && !m_tags.isSubsampled() && m_tags.sampleFormat != SAMPLEFORMAT_IEEEFP;
            setCoding(m_to, m_compression, isPredicted ? m_tags.bitsPerSample : 0,
                      m_keepsTiles ? m_tags.tileWidthPx : m_tags.widthPx);
            if (!m_keepsTiles)
                setTag(m_to, TIFFTAG_ROWSPERSTRIP,
                       m_tags.isSubsampled() ? m_tags.rowsPerStrip : rowsOfNewStrips());
        }

        std::uint32_t rowsOfNewStrips() const
        {
            return outputRowsPerStrip(m_tags.planeRowBytes(), m_tags.heightPx, m_tags.rowsPerStrip);
        }

        /// Strips or tiles with as many rows as they have.
        void recodePieces()
        {
            m_page.restart();
            if (becomesRgb()) // before the size is asked for: sub-sampled pieces are smaller
                TIFFSetField(m_from, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
            const tmsize_t most = m_keepsTiles ? TIFFTileSize(m_from) : TIFFStripSize(m_from);
            if (most <= 0 || most > largestPieceBytes)
                throw std::runtime_error("its strips or tiles are too large");
            StripDecoder decoder(m_page, m_from);
            PieceWriter writer(m_to);
            std::vector<std::uint8_t> piece;
            const std::uint32_t count = piecesOf(m_from);
            for (std::uint32_t i = 0; i < count; ++i) {
                StopScope::leavePageIfStopped();
                piece.assign(static_cast<std::size_t>(plainBytes(m_from, m_tags, i)), 0);
                decoder.decode(i, piece);
                writer.write(i, piece);
            }
        }

        void recodeRows()
        {
            const std::uint64_t rowBytes = m_tags.planeRowBytes();
            const std::uint32_t stripRows = rowsOfNewStrips();
            StoredRows rows(m_page);
            const auto planes = static_cast<std::size_t>(m_tags.planes());
            std::vector<std::vector<std::uint8_t>> strips(planes);
            PieceWriter writer(m_to);
            std::uint32_t row = 0;
            for (StoredBand band = rows.nextBand(); band.rows > 0; band = rows.nextBand()) {
                StopScope::leavePageIfStopped();
                for (int i = 0; i < band.rows; ++i, ++row) {
                    for (std::size_t p = 0; p < planes; ++p) {
                        const std::uint8_t* from = band.row(static_cast<int>(p), i);
                        strips[p].insert(strips[p].end(), from, from + rowBytes);
                    }
                    if ((row + 1) % stripRows == 0 || row + 1 == m_tags.heightPx)
                        writeStrips(strips, row, writer);
                }
            }
        }

        void writeStrips(std::vector<std::vector<std::uint8_t>>& strips, std::uint32_t lastRow,
                         PieceWriter& writer)
        {
            for (std::size_t p = 0; p < strips.size(); ++p) {
                const std::uint32_t strip
                    = TIFFComputeStrip(m_to, lastRow, static_cast<std::uint16_t>(p));
                writer.write(strip, strips[p]);
                strips[p].clear();
            }
        }

        TIFF* m_to;
        const TiffPage& m_page;
        const TiffPageTags& m_tags;
        TIFF* m_from;
        int m_wantedCompression;
        int m_compression;
        bool m_keepsTiles; ///< else the page is written in strips
        bool m_keepsCompression; ///< asked for, and possible
    };

} // namespace

void writeSamples(tiff* handle, const TiffPage& page, int compression, PagePosition position,
                  const EncodedPieces& pieces)
{
    SampleCopy(handle, page, compression).write(position, pieces);
}

bool samplesAreRecoded(const TiffPage& page, int compression)
{
    return SampleCopy(nullptr, page, compression).isRecoded();
}

} // namespace pagestack
