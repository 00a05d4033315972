#include "engine/image/tiffwriter/TiffPageWriter.h"

#include "engine/image/decode/DisplayRows.h"
#include "engine/image/decode/StoredRows.h"
#include "engine/image/decode/StripDecoder.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/SampleMath.h"
#include "engine/image/tiff/TiffLimits.h"
#include "engine/image/tiffwriter/EncodedPieces.h"
#include "engine/image/tiffwriter/TiffTagCopy.h"
#include "engine/threads/StopScope.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>
#include <vector>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr std::uint64_t smallestKeptStripBytes = std::uint64_t { 16 } * 1024;
    constexpr std::uint64_t largestKeptStripBytes = std::uint64_t { 4 } * 1024 * 1024;
    constexpr std::uint64_t wantedStripBytes = std::uint64_t { 128 } * 1024;
    constexpr tmsize_t largestPieceBytes = tmsize_t { 64 } * 1024 * 1024;

    bool isFax(int compression)
    {
        return compression == COMPRESSION_CCITTFAX3 || compression == COMPRESSION_CCITTFAX4;
    }

    /// The compression for pixels that may be too deep for the one that is wanted.
    int compressionFor(int wanted, bool isOneBitDeep)
    {
        return isFax(wanted) && !isOneBitDeep ? COMPRESSION_NONE : wanted;
    }

    void check(bool ok)
    {
        if (!ok)
            throw std::runtime_error("the page cannot be encoded");
    }

    template <typename... Values>
    void setTag(TIFF* to, ttag_t tag, Values... values)
    {
        check(TIFFSetField(to, tag, values...) == 1);
    }

    void setPageNumber(TIFF* to, int index, int total)
    {
        if (total <= std::numeric_limits<std::uint16_t>::max())
            setTag(to, TIFFTAG_PAGENUMBER, index, total);
    }

    /// A page by itself keeps its number, if it has one, as the place in the document that it is
    /// from: its source, or what that was part of.
    void copyPageNumber(const TiffPage& page, TIFF* to)
    {
        std::uint16_t index = 0;
        std::uint16_t total = 0;
        if (page.treatment().stripsMetadata
            || TIFFGetField(page.load(), TIFFTAG_PAGENUMBER, &index, &total) != 1)
            return;
        const int pages = page.document().pageCount();
        setPageNumber(to, pages > 1 ? page.index() : index, pages > 1 ? pages : total);
    }

    void setPosition(TIFF* to, const TiffPage* source, PagePosition position)
    {
        const std::uint32_t type = source != nullptr ? source->tags().subfileType : 0;
        const bool isOneOfSeveral = position.total > 1;
        setTag(to, TIFFTAG_SUBFILETYPE, isOneOfSeveral ? type | FILETYPE_PAGE : type);
        if (isOneOfSeveral)
            setPageNumber(to, position.index, position.total);
        else if (source != nullptr)
            copyPageNumber(*source, to);
    }

    /// Strips as they were, unless they are so small that their number costs more than it gives, or
    /// so large that readers have to hold much of the page.
    std::uint32_t outputRowsPerStrip(std::uint64_t rowBytes, std::uint32_t heightPx,
                                     std::uint32_t sourceRows)
    {
        const std::uint64_t stripBytes = rowBytes * sourceRows;
        if (stripBytes <= largestKeptStripBytes
            && (sourceRows >= heightPx || stripBytes >= smallestKeptStripBytes))
            return std::min(sourceRows, heightPx);
        const std::uint64_t rows = std::max<std::uint64_t>(1, wantedStripBytes / rowBytes);
        return static_cast<std::uint32_t>(std::min<std::uint64_t>(rows, heightPx));
    }

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

    /// Told by who encodes the page, so that it is told once; when its pass, which forgets what was
    /// said before, is begun.
    void tellOfCompression(const TiffPage& page, int wanted, int used)
    {
        if (used == wanted)
            return;
        page.messages().addLogLine(
            u"page %1 is not one bit deep and so is written without compression"_s.arg(page.index()
                                                                                       + 1));
        page.messages().addRemark(u"written without compression, since a fax compression is for "
                                  "pages one bit deep; --bilevel makes them so"_s);
    }

    void tellOfLostCompression(const TiffPage& page)
    {
        page.messages().addRemark(u"its compression could not be kept"_s);
    }

    /// What LZW and fax coding need for rows of `rowPx` pixels; `predictedBits` are those of a
    /// sample, 0 for samples that no predictor suits.
    void setCoding(TIFF* to, int compression, int predictedBits, std::uint32_t rowPx)
    {
        if (compression == COMPRESSION_LZW && (predictedBits == 8 || predictedBits == 16))
            setTag(to, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
        // libtiff 4.5 has no room for all the runs of a row of T.4's one-dimensional coding that
        // begins black and changes at every pixel, if its width is a multiple of 32: neither it nor
        // those who read with it could open the page. In two-dimensional coding it has.
        if (compression == COMPRESSION_CCITTFAX3 && rowPx % 32 == 0)
            setTag(to, TIFFTAG_GROUP3OPTIONS, GROUP3OPT_2DENCODING);
    }

    /// Strips or tiles that were encoded ahead, with what was found then.
    void copyPieces(TIFF* to, const TiffPage& page, const EncodedPieces& pieces)
    {
        page.reader().adopt(page.index(), pieces.diagnostics);
        for (const EncodedPieces::Piece& piece : pieces.pieces)
            putPiece(to, piece,
                     [&](std::uint64_t at, auto part) { pieces.bytes->readAt(at, part); });
    }

    /// TIFF 6.0, section 15: the sides of a tile are multiples of 16. Some files have others.
    bool tilesAreOfOddSize(const TiffPageTags& tags)
    {
        return tags.isTiled && (tags.tileWidthPx % 16 != 0 || tags.tileHeightPx % 16 != 0);
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
            // Uncompressed pages are copied row by row: that checks them at no cost.
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
            const auto write = m_keepsTiles ? TIFFWriteEncodedTile : TIFFWriteEncodedStrip;
            m_page.restart();
            if (becomesRgb()) // before the size is asked for: sub-sampled pieces are smaller
                TIFFSetField(m_from, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
            const tmsize_t most = m_keepsTiles ? TIFFTileSize(m_from) : TIFFStripSize(m_from);
            if (most <= 0 || most > largestPieceBytes)
                throw std::runtime_error("its strips or tiles are too large");
            StripDecoder decoder(m_page, m_from);
            std::vector<std::uint8_t> piece;
            const std::uint32_t count = piecesOf(m_from);
            for (std::uint32_t i = 0; i < count; ++i) {
                StopScope::leavePageIfStopped();
                const auto size = static_cast<tmsize_t>(plainBytes(m_from, m_tags, i));
                piece.assign(static_cast<std::size_t>(size), 0);
                decoder.decode(i, piece);
                check(write(m_to, i, piece.data(), size) == size);
            }
        }

        void recodeRows()
        {
            const std::uint64_t rowBytes = m_tags.planeRowBytes();
            const std::uint32_t stripRows = rowsOfNewStrips();
            StoredRows rows(m_page);
            const auto planes = static_cast<std::size_t>(m_tags.planes());
            std::vector<std::vector<std::uint8_t>> strips(planes);
            std::uint32_t row = 0;
            for (StoredBand band = rows.nextBand(); band.rows > 0; band = rows.nextBand()) {
                StopScope::leavePageIfStopped();
                for (int i = 0; i < band.rows; ++i, ++row) {
                    for (std::size_t p = 0; p < planes; ++p) {
                        const std::uint8_t* from = band.row(static_cast<int>(p), i);
                        strips[p].insert(strips[p].end(), from, from + rowBytes);
                    }
                    if ((row + 1) % stripRows == 0 || row + 1 == m_tags.heightPx)
                        writeStrips(strips, row);
                }
            }
        }

        void writeStrips(std::vector<std::vector<std::uint8_t>>& strips, std::uint32_t lastRow)
        {
            for (std::size_t p = 0; p < strips.size(); ++p) {
                const std::uint32_t strip
                    = TIFFComputeStrip(m_to, lastRow, static_cast<std::uint16_t>(p));
                const auto bytes = static_cast<tmsize_t>(strips[p].size());
                check(TIFFWriteEncodedStrip(m_to, strip, strips[p].data(), bytes) == bytes);
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

    void setDisplayTags(TIFF* to, const PixelLayout& layout, const PageProperties& page)
    {
        setTag(to, TIFFTAG_IMAGEWIDTH, page.widthPx);
        setTag(to, TIFFTAG_IMAGELENGTH, page.heightPx);
        setTag(to, TIFFTAG_BITSPERSAMPLE, layout.bitsPerSample);
        setTag(to, TIFFTAG_SAMPLESPERPIXEL, layout.channels());
        setTag(to, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        setTag(to, TIFFTAG_ORIENTATION, page.orientation);
        if (layout.alpha != AlphaKind::None) {
            std::uint16_t kind = layout.alpha == AlphaKind::Straight ? EXTRASAMPLE_UNASSALPHA
                                                                     : EXTRASAMPLE_ASSOCALPHA;
            setTag(to, TIFFTAG_EXTRASAMPLES, 1, &kind);
        }
        setTag(to, TIFFTAG_PHOTOMETRIC,
               layout.model == ColorModel::Palette    ? PHOTOMETRIC_PALETTE
                   : layout.model == ColorModel::Gray ? PHOTOMETRIC_MINISBLACK
                                                      : PHOTOMETRIC_RGB);
        if (layout.model != ColorModel::Palette)
            return;
        std::array<std::vector<std::uint16_t>, 3> map;
        for (const RgbColor& color : layout.palette)
            for (std::size_t c = 0; c < map.size(); ++c)
                map[c].push_back(static_cast<std::uint16_t>(color[c] * 257));
        setTag(to, TIFFTAG_COLORMAP, map[0].data(), map[1].data(), map[2].data());
    }

    /// Samples that the page has besides its colours and its alpha are none of its display rows.
    void tellOfExtraSamples(const TiffPage& page, const PixelLayout& layout)
    {
        const std::size_t kept = layout.alpha == AlphaKind::None ? 0 : 1;
        const std::size_t extra = page.tags().extraSamples.size();
        if (extra > kept && page.change().becomesSrgb && !page.change().becomesBilevel)
            page.messages().addPageWarning(
                u"%1 of its samples, which are neither colour nor alpha, "
                "are left out"_s.arg(extra - kept));
    }

    /// Of pixels that are changed.
    void setChangedTags(TIFF* to, const TiffPage& page, bool isInverted)
    {
        if (isInverted)
            setTag(to, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
        if (page.change().becomesBilevel && page.treatment().bilevel == Bilevel::Dither)
            setTag(to, TIFFTAG_THRESHHOLDING, THRESHHOLD_ERRORDIFFUSE);
    }

    void writeRows(TIFF* to, RowSource& rows, bool isInverted)
    {
        std::uint32_t row = 0;
        std::vector<std::uint8_t> samples;
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
            for (int i = 0; i < band.rows; ++i, ++row) {
                samples.assign(band.row(i), band.row(i) + rows.rowBytes());
                for (std::size_t at = 0; isInverted && at < samples.size(); ++at)
                    samples[at] = static_cast<std::uint8_t>(~samples[at]);
                check(TIFFWriteScanline(to, samples.data(), row, 0) == 1);
            }
    }

    /// A page whose samples no TIFF writer can hold as they are, that is no page of a TIFF file, or
    /// whose pixels are changed: its rows as they are shown.
    void writeDisplayRows(TIFF* to, const PageSource& page, int compression, PagePosition position,
                          const EncodedPieces& pieces)
    {
        const PageProperties& properties = page.properties();
        const TiffPage* source = page.tiffPage();
        if (source != nullptr)
            copyDescriptiveTags(source->load(), to, source->treatment().stripsMetadata);
        const bool becomesBilevel = source != nullptr && source->change().becomesBilevel;
        PixelLayout layout;
        layout.bitsPerSample = 1;
        std::unique_ptr<RowSource> rows;
        if (!pieces.bytes || !becomesBilevel) { // a pass may take another one before it
            rows = page.rows();
            layout = rows->layout();
        }
        setDisplayTags(to, layout, properties);
        if (properties.iccProfile.isEmpty())
            TIFFUnsetField(to, TIFFTAG_ICCPROFILE); // it describes other samples than these
        const int used
            = compressionFor(compression, layout.channels() == 1 && layout.bitsPerSample == 1);
        // Fax machines take 0 for white, whatever Photometric says, and code white most tightly.
        const bool isInverted = becomesBilevel && isFax(used);
        if (source != nullptr)
            setChangedTags(to, *source, isInverted);
        setTag(to, TIFFTAG_COMPRESSION, used);
        setCoding(to, used, layout.model == ColorModel::Palette ? 0 : layout.bitsPerSample,
                  static_cast<std::uint32_t>(properties.widthPx));
        setPosition(to, source, position);
        const auto rowBytes = static_cast<std::uint64_t>(layout.rowBytes(properties.widthPx));
        const auto heightPx = static_cast<std::uint32_t>(properties.heightPx);
        setTag(to, TIFFTAG_ROWSPERSTRIP, outputRowsPerStrip(rowBytes, heightPx, heightPx));
        if (source != nullptr && pieces.bytes) {
            copyPieces(to, *source, pieces);
            return;
        }
        if (source != nullptr) {
            if (!source->change().isNone())
                source->messages().setPixelsChanged();
            tellOfExtraSamples(*source, layout);
            tellOfCompression(*source, compression, used);
            if (source->treatment().keepsCompression)
                tellOfLostCompression(*source);
        }
        writeRows(to, *rows, isInverted);
    }

    /// The page as one whose samples are kept as they are; null when it is none.
    const TiffPage* sampleSource(const PageSource& page)
    {
        const TiffPage* source = page.tiffPage();
        if (source == nullptr || !source->change().isNone())
            return nullptr;
        const TiffPageTags& tags = source->tags();
        const bool isCodedColor = tags.photometric == PHOTOMETRIC_YCBCR
            && tags.compression != COMPRESSION_OJPEG && tags.compression != COMPRESSION_JPEG;
        if (tilesAreOfOddSize(tags) && tags.isSubsampled())
            return nullptr; // its blocks of samples cannot be put into strips as they are
        return !needsRgbaInterface(tags) || isCodedColor ? source : nullptr;
    }

} // namespace

void writeTiffPage(tiff* handle, const PageSource& page, int compression, PagePosition position,
                   const EncodedPieces& pieces)
{
    if (const TiffPage* source = sampleSource(page))
        SampleCopy(handle, *source, compression).write(position, pieces);
    else
        writeDisplayRows(handle, page, compression, position, pieces);
}

bool keepsSamples(const PageSource& page) { return sampleSource(page) != nullptr; }

bool isRecoded(const PageSource& page, int compression)
{
    const TiffPage* source = sampleSource(page);
    if (source == nullptr)
        return page.tiffPage() != nullptr && !page.tiffPage()->change().isNone();
    return SampleCopy(nullptr, *source, compression).isRecoded();
}

} // namespace pagestack
