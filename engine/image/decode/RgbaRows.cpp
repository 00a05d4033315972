#include "engine/image/decode/RgbaRows.h"

#include "engine/image/decode/StripDecoder.h"
#include "engine/image/tiff/TiffLimits.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::uint64_t wantedRasterBytes = std::uint64_t { 1024 } * 1024;
    /// What is held of a page at most: a band, and the strip or tile that libtiff makes it of.
    constexpr std::uint64_t mostRasterBytes = std::uint64_t { 256 } * 1024 * 1024;
    /// Strips and tiles may be large; what is made of them is shown in smaller bands.
    constexpr std::uint64_t mostRgbBytes = std::uint64_t { 4 } * 1024 * 1024;

    /// What libtiff holds to make RGBA pixels of a page, until this object ends.
    struct RgbaPage
    {
        explicit RgbaPage(TIFF* handle)
        {
            std::array<char, 1024> reason = {};
            if (TIFFRGBAImageBegin(&image, handle, 1, reason.data()) == 0)
                throw std::runtime_error(reason.data());
        }
        ~RgbaPage() { TIFFRGBAImageEnd(&image); }
        RgbaPage(const RgbaPage&) = delete;
        RgbaPage& operator=(const RgbaPage&) = delete;

        TIFFRGBAImage image = {};
    };

    /// Makes the page the current one. libtiff 4.5 takes damaged Deflate data for sound, so they
    /// are looked through first, and by itself it would not write the end of a strip that is filled
    /// up with rows.
    TIFF* startDecoding(TiffFile& file, int index, const TiffPageTags& tags)
    {
        TIFF* handle = selectForDecoding(file, index, tags);
        if (tags.isSubsampled() && tags.horizontalSubsampling == 4
            && tags.verticalSubsampling == 4) // libtiff 4.5 leaves out the ends of strips and tiles
            throw std::runtime_error("one colour for 4 x 4 pixels is not supported");
        if (hasSparseStrips(handle))
            throw std::runtime_error("strips without data are not supported for such a page");
        if (tags.compression != COMPRESSION_DEFLATE
            && tags.compression != COMPRESSION_ADOBE_DEFLATE)
            return handle;
        StripDecoder decoder(file, index, handle, tags);
        const std::uint32_t count
            = tags.isTiled ? TIFFNumberOfTiles(handle) : TIFFNumberOfStrips(handle);
        std::vector<std::uint8_t> piece;
        for (std::uint32_t number = 0; number < count; ++number) {
            const std::uint64_t bytes = plainBytes(handle, tags, number);
            if (bytes > mostRasterBytes)
                throw std::runtime_error("its strips or tiles are too large");
            piece.resize(bytes);
            decoder.decode(number, piece);
        }
        TIFFSetField(handle, TIFFTAG_DEFLATE_SUBCODEC, DEFLATE_SUBCODEC_ZLIB);
        return handle;
    }

    class RgbaRows : public RowSource
    {
    public:
        RgbaRows(TiffFile& file, int index, const TiffPageTags& tags)
            : m_file(file)
            , m_tags(tags)
            , m_page(startDecoding(file, index, tags))
        {
            // Rows come in stored order; turning the page is not done here.
            m_page.image.req_orientation = m_page.image.orientation;
            m_layout.model = tags.photometric == PHOTOMETRIC_MINISBLACK
                    || tags.photometric == PHOTOMETRIC_MINISWHITE
                    || tags.photometric == PHOTOMETRIC_LOGL
                ? ColorModel::Gray
                : ColorModel::Rgb;
            chooseBand();
        }

        int widthPx() const override { return static_cast<int>(m_tags.widthPx); }
        int heightPx() const override { return static_cast<int>(m_tags.heightPx); }
        const PixelLayout& layout() const override { return m_layout; }

        Band nextBand() override
        {
            if (m_shownRows == m_decodedRows)
                decode();
            const auto rowBytes = static_cast<std::uint64_t>(m_layout.rowBytes(widthPx()));
            const auto rows = static_cast<std::uint32_t>(std::min<std::uint64_t>(
                m_decodedRows - m_shownRows, std::max<std::uint64_t>(1, mostRgbBytes / rowBytes)));
            unpack(rows);
            return { m_samples.data(), static_cast<int>(rows), m_layout.rowBytes(widthPx()) };
        }

    private:
        /// Whole strips or rows of tiles, since libtiff decodes a strip anew for every band of it.
        void chooseBand()
        {
            const std::uint64_t rowBytes = std::uint64_t { m_tags.widthPx } * 4;
            const std::uint64_t piece = std::clamp<std::uint64_t>(
                m_tags.isTiled ? m_tags.tileHeightPx : m_tags.rowsPerStrip, 1, m_tags.heightPx);
            const std::uint64_t pieces
                = std::max<std::uint64_t>(1, wantedRasterBytes / (piece * rowBytes));
            m_bandRows = static_cast<std::uint32_t>(
                std::min<std::uint64_t>(piece * pieces, m_tags.heightPx));
            const std::uint64_t pieceBytes = m_tags.isTiled ? TIFFTileSize64(m_page.image.tif)
                                                            : TIFFStripSize64(m_page.image.tif);
            if (m_bandRows * rowBytes > mostRasterBytes
                || pieceBytes > mostRasterBytes - m_bandRows * rowBytes)
                throw std::runtime_error("its strips or tiles are too large");
            m_raster.resize(std::size_t { m_bandRows } * m_tags.widthPx);
        }

        /// The next rows into `m_raster`: none after the last one.
        void decode()
        {
            m_shownRows = 0;
            m_decodedRows = std::min(m_bandRows, m_tags.heightPx - m_nextRow);
            if (m_decodedRows == 0)
                return;
            m_page.image.row_offset = static_cast<int>(m_nextRow);
            const int ok
                = TIFFRGBAImageGet(&m_page.image, m_raster.data(), m_tags.widthPx, m_decodedRows);
            if (ok == 0 || m_file.messages().failed())
                m_file.messages().fail("the pixels cannot be decoded");
            m_nextRow += m_decodedRows;
        }

        /// The next `rows` of `m_raster` into `m_samples`.
        void unpack(std::uint32_t rows)
        {
            m_samples.resize(static_cast<std::size_t>(m_layout.rowBytes(widthPx())) * rows);
            const std::size_t first = std::size_t { m_shownRows } * m_tags.widthPx;
            const std::size_t end = first + std::size_t { rows } * m_tags.widthPx;
            m_shownRows += rows;
            std::uint8_t* to = m_samples.data();
            for (std::size_t i = first; i < end; ++i) {
                const std::uint32_t pixel = m_raster[i];
                *to++ = static_cast<std::uint8_t>(TIFFGetR(pixel));
                if (m_layout.model == ColorModel::Gray)
                    continue;
                *to++ = static_cast<std::uint8_t>(TIFFGetG(pixel));
                *to++ = static_cast<std::uint8_t>(TIFFGetB(pixel));
            }
        }

        TiffFile& m_file;
        TiffPageTags m_tags;
        RgbaPage m_page;
        PixelLayout m_layout;
        std::uint32_t m_bandRows = 0;
        std::uint32_t m_nextRow = 0; ///< to be decoded
        std::uint32_t m_decodedRows = 0; ///< in `m_raster`
        std::uint32_t m_shownRows = 0; ///< of these
        std::vector<std::uint32_t> m_raster;
        std::vector<std::uint8_t> m_samples;
    };

} // namespace

std::unique_ptr<RowSource> rgbaRows(TiffFile& file, int index, const TiffPageTags& tags)
{
    return std::make_unique<RgbaRows>(file, index, tags);
}

} // namespace pagestack
