#include "engine/image/RgbaRows.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::uint64_t wantedBandBytes = 1024 * 1024;
    constexpr std::uint64_t largestBandBytes = 192 * 1024 * 1024;

    class RgbaRows : public RowSource
    {
    public:
        RgbaRows(TiffFile& file, int index, const TiffPageTags& tags)
            : m_file(file)
            , m_tags(tags)
        {
            TIFF* handle = file.select(index);
            std::array<char, 1024> reason = {};
            if (TIFFRGBAImageBegin(&m_image, handle, 1, reason.data()) == 0)
                throw std::runtime_error(reason.data());
            // Rows come in stored order; turning the page is not done here.
            m_image.req_orientation = m_image.orientation;
            m_layout.model = tags.photometric == PHOTOMETRIC_MINISBLACK
                    || tags.photometric == PHOTOMETRIC_MINISWHITE
                    || tags.photometric == PHOTOMETRIC_LOGL
                ? ColorModel::Gray
                : ColorModel::Rgb;
            chooseBand();
        }

        ~RgbaRows() override { TIFFRGBAImageEnd(&m_image); }

        int widthPx() const override { return static_cast<int>(m_tags.widthPx); }
        int heightPx() const override { return static_cast<int>(m_tags.heightPx); }
        const PixelLayout& layout() const override { return m_layout; }

        Band nextBand() override
        {
            const std::uint32_t rows = std::min(m_bandRows, m_tags.heightPx - m_nextRow);
            if (rows == 0)
                return {};
            m_image.row_offset = static_cast<int>(m_nextRow);
            const int ok = TIFFRGBAImageGet(&m_image, m_raster.data(), m_tags.widthPx, rows);
            if (ok == 0 || m_file.messages().failed())
                m_file.messages().fail("the pixels cannot be decoded");
            m_nextRow += rows;
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
                = std::max<std::uint64_t>(1, wantedBandBytes / (piece * rowBytes));
            m_bandRows = static_cast<std::uint32_t>(
                std::min<std::uint64_t>(piece * pieces, m_tags.heightPx));
            if (m_bandRows * rowBytes > largestBandBytes)
                throw std::runtime_error("its strips are too large");
            m_raster.resize(std::size_t { m_bandRows } * m_tags.widthPx);
            m_samples.resize(static_cast<std::size_t>(m_layout.rowBytes(widthPx())) * m_bandRows);
        }

        void unpack(std::uint32_t rows)
        {
            const std::size_t pixels = std::size_t { rows } * m_tags.widthPx;
            std::uint8_t* to = m_samples.data();
            for (std::size_t i = 0; i < pixels; ++i) {
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
        TIFFRGBAImage m_image = {};
        PixelLayout m_layout;
        std::uint32_t m_bandRows = 0;
        std::uint32_t m_nextRow = 0;
        std::vector<std::uint32_t> m_raster;
        std::vector<std::uint8_t> m_samples;
    };

} // namespace

std::unique_ptr<RowSource> rgbaRows(TiffFile& file, int index, const TiffPageTags& tags)
{
    return std::make_unique<RgbaRows>(file, index, tags);
}

} // namespace pagestack
