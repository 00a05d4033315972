#include "engine/image/tiff/PlainDirectory.h"

#include "engine/image/pixels/ByteOrder.h"
#include "engine/image/tiff/JpegSampling.h"
#include "engine/image/tiff/OpenTiffFile.h"
#include "engine/image/tiff/TiffLimits.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace pagestack {

namespace {

    constexpr std::uint64_t mostPieces = 8192; // many pages are held at once
    constexpr std::uint64_t largestTileSidePx = 1U << 16U;
    constexpr std::uint64_t longestTextBytes = 4096;
    constexpr std::uint64_t longestTablesBytes = 4096;
    constexpr std::uint64_t dateBytes = 20; // TIFF 6.0, section 8, DateTime
    constexpr std::uint32_t largestWholeNumber = 1U << 24U; // that a float holds, and all below

    class DirectoryReader
    {
    public:
        DirectoryReader(const OpenTiffFile& file, int index)
            : m_file(file)
            , m_window(file.windowAtPage(index))
            , m_directory(file.directory(index, m_window))
        {
        }

        std::optional<PlainDirectory> read()
        {
            unsigned last = 0;
            for (const TiffTagValue& value : m_directory.values) {
                if (value.tag <= last || !take(value))
                    return std::nullopt;
                last = value.tag;
            }
            if (m_tags.photometric == PHOTOMETRIC_YCBCR && !m_read.hasSubsampling)
                m_tags.horizontalSubsampling = m_tags.verticalSubsampling = 2;
            if (!hasKnownSamples() || !hasKnownCoding() || !hasKnownRest() || !joinPieces()
                || !hasKnownSubsampling())
                return std::nullopt;
            checkEncodedSize({ m_read.pieceBytes, m_tags.decodedBytes() }, m_tags,
                             m_file.sizeBytes());
            return std::move(m_read);
        }

    private:
        /// False for a value that is not as it should be, and for an unknown tag.
        bool take(const TiffTagValue& value)
        {
            switch (value.tag) {
            case TIFFTAG_SUBFILETYPE:
                return value.type == TIFF_LONG && takeNumber(value, m_tags.subfileType);
            case TIFFTAG_IMAGEWIDTH:
                return takeNumber(value, m_tags.widthPx);
            case TIFFTAG_IMAGELENGTH:
                return takeNumber(value, m_tags.heightPx);
            case TIFFTAG_BITSPERSAMPLE:
                m_bitsCount = value.count;
                return takeForSamples(value, m_tags.bitsPerSample);
            case TIFFTAG_COMPRESSION:
                return takeShort(value, m_tags.compression);
            case TIFFTAG_PHOTOMETRIC:
                m_hasPhotometric = true;
                return takeShort(value, m_tags.photometric);
            case TIFFTAG_FILLORDER:
                return takeShort(value, m_tags.fillOrder);
            case TIFFTAG_DOCUMENTNAME:
            case TIFFTAG_IMAGEDESCRIPTION:
            case TIFFTAG_MAKE:
            case TIFFTAG_MODEL:
            case TIFFTAG_PAGENAME:
            case TIFFTAG_SOFTWARE:
            case TIFFTAG_DATETIME:
            case TIFFTAG_ARTIST:
            case TIFFTAG_HOSTCOMPUTER:
            case TIFFTAG_COPYRIGHT:
                return takeText(value);
            // Tables of strips come before the tags of tiles; a page with both is not plain.
            case TIFFTAG_STRIPOFFSETS:
                return takeTable(value, m_offsets);
            case TIFFTAG_ORIENTATION:
                return takeShort(value, m_tags.orientation);
            case TIFFTAG_SAMPLESPERPIXEL:
                return takeShort(value, m_tags.samplesPerPixel);
            case TIFFTAG_ROWSPERSTRIP:
                return takeNumber(value, m_tags.rowsPerStrip) && m_tags.rowsPerStrip > 0;
            case TIFFTAG_STRIPBYTECOUNTS:
                return takeTable(value, m_counts);
            case TIFFTAG_XRESOLUTION:
                return takeWholeFraction(value, m_tags.resolution.x);
            case TIFFTAG_YRESOLUTION:
                return takeWholeFraction(value, m_tags.resolution.y);
            case TIFFTAG_PLANARCONFIG:
                return takeShort(value, m_planes);
            case TIFFTAG_GROUP3OPTIONS:
                return takeFaxOptions(value, COMPRESSION_CCITTFAX3);
            case TIFFTAG_GROUP4OPTIONS:
                return takeFaxOptions(value, COMPRESSION_CCITTFAX4);
            case TIFFTAG_RESOLUTIONUNIT:
                return takeShort(value, m_read.resolutionUnit.emplace());
            case TIFFTAG_PAGENUMBER:
                return takePageNumber(value);
            case TIFFTAG_PREDICTOR:
                m_hasPredictor = true;
                return takeShort(value, m_tags.predictor);
            case TIFFTAG_TILEWIDTH:
                m_tags.isTiled = true;
                return takeNumber(value, m_tags.tileWidthPx);
            case TIFFTAG_TILELENGTH:
                return takeNumber(value, m_tags.tileHeightPx);
            case TIFFTAG_TILEOFFSETS:
                return m_tags.isTiled && takeTable(value, m_offsets);
            case TIFFTAG_TILEBYTECOUNTS:
                return m_tags.isTiled && takeTable(value, m_counts);
            case TIFFTAG_JPEGTABLES:
                return takeJpegTables(value);
            case TIFFTAG_YCBCRSUBSAMPLING:
                return takeSubsampling(value);
            case TIFFTAG_YCBCRPOSITIONING:
                return takeShort(value, m_read.samplePositions.emplace());
            case TIFFTAG_REFERENCEBLACKWHITE:
                return takeBlackAndWhite(value);
            case TIFFTAG_SAMPLEFORMAT:
                m_read.hasSampleFormat = true;
                m_formatCount = value.count;
                return takeForSamples(value, m_tags.sampleFormat);
            default:
                return false;
            }
        }

        void readAt(std::uint64_t offset, std::span<std::uint8_t> bytes) const
        {
            if (!m_window.copyTo(offset, bytes))
                m_file.readAt(offset, bytes);
        }

        std::uint32_t numberAt(std::uint64_t offset, std::size_t bytes) const
        {
            std::array<std::uint8_t, 4> raw = {};
            readAt(offset, std::span(raw).first(bytes));
            return static_cast<std::uint32_t>(
                numberIn(std::span(raw).first(bytes), m_file.isBigEndian()));
        }

        bool takeShort(const TiffTagValue& value, int& to) const
        {
            if (value.type != TIFF_SHORT || value.count != 1)
                return false;
            to = static_cast<int>(numberAt(value.offset, 2));
            return true;
        }

        bool takeNumber(const TiffTagValue& value, std::uint32_t& to) const
        {
            if ((value.type != TIFF_SHORT && value.type != TIFF_LONG) || value.count != 1)
                return false;
            to = numberAt(value.offset, value.bytes);
            return true;
        }

        /// A number for each sample, and the same for all.
        bool takeForSamples(const TiffTagValue& value, int& to) const
        {
            if (value.type != TIFF_SHORT || (value.count != 1 && value.count != 3))
                return false;
            to = static_cast<int>(numberAt(value.offset, 2));
            for (std::uint64_t i = 1; i < value.count; ++i)
                if (static_cast<int>(numberAt(value.offset + 2 * i, 2)) != to)
                    return false;
            return true;
        }

        /// Whole numbers come back from libtiff's floats as they went in.
        bool takeWholeFraction(const TiffTagValue& value, double& to)
        {
            if (value.type != TIFF_RATIONAL || value.count != 1)
                return false;
            const std::uint32_t above = numberAt(value.offset, 4);
            const std::uint32_t below = numberAt(value.offset + 4, 4);
            if (above == 0 || below == 0 || above % below != 0)
                return false;
            const std::uint32_t whole = above / below;
            to = whole;
            return whole <= largestWholeNumber;
        }

        bool takeFaxOptions(const TiffTagValue& value, int compression)
        {
            return value.type == TIFF_LONG && m_tags.compression == compression
                && takeNumber(value, m_read.faxOptions.emplace());
        }

        bool takePageNumber(const TiffTagValue& value)
        {
            if (value.type != TIFF_SHORT || value.count != 2)
                return false;
            m_read.pageNumber = { numberAt(value.offset, 2), numberAt(value.offset + 2, 2) };
            return true;
        }

        bool takeJpegTables(const TiffTagValue& value)
        {
            if (value.type != TIFF_UNDEFINED || value.count <= 4
                || value.count > longestTablesBytes)
                return false;
            m_read.jpegTables.resize(value.count);
            readAt(value.offset, m_read.jpegTables);
            return true;
        }

        bool takeSubsampling(const TiffTagValue& value)
        {
            if (value.type != TIFF_SHORT || value.count != 2)
                return false;
            m_read.hasSubsampling = true;
            m_tags.horizontalSubsampling = static_cast<int>(numberAt(value.offset, 2));
            m_tags.verticalSubsampling = static_cast<int>(numberAt(value.offset + 2, 2));
            return true;
        }

        bool takeBlackAndWhite(const TiffTagValue& value)
        {
            constexpr std::uint64_t numbers = 6;
            if (value.type != TIFF_RATIONAL || value.count != numbers)
                return false;
            for (std::uint64_t i = 0; i < numbers; ++i) {
                const std::uint32_t above = numberAt(value.offset + 8 * i, 4);
                const std::uint32_t below = numberAt(value.offset + 8 * i + 4, 4);
                if (below == 0 || above % below != 0 || above / below > largestWholeNumber)
                    return false;
                m_read.blackAndWhite.push_back(above / below);
            }
            return true;
        }

        bool takeText(const TiffTagValue& value)
        {
            if (value.type != TIFF_ASCII || value.count < 2 || value.count > longestTextBytes
                || (value.tag == TIFFTAG_DATETIME && value.count != dateBytes))
                return false;
            QByteArray bytes(static_cast<qsizetype>(value.count), '\0');
            readAt(value.offset, { reinterpret_cast<std::uint8_t*>(bytes.data()), value.count });
            if (bytes.indexOf('\0') != bytes.size() - 1)
                return false;
            m_read.texts.push_back({ value.tag, std::move(bytes) });
            return true;
        }

        bool takeTable(const TiffTagValue& value, std::vector<std::uint64_t>& to) const
        {
            if ((value.type != TIFF_SHORT && value.type != TIFF_LONG) || value.count == 0
                || value.count > mostPieces || !to.empty())
                return false;
            std::vector<std::uint8_t> bytes(value.bytes);
            readAt(value.offset, bytes);
            const std::size_t each = value.bytes / value.count;
            to.reserve(value.count);
            for (std::size_t at = 0; at < bytes.size(); at += each)
                to.push_back(numberIn(std::span(bytes).subspan(at, each), m_file.isBigEndian()));
            return true;
        }

        bool hasKnownSamples() const
        {
            constexpr std::array depths { 1, 2, 4, 8, 16 };
            const bool isColor
                = m_tags.photometric == PHOTOMETRIC_RGB || m_tags.photometric == PHOTOMETRIC_YCBCR;
            const bool isGray = m_hasPhotometric
                && (m_tags.photometric == PHOTOMETRIC_MINISWHITE
                    || m_tags.photometric == PHOTOMETRIC_MINISBLACK);
            const auto samples = static_cast<std::uint64_t>(m_tags.samplesPerPixel);
            return std::ranges::find(depths, m_tags.bitsPerSample) != depths.end()
                && ((isGray && samples == 1)
                    || (isColor && samples == 3 && m_tags.bitsPerSample >= 8))
                && m_bitsCount == samples
                && (!m_read.hasSampleFormat
                    || (m_tags.sampleFormat == SAMPLEFORMAT_UINT && m_formatCount == samples));
        }

        bool hasKnownCoding() const
        {
            const bool isJpeg = m_tags.compression == COMPRESSION_JPEG;
            const bool isYcbcr = m_tags.photometric == PHOTOMETRIC_YCBCR;
            if ((isYcbcr || !m_read.jpegTables.empty()) && !isJpeg)
                return false;
            if ((m_read.hasSubsampling || m_read.samplePositions || !m_read.blackAndWhite.empty())
                && !isYcbcr)
                return false;
            switch (m_tags.compression) {
            case COMPRESSION_NONE:
                return m_tags.fillOrder == FILLORDER_MSB2LSB && !m_hasPredictor;
            case COMPRESSION_CCITTRLE:
            case COMPRESSION_CCITTFAX3:
            case COMPRESSION_CCITTFAX4:
                return m_tags.bitsPerSample == 1 && !m_hasPredictor;
            case COMPRESSION_LZW:
            case COMPRESSION_ADOBE_DEFLATE:
            case COMPRESSION_DEFLATE:
                return m_tags.predictor == PREDICTOR_NONE
                    || (m_tags.predictor == PREDICTOR_HORIZONTAL && m_tags.bitsPerSample >= 8);
            case COMPRESSION_PACKBITS:
                return !m_hasPredictor;
            case COMPRESSION_JPEG:
                return m_tags.bitsPerSample == 8 && m_tags.fillOrder == FILLORDER_MSB2LSB
                    && !m_hasPredictor;
            default:
                return false;
            }
        }

        bool hasKnownRest()
        {
            Resolution& resolution = m_tags.resolution;
            m_read.hasResolution = resolution.x > 0;
            const int unit = m_read.resolutionUnit.value_or(RESUNIT_INCH);
            if (unit != RESUNIT_INCH)
                resolution.unit
                    = unit == RESUNIT_NONE ? ResolutionUnit::None : ResolutionUnit::Centimeter;
            return (resolution.x > 0) == (resolution.y > 0) && unit >= RESUNIT_NONE
                && unit <= RESUNIT_CENTIMETER && m_planes == PLANARCONFIG_CONTIG
                && m_tags.orientation >= ORIENTATION_TOPLEFT
                && m_tags.orientation <= ORIENTATION_LEFTBOT
                && (m_tags.fillOrder == FILLORDER_MSB2LSB || m_tags.fillOrder == FILLORDER_LSB2MSB);
        }

        /// False when a piece is missing or lies where none should.
        bool joinPieces()
        {
            constexpr std::uint32_t largestSide = std::numeric_limits<std::int32_t>::max();
            if (m_tags.widthPx == 0 || m_tags.widthPx > largestSide || m_tags.heightPx == 0
                || m_tags.heightPx > largestSide || !hasKnownDivision()
                || m_counts.size() != m_offsets.size())
                return false;
            const std::uint64_t fileBytes = m_file.sizeBytes();
            m_read.pieces.reserve(m_offsets.size());
            for (std::size_t i = 0; i < m_offsets.size(); ++i) {
                const PlainDirectory::Piece piece { m_offsets[i], m_counts[i] };
                if (piece.offset < m_file.chain().format.headerBytes() || piece.bytes == 0
                    || piece.offset >= fileBytes || piece.bytes > fileBytes - piece.offset)
                    return false;
                m_read.pieces.push_back(piece);
                m_read.pieceBytes += piece.bytes;
            }
            return true;
        }

        bool hasKnownDivision()
        {
            if (m_tags.isTiled) {
                const std::uint64_t across = m_tags.tileWidthPx;
                const std::uint64_t down = m_tags.tileHeightPx;
                return across > 0 && down > 0 && across <= largestTileSidePx
                    && down <= largestTileSidePx && m_tags.rowsPerStrip == 0
                    && m_offsets.size()
                    == (m_tags.widthPx + across - 1) / across
                        * ((m_tags.heightPx + down - 1) / down);
            }
            if (m_tags.rowsPerStrip == 0)
                return false;
            m_tags.rowsPerStrip = std::min(m_tags.rowsPerStrip, m_tags.heightPx);
            return m_offsets.size() == m_tags.stripsInPlane();
        }

        /// libtiff takes that of the JPEG data where the tag says something else.
        bool hasKnownSubsampling() const
        {
            if (m_tags.photometric != PHOTOMETRIC_YCBCR)
                return true;
            constexpr std::uint64_t mostBytes = 1024;
            const PlainDirectory::Piece& piece = m_read.pieces.front();
            std::array<std::uint8_t, mostBytes> start = {};
            const auto held = std::span(start).first(std::min(mostBytes, piece.bytes));
            readAt(piece.offset, held);
            const auto isKnown = [](int samples) { return samples == 1 || samples == 2; };
            return isKnown(m_tags.horizontalSubsampling) && isKnown(m_tags.verticalSubsampling)
                && jpegSampling(held)
                == std::pair { m_tags.horizontalSubsampling, m_tags.verticalSubsampling };
        }

        const OpenTiffFile& m_file;
        const TiffWindow m_window;
        const TiffDirectory m_directory;
        PlainDirectory m_read;
        TiffPageTags& m_tags = m_read.tags;
        std::uint64_t m_bitsCount = 0;
        std::uint64_t m_formatCount = 0;
        int m_planes = PLANARCONFIG_CONTIG;
        bool m_hasPhotometric = false;
        bool m_hasPredictor = false;
        std::vector<std::uint64_t> m_offsets;
        std::vector<std::uint64_t> m_counts;
    };

} // namespace

std::optional<PlainDirectory> plainDirectory(const OpenTiffFile& file, int index)
try {
    if (!file.chainFault().isEmpty())
        return std::nullopt;
    return DirectoryReader(file, index).read();
} catch (const std::runtime_error&) {
    return std::nullopt;
}

} // namespace pagestack
