#include "engine/image/tiffwriter/TiffPageWriter.h"

#include "engine/image/decode/DisplayRows.h"
#include "engine/image/decode/StoredRows.h"
#include "engine/image/decode/StripDecoder.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/SampleMath.h"
#include "engine/image/tiff/TiffLimits.h"
#include "engine/image/tiffwriter/EncodedPieces.h"
#include "engine/image/tiffwriter/TiffTagCopy.h"

#include <tiffio.h>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <vector>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr std::uint64_t smallestKeptStripBytes = std::uint64_t { 16 } * 1024;
    constexpr std::uint64_t largestKeptStripBytes = std::uint64_t { 4 } * 1024 * 1024;
    constexpr std::uint64_t wantedStripBytes = std::uint64_t { 128 } * 1024;
    constexpr std::uint64_t largestPartBytes = std::uint64_t { 4 } * 1024 * 1024;
    constexpr tmsize_t largestPieceBytes = tmsize_t { 64 } * 1024 * 1024;

    bool isFax(int compression)
    {
        return compression == COMPRESSION_CCITTFAX3 || compression == COMPRESSION_CCITTFAX4;
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

    void setPosition(TIFF* to, std::uint32_t sourceType, PagePosition position)
    {
        if (position.total > 1) {
            setTag(to, TIFFTAG_SUBFILETYPE, sourceType | FILETYPE_PAGE);
            if (position.total <= std::numeric_limits<std::uint16_t>::max())
                setTag(to, TIFFTAG_PAGENUMBER, position.index, position.total);
        } else {
            setTag(to, TIFFTAG_SUBFILETYPE, sourceType);
        }
    }

    /// Strips as they were, unless they are so small that their number costs more than it gives, or
    /// so large that readers have to hold much of the page.
    std::uint32_t outputRowsPerStrip(std::uint64_t rowBytes, std::uint32_t heightPx,
                                     std::uint32_t sourceRows)
    {
        const std::uint64_t stripBytes = rowBytes * sourceRows;
        const bool isKept = sourceRows >= heightPx
            ? stripBytes <= largestKeptStripBytes
            : stripBytes >= smallestKeptStripBytes && stripBytes <= largestKeptStripBytes;
        if (isKept)
            return std::min(sourceRows, heightPx);
        const std::uint64_t rows = std::max<std::uint64_t>(1, wantedStripBytes / rowBytes);
        return static_cast<std::uint32_t>(std::min<std::uint64_t>(rows, heightPx));
    }

    /// Told by who encodes the page, so that it is told once.
    void tellOfCompression(const TiffPage& page, int wanted, int used)
    {
        if (used != wanted)
            page.messages().addLogLine(
                u"page %1 is not one bit deep and so is written without compression"_s.arg(
                    page.index() + 1));
    }

    void setPredictor(TIFF* to, int bitsPerSample, int compression)
    {
        if (compression == COMPRESSION_LZW && (bitsPerSample == 8 || bitsPerSample == 16))
            setTag(to, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    }

    /// libtiff 4.5 has no room for all the runs of a row of T.4's one-dimensional coding that
    /// begins black and changes at every pixel, if its width is a multiple of 32: neither it nor
    /// those who read with it could open the page. In two-dimensional coding it has.
    void setFaxOptions(TIFF* to, std::uint32_t rowPx, int compression)
    {
        if (compression == COMPRESSION_CCITTFAX3 && rowPx % 32 == 0)
            setTag(to, TIFFTAG_GROUP3OPTIONS, GROUP3OPT_2DENCODING);
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
            , m_wantedCompression(compression)
            , m_compression(isFax(compression) && !m_tags.isOneBitDeep() ? COMPRESSION_NONE
                                                                         : compression)
            , m_keepsTiles(m_tags.isTiled && !tilesAreOfOddSize(m_tags))
        {
        }

        bool isRecoded()
        {
            m_from = m_page.load();
            const bool isPlain
                = m_tags.compression == COMPRESSION_NONE && m_compression == COMPRESSION_NONE;
            return !isPlain && !encodedPiecesFit();
        }

        void write(PagePosition position, const EncodedPieces& pieces)
        {
            m_page.checkSize();
            m_from = m_page.load();
            setGeometry();
            setPosition(m_to, m_tags.subfileType, position);
            if (!pieces.bytes)
                tellOfCompression(m_page, m_wantedCompression, m_compression);
            if (pieces.bytes) {
                setCoding();
                m_page.reader().adopt(m_page.index(), pieces.diagnostics);
                putPieces(m_to, pieces);
            } else if (encodedPiecesFit()) {
                copyEncoded();
            } else {
                setCoding();
                recode();
            }
        }

    private:
        void recode()
        {
            if (m_keepsTiles)
                recodePieces(TIFFNumberOfTiles, TIFFTileSize, TIFFWriteEncodedTile);
            else if (m_tags.isSubsampled())
                recodePieces(TIFFNumberOfStrips, TIFFStripSize, TIFFWriteEncodedStrip);
            else
                recodeRows();
        }

        bool becomesRgb() const
        {
            return m_tags.compression == COMPRESSION_JPEG && m_tags.photometric == PHOTOMETRIC_YCBCR
                && !m_tags.planesAreSeparate;
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
            copyDescriptiveTags(m_from, m_to);
            copyInterpretationTags(m_from, m_to);
            if (becomesRgb()) {
                TIFFUnsetField(m_to, TIFFTAG_YCBCRCOEFFICIENTS);
                TIFFUnsetField(m_to, TIFFTAG_REFERENCEBLACKWHITE);
                TIFFUnsetField(m_to, TIFFTAG_YCBCRSUBSAMPLING);
                TIFFUnsetField(m_to, TIFFTAG_YCBCRPOSITIONING);
            }
            if (m_keepsTiles) {
                setTag(m_to, TIFFTAG_TILEWIDTH, m_tags.tileWidthPx);
                setTag(m_to, TIFFTAG_TILELENGTH, m_tags.tileHeightPx);
            }
        }

        /// True when the strips or tiles are, as they lie, what the output has to hold.
        bool encodedPiecesFit() const
        {
            if (m_tags.isTiled != m_keepsTiles)
                return false;
            if (hasSparseStrips(m_from) || m_tags.hasWrongRowsPerStrip)
                return false;
            // Uncompressed pages are copied row by row: that checks them at no cost.
            if (m_tags.compression != m_compression || m_compression == COMPRESSION_NONE)
                return false;
            if (hasByteOrder(m_tags.bitsPerSample) && m_page.document().isBigEndian())
                return false;
            return m_compression != COMPRESSION_LZW || !isOldStyleLzw();
        }

        /// Files from before TIFF 5.0 have their LZW codes in the other bit order.
        bool isOldStyleLzw() const
        {
            std::uint8_t start[2] = {};
            const tmsize_t got = m_tags.isTiled ? TIFFReadRawTile(m_from, 0, start, sizeof start)
                                                : TIFFReadRawStrip(m_from, 0, start, sizeof start);
            return got == sizeof start && start[0] == 0 && (start[1] & 1U) != 0;
        }

        void copyEncoded()
        {
            setTag(m_to, TIFFTAG_FILLORDER, m_tags.fillOrder);
            if (m_compression == COMPRESSION_LZW && m_tags.predictor != PREDICTOR_NONE)
                setTag(m_to, TIFFTAG_PREDICTOR, m_tags.predictor);
            for (const int tag : { TIFFTAG_GROUP3OPTIONS, TIFFTAG_GROUP4OPTIONS }) {
                std::uint32_t options = 0;
                if (TIFFGetField(m_from, static_cast<ttag_t>(tag), &options) == 1)
                    TIFFSetField(m_to, static_cast<ttag_t>(tag), options);
            }
            if (!m_tags.isTiled)
                setTag(m_to, TIFFTAG_ROWSPERSTRIP, m_tags.rowsPerStrip);
            m_page.restart();
            const std::uint32_t pieces = piecesOf(m_from);
            for (std::uint32_t i = 0; i < pieces; ++i)
                copyEncodedPiece(i);
        }

        /// Tags for strips or tiles that are encoded anew.
        void setCoding()
        {
            if (m_tags.photometric != PHOTOMETRIC_PALETTE && !m_tags.isSubsampled()
                && m_tags.sampleFormat != SAMPLEFORMAT_IEEEFP)
                setPredictor(m_to, m_tags.bitsPerSample, m_compression);
            setFaxOptions(m_to, m_keepsTiles ? m_tags.tileWidthPx : m_tags.widthPx, m_compression);
            if (m_keepsTiles)
                return;
            setTag(m_to, TIFFTAG_ROWSPERSTRIP,
                   m_tags.isSubsampled() ? m_tags.rowsPerStrip : rowsOfNewStrips());
        }

        std::uint32_t rowsOfNewStrips() const
        {
            return outputRowsPerStrip(m_tags.planeRowBytes(), m_tags.heightPx, m_tags.rowsPerStrip);
        }

        /// Copies a strip or tile in parts: one can be as large as the file.
        void copyEncodedPiece(std::uint32_t index)
        {
            const std::uint64_t bytes = TIFFGetStrileByteCount(m_from, index);
            const std::uint64_t offset = TIFFGetStrileOffset(m_from, index);
            const std::uint64_t fileBytes = m_page.document().sizeBytes();
            if (bytes == 0 || offset >= fileBytes || bytes > fileBytes - offset)
                throw std::runtime_error("a strip is missing or reaches past the end of the file");
            for (std::uint64_t done = 0; done < bytes;) {
                m_part.resize(std::min(largestPartBytes, bytes - done));
                m_page.document().readAt(offset + done, m_part);
                const auto size = static_cast<tmsize_t>(m_part.size());
                // A further part of the piece that was written last is appended to it.
                const tmsize_t put = m_tags.isTiled
                    ? TIFFWriteRawTile(m_to, index, m_part.data(), size)
                    : TIFFWriteRawStrip(m_to, index, m_part.data(), size);
                check(put == size);
                done += m_part.size();
            }
        }

        template <typename Write>
        void recodePieces(std::uint32_t (*countOf)(TIFF*), tmsize_t (*sizeOf)(TIFF*),
                          Write writePiece)
        {
            m_page.restart();
            if (becomesRgb()) // before the size is asked for: sub-sampled pieces are smaller
                TIFFSetField(m_from, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
            const tmsize_t pieceBytes = sizeOf(m_from);
            if (pieceBytes <= 0 || pieceBytes > largestPieceBytes)
                throw std::runtime_error("its strips or tiles are too large");
            StripDecoder decoder(m_page, m_from);
            std::vector<std::uint8_t> piece(static_cast<std::size_t>(pieceBytes));
            const std::uint32_t count = countOf(m_from);
            for (std::uint32_t i = 0; i < count; ++i) {
                const auto size = static_cast<tmsize_t>(plainBytes(m_from, m_tags, i));
                const std::span bytes(piece.data(), static_cast<std::size_t>(size));
                std::fill(bytes.begin(), bytes.end(), std::uint8_t { 0 });
                decoder.decode(i, bytes);
                check(writePiece(m_to, i, piece.data(), size) == size);
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
        TIFF* m_from = nullptr;
        const TiffPage& m_page;
        const TiffPageTags& m_tags;
        int m_wantedCompression;
        int m_compression;
        bool m_keepsTiles; ///< else the page is written in strips
        std::vector<std::uint8_t> m_part;
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
        switch (layout.model) {
        case ColorModel::Gray:
            setTag(to, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
            break;
        case ColorModel::Rgb:
            setTag(to, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
            break;
        case ColorModel::Palette: {
            setTag(to, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
            std::vector<std::uint16_t> channels[3];
            for (const RgbColor& color : layout.palette)
                for (std::size_t c = 0; c < 3; ++c)
                    channels[c].push_back(static_cast<std::uint16_t>(color[c] * 257));
            setTag(to, TIFFTAG_COLORMAP, channels[0].data(), channels[1].data(),
                   channels[2].data());
            break;
        }
        }
    }

    /// A page whose samples no TIFF writer can hold as they are, or that is no page of a TIFF file:
    /// its rows as they are shown.
    void writeDisplayRows(TIFF* to, const PageSource& page, int compression, PagePosition position)
    {
        const PageProperties& properties = page.properties();
        const TiffPage* source = page.tiffPage();
        if (source != nullptr)
            copyDescriptiveTags(source->load(), to);
        const std::unique_ptr<RowSource> rows = page.rows();
        const PixelLayout& layout = rows->layout();
        setDisplayTags(to, layout, properties);
        if (properties.iccProfile.isEmpty())
            TIFFUnsetField(to, TIFFTAG_ICCPROFILE); // it describes other samples than these
        const bool isOneBitDeep = layout.channels() == 1 && layout.bitsPerSample == 1;
        const int used = isFax(compression) && !isOneBitDeep ? COMPRESSION_NONE : compression;
        if (source != nullptr)
            tellOfCompression(*source, compression, used);
        setTag(to, TIFFTAG_COMPRESSION, used);
        if (layout.model != ColorModel::Palette)
            setPredictor(to, layout.bitsPerSample, used);
        setFaxOptions(to, static_cast<std::uint32_t>(properties.widthPx), used);
        setPosition(to, source != nullptr ? source->tags().subfileType : 0, position);
        const auto rowBytes = static_cast<std::uint64_t>(layout.rowBytes(properties.widthPx));
        const auto heightPx = static_cast<std::uint32_t>(properties.heightPx);
        setTag(to, TIFFTAG_ROWSPERSTRIP, outputRowsPerStrip(rowBytes, heightPx, heightPx));
        std::uint32_t row = 0;
        for (Band band = rows->nextBand(); band.rows > 0; band = rows->nextBand())
            for (int i = 0; i < band.rows; ++i, ++row)
                check(TIFFWriteScanline(to, const_cast<std::uint8_t*>(band.row(i)), row, 0) == 1);
    }

    /// The page as one whose samples are kept as they are; null when it is none.
    const TiffPage* sampleSource(const PageSource& page)
    {
        const TiffPage* source = page.tiffPage();
        if (source == nullptr)
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
        writeDisplayRows(handle, page, compression, position);
}

bool keepsSamples(const PageSource& page) { return sampleSource(page) != nullptr; }

bool isRecoded(const PageSource& page, int compression)
{
    const TiffPage* source = sampleSource(page);
    return source != nullptr && SampleCopy(nullptr, *source, compression).isRecoded();
}

} // namespace pagestack
