#include "engine/image/Density.h"
#include "engine/image/Encoders.h"
#include "engine/support/SystemLog.h"

#include <png.h>
#include <zlib.h>

#include <bit>
#include <csetjmp>
#include <exception>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr std::size_t compressedBufferBytes = 64 * 1024;

    /// What libpng's callbacks need.
    struct PngContext
    {
        StagedFile* file = nullptr;
        std::exception_ptr failure; ///< of the staged file
        std::array<char, 256> reason = {};
    };

    void leaveWithReason(png_structp codec, png_const_charp reason)
    {
        auto* context = static_cast<PngContext*>(png_get_error_ptr(codec));
        std::snprintf(context->reason.data(), context->reason.size(), "%s", reason);
        png_longjmp(codec, 1);
    }

    void logWarning(png_structp, png_const_charp text)
    {
        systemLog(u"libpng: %1"_s.arg(QString::fromLatin1(text)));
    }

    void writeBytes(png_structp codec, png_bytep bytes, size_t count)
    {
        auto* context = static_cast<PngContext*>(png_get_io_ptr(codec));
        try {
            context->file->write({ bytes, count });
        } catch (const std::runtime_error&) {
            context->failure = std::current_exception();
        }
        if (context->failure)
            png_error(codec, "the file takes no more");
    }

    void flushNothing(png_structp) { }

    class PngCompressor
    {
    public:
        explicit PngCompressor(StagedFile& file)
        {
            m_context.file = &file;
            m_codec = png_create_write_struct(PNG_LIBPNG_VER_STRING, &m_context, leaveWithReason,
                                              logWarning);
            if (m_codec != nullptr)
                m_info = png_create_info_struct(m_codec);
            if (m_info == nullptr) {
                png_destroy_write_struct(&m_codec, &m_info);
                throw std::bad_alloc();
            }
            png_set_write_fn(m_codec, &m_context, writeBytes, flushNothing);
        }
        ~PngCompressor() { png_destroy_write_struct(&m_codec, &m_info); }
        PngCompressor(const PngCompressor&) = delete;
        PngCompressor& operator=(const PngCompressor&) = delete;

        /// Runs `steps`, the only frame that libpng may jump out of: it holds references only and
        /// creates nothing that needs destroying.
        template <typename Steps>
        void confined(Steps steps)
        {
            static_assert(std::is_trivially_destructible_v<Steps>);
            if (setjmp(png_jmpbuf(m_codec)) == 0) {
                steps(m_codec, m_info);
                return;
            }
            if (m_context.failure)
                std::rethrow_exception(m_context.failure);
            throw std::runtime_error(m_context.reason.data());
        }

    private:
        PngContext m_context;
        png_structp m_codec = nullptr;
        png_infop m_info = nullptr;
    };

    int colorType(const PixelLayout& layout)
    {
        if (layout.model == ColorModel::Palette)
            return PNG_COLOR_TYPE_PALETTE;
        const int alpha = layout.alpha == AlphaKind::None ? 0 : PNG_COLOR_MASK_ALPHA;
        return (layout.model == ColorModel::Rgb ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY) | alpha;
    }

    void chooseCompression(png_structp codec, const PixelLayout& layout)
    {
        png_set_compression_buffer_size(codec, compressedBufferBytes);
        const bool isPacked = layout.model == ColorModel::Palette || layout.bitsPerSample < 8;
        // Filters spoil the repetitions of packed samples and indexes, and make those of other
        // pixels; between them a low level loses little size and saves much time.
        png_set_filter(codec, PNG_FILTER_TYPE_BASE, isPacked ? PNG_FILTER_NONE : PNG_ALL_FILTERS);
        png_set_compression_level(codec, isPacked ? 6 : 3);
        png_set_compression_strategy(codec, isPacked ? Z_DEFAULT_STRATEGY : Z_FILTERED);
    }

    void describeDensity(png_structp codec, png_infop info, const Resolution& resolution)
    {
        const MetricDensity density = metricDensity(resolution);
        if (density.x != 0) {
            png_set_pHYs(codec, info, density.x, density.y, PNG_RESOLUTION_METER);
            return;
        }
        const PixelRatio ratio = pixelRatio(resolution);
        if (resolution.unit == ResolutionUnit::None && ratio.x != ratio.y)
            png_set_pHYs(codec, info, ratio.x, ratio.y, PNG_RESOLUTION_UNKNOWN);
    }

    void describeProfile(png_structp codec, png_infop info, const QByteArray& profile)
    {
        if (profile.isEmpty())
            return;
        // A profile that is kept byte for byte need not please libpng's checks.
        png_set_option(codec, PNG_SKIP_sRGB_CHECK_PROFILE, PNG_OPTION_ON);
        png_set_iCCP(codec, info, "icc", PNG_COMPRESSION_TYPE_BASE,
                     reinterpret_cast<png_const_bytep>(profile.constData()),
                     static_cast<png_uint_32>(profile.size()));
    }

} // namespace

TargetPixels pngPixels()
{
    TargetPixels target;
    target.takesPalette = true;
    target.takesAlpha = true;
    target.takes16Bits = true;
    target.takes1Bit = true;
    target.takes2And4Bits = true;
    return target;
}

void encodePng(RowSource& rows, const PageProperties& page, StagedFile& file)
{
    const PixelLayout& layout = rows.layout();
    std::vector<png_color> palette;
    for (const RgbColor& color : layout.palette)
        palette.push_back({ color[0], color[1], color[2] });
    PngCompressor compressor(file);
    compressor.confined([&](png_structp codec, png_infop info) {
        png_set_benign_errors(codec, 1);
        // Pages may be larger than what libpng takes unasked.
        png_set_user_limits(codec, std::numeric_limits<std::int32_t>::max(),
                            std::numeric_limits<std::int32_t>::max());
        png_set_IHDR(codec, info, static_cast<png_uint_32>(page.widthPx),
                     static_cast<png_uint_32>(page.heightPx), layout.bitsPerSample,
                     colorType(layout), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                     PNG_FILTER_TYPE_DEFAULT);
        if (!palette.empty())
            png_set_PLTE(codec, info, palette.data(), static_cast<int>(palette.size()));
        describeDensity(codec, info, page.resolution);
        describeProfile(codec, info, page.iccProfile);
        chooseCompression(codec, layout);
        png_write_info(codec, info);
        if (layout.bitsPerSample == 16 && std::endian::native == std::endian::little)
            png_set_swap(codec);
    });
    for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
        compressor.confined([&band](png_structp codec, png_infop) {
            for (int i = 0; i < band.rows; ++i)
                png_write_row(codec, band.row(i));
        });
    compressor.confined([](png_structp codec, png_infop info) { png_write_end(codec, info); });
}

} // namespace pagestack
