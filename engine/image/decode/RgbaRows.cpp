#include "engine/image/decode/DisplayRows.h"
#include "engine/image/decode/StripDecoder.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/RowByRow.h"
#include "engine/image/tiff/TiffLimits.h"
#include "engine/threads/StopScope.h"

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
    TIFF* startDecoding(const TiffPage& page)
    {
        const TiffPageTags& tags = page.tags();
        TIFF* handle = page.restart();
        if (tags.isSubsampled() && tags.horizontalSubsampling == 4
            && tags.verticalSubsampling == 4) // libtiff 4.5 leaves out the ends of strips and tiles
            throw std::runtime_error("one colour for 4 x 4 pixels is not supported");
        if (sparseStrips(handle) > 0)
            throw std::runtime_error("strips without data are not supported for such a page");
        if (tags.compression != COMPRESSION_DEFLATE
            && tags.compression != COMPRESSION_ADOBE_DEFLATE)
            return handle;
        StripDecoder decoder(page, handle);
        const std::uint32_t count = piecesOf(handle);
        std::vector<std::uint8_t> piece;
        for (std::uint32_t number = 0; number < count; ++number) {
            StopScope::leavePageIfStopped();
            const std::uint64_t bytes = plainBytes(handle, tags, number);
            if (bytes > mostRasterBytes)
                throw std::runtime_error("its strips or tiles are too large");
            piece.resize(bytes);
            decoder.decode(number, piece);
        }
        TIFFSetField(handle, TIFFTAG_DEFLATE_SUBCODEC, DEFLATE_SUBCODEC_ZLIB);
        return handle;
    }

    PixelLayout layoutFor(const TiffPageTags& tags)
    {
        const bool isGray = tags.photometric == PHOTOMETRIC_MINISBLACK
            || tags.photometric == PHOTOMETRIC_MINISWHITE || tags.photometric == PHOTOMETRIC_LOGL;
        PixelLayout layout;
        layout.model = isGray ? ColorModel::Gray : ColorModel::Rgb;
        return layout;
    }

    class RgbaRows : public RowByRow
    {
    public:
        explicit RgbaRows(const TiffPage& page)
            : RowByRow(page.properties().widthPx, page.properties().heightPx,
                       layoutFor(page.tags()))
            , m_messages(page.messages())
            , m_tags(page.tags())
            , m_page(startDecoding(page))
        {
            // Rows come in stored order; turning the page is not done here.
            m_page.image.req_orientation = m_page.image.orientation;
            chooseBand();
        }

    private:
        /// Whole strips or rows of tiles, since libtiff decodes a strip anew for every band of it.
        void chooseBand()
        {
            const std::uint64_t rasterRowBytes = std::uint64_t { m_tags.widthPx } * 4;
            const std::uint64_t piece = std::clamp<std::uint64_t>(
                m_tags.isTiled ? m_tags.tileHeightPx : m_tags.rowsPerStrip, 1, m_tags.heightPx);
            const std::uint64_t pieces
                = std::max<std::uint64_t>(1, wantedRasterBytes / (piece * rasterRowBytes));
            m_bandRows = static_cast<std::uint32_t>(
                std::min<std::uint64_t>(piece * pieces, m_tags.heightPx));
            const std::uint64_t pieceBytes = m_tags.isTiled ? TIFFTileSize64(m_page.image.tif)
                                                            : TIFFStripSize64(m_page.image.tif);
            if (m_bandRows * rasterRowBytes > mostRasterBytes
                || pieceBytes > mostRasterBytes - m_bandRows * rasterRowBytes)
                throw std::runtime_error("its strips or tiles are too large");
            m_raster.resize(std::size_t { m_bandRows } * m_tags.widthPx);
        }

        int fetch() override
        {
            const std::uint32_t rows = std::min(m_bandRows, m_tags.heightPx - m_nextRow);
            if (rows == 0)
                return 0;
            m_page.image.row_offset = static_cast<int>(m_nextRow);
            const int ok = TIFFRGBAImageGet(&m_page.image, m_raster.data(), m_tags.widthPx, rows);
            if (ok == 0 || m_messages.failed())
                m_messages.fail("the pixels cannot be decoded");
            m_nextRow += rows;
            return static_cast<int>(rows);
        }

        void make(int index, std::uint8_t* to) override
        {
            const std::uint32_t* from
                = m_raster.data() + static_cast<std::size_t>(index) * m_tags.widthPx;
            for (std::uint32_t i = 0; i < m_tags.widthPx; ++i) {
                *to++ = static_cast<std::uint8_t>(TIFFGetR(from[i]));
                if (layout().model == ColorModel::Gray)
                    continue;
                *to++ = static_cast<std::uint8_t>(TIFFGetG(from[i]));
                *to++ = static_cast<std::uint8_t>(TIFFGetB(from[i]));
            }
        }

        TiffMessages& m_messages;
        const TiffPageTags& m_tags;
        RgbaPage m_page;
        std::uint32_t m_bandRows = 0;
        std::uint32_t m_nextRow = 0; ///< to be decoded
        std::vector<std::uint32_t> m_raster;
    };

} // namespace

std::unique_ptr<RowSource> rgbaRows(const TiffPage& page)
{
    return std::make_unique<RgbaRows>(page);
}

} // namespace pagestack
