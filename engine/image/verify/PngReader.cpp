#include "engine/image/verify/ImageReaders.h"

#include <QtGlobal>

#include <cstdio>
#include <png.h>

#include <array>
#include <csetjmp>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

namespace pagestack {

namespace {

    /// Names as libpng takes them, each with a zero behind it.
    constexpr std::string_view textChunks("tEXt\0zTXt\0iTXt\0eXIf\0", 20);

    class PngDecoder
    {
    public:
        explicit PngDecoder(ByteFile& file)
            : m_file(file)
        {
            m_png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, leave, ignore);
            m_info = m_png == nullptr ? nullptr : png_create_info_struct(m_png);
            if (m_info == nullptr) {
                png_destroy_read_struct(&m_png, nullptr, nullptr);
                throw std::bad_alloc();
            }
        }
        ~PngDecoder() { png_destroy_read_struct(&m_png, &m_info, nullptr); }
        PngDecoder(const PngDecoder&) = delete;
        PngDecoder& operator=(const PngDecoder&) = delete;

        /// Runs `steps`, the only frame that the decoder may jump out of: it holds references only
        /// and creates nothing that needs destroying.
        template <typename Steps>
        void confined(Steps steps)
        {
            static_assert(std::is_trivially_destructible_v<Steps>);
            if (setjmp(m_jump) == 0) {
                steps(m_png, m_info);
                return;
            }
            if (m_failure)
                std::rethrow_exception(m_failure);
            throw std::runtime_error(std::string("libpng says: ") + m_reason.data());
        }

        void start(bool isProof)
        {
            confined([this, isProof](png_structp png, png_infop info) {
                png_set_read_fn(png, this, read);
                png_set_crc_action(png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
                // Profiles and texts can be large; what lies in them is no matter of the pixels.
                const auto* const names = reinterpret_cast<png_const_bytep>(textChunks.data());
                if (isProof)
                    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
                else
                    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, names,
                                                static_cast<int>(textChunks.size() / 5));
                png_set_chunk_malloc_max(png, 0);
                png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
                png_read_info(png, info);
                if (Q_BYTE_ORDER == Q_LITTLE_ENDIAN && png_get_bit_depth(png, info) == 16)
                    png_set_swap(png);
            });
        }

        PixelLayout layout() const
        {
            const int type = png_get_color_type(m_png, m_info);
            PixelLayout layout;
            layout.bitsPerSample = png_get_bit_depth(m_png, m_info);
            layout.model = type == PNG_COLOR_TYPE_PALETTE ? ColorModel::Palette
                : (type & PNG_COLOR_MASK_COLOR) != 0      ? ColorModel::Rgb
                                                          : ColorModel::Gray;
            layout.alpha
                = (type & PNG_COLOR_MASK_ALPHA) != 0 ? AlphaKind::Straight : AlphaKind::None;
            png_colorp colors = nullptr;
            int count = 0;
            if (layout.model == ColorModel::Palette
                && png_get_PLTE(m_png, m_info, &colors, &count) != 0)
                for (const png_color& color : std::span(colors, static_cast<std::size_t>(count)))
                    layout.palette.push_back({ color.red, color.green, color.blue });
            return layout;
        }

        QByteArray iccProfile() const
        {
            png_charp name = nullptr;
            int method = 0;
            png_bytep bytes = nullptr;
            png_uint_32 count = 0;
            if (png_get_iCCP(m_png, m_info, &name, &method, &bytes, &count) == 0)
                return {};
            return { reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(count) };
        }

        void checkWhole() const
        {
            if (png_get_interlace_type(m_png, m_info) != PNG_INTERLACE_NONE
                || png_get_valid(m_png, m_info, PNG_INFO_tRNS) != 0)
                throw std::runtime_error("its header is damaged");
        }

        std::uint32_t widthPx() const { return png_get_image_width(m_png, m_info); }
        std::uint32_t heightPx() const { return png_get_image_height(m_png, m_info); }
        std::size_t rowBytes() const { return png_get_rowbytes(m_png, m_info); }
        const FileSequence& file() const { return m_file; }

    private:
        [[noreturn]] static void leave(png_structp png, png_const_charp text)
        {
            PngDecoder& self = *static_cast<PngDecoder*>(png_get_error_ptr(png));
            std::snprintf(self.m_reason.data(), self.m_reason.size(), "%s", text);
            std::longjmp(self.m_jump, 1);
        }

        /// Checksums are errors; the rest shows in the pixels.
        static void ignore(png_structp, png_const_charp) { }

        static void read(png_structp png, png_bytep to, std::size_t count)
        {
            PngDecoder& self = *static_cast<PngDecoder*>(png_get_io_ptr(png));
            bool isWhole = false;
            try {
                isWhole = self.m_file.read({ to, count }) == count;
            } catch (const std::exception&) {
                self.m_failure = std::current_exception();
            }
            if (!isWhole)
                png_error(png, "the file ends early");
        }

        FileSequence m_file;
        png_structp m_png = nullptr;
        png_infop m_info = nullptr;
        std::jmp_buf m_jump = {};
        std::array<char, 200> m_reason = {};
        std::exception_ptr m_failure; ///< of the file; the decoder is left by a jump
    };

    std::unique_ptr<PngDecoder> startedDecoder(ByteFile& file, bool isProof)
    {
        auto decoder = std::make_unique<PngDecoder>(file);
        decoder->start(isProof);
        decoder->checkWhole();
        return decoder;
    }

    /// A row each band.
    class PngRows : public RowSource
    {
    public:
        explicit PngRows(std::unique_ptr<PngDecoder> decoder)
            : RowSource(static_cast<int>(decoder->widthPx()), static_cast<int>(decoder->heightPx()),
                        decoder->layout())
            , m_decoder(std::move(decoder))
            , m_row(m_decoder->rowBytes())
        {
        }

        Band nextBand() override
        {
            if (m_read == heightPx()) {
                m_decoder->confined([](png_structp png, png_infop) { png_read_end(png, nullptr); });
                m_decoder->file().checkEnd();
                return {};
            }
            std::uint8_t* const to = m_row.data();
            m_decoder->confined(
                [to](png_structp png, png_infop) { png_read_row(png, to, nullptr); });
            ++m_read;
            return { to, 1, rowBytes() };
        }

    private:
        std::unique_ptr<PngDecoder> m_decoder;
        std::vector<std::uint8_t> m_row;
        int m_read = 0;
    };

} // namespace

ImageProof readPng(ByteFile& file)
{
    return readProof(*std::make_unique<PngRows>(startedDecoder(file, true)), KeptPixels::Samples);
}

OpenImage openPng(ByteFile& file)
{
    auto decoder = startedDecoder(file, false);
    const QByteArray profile = decoder->iccProfile();
    return { std::make_unique<PngRows>(std::move(decoder)), profile };
}

} // namespace pagestack
