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
#include <type_traits>

namespace pagestack {

namespace {

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

        void start()
        {
            confined([this](png_structp png, png_infop info) {
                png_set_read_fn(png, this, read);
                png_set_crc_action(png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
                // Profiles and texts can be large; what lies in them is no matter of the pixels.
                png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
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

} // namespace

ImageProof readPng(ByteFile& file)
{
    PngDecoder decoder(file);
    decoder.start();
    decoder.checkWhole();
    ProofMaker maker(static_cast<int>(decoder.widthPx()), decoder.layout(), KeptPixels::Samples);
    std::vector<std::uint8_t> row(decoder.rowBytes());
    std::uint8_t* const to = row.data();
    for (std::uint32_t y = 0; y < decoder.heightPx(); ++y) {
        decoder.confined([to](png_structp png, png_infop) { png_read_row(png, to, nullptr); });
        maker.add(to);
    }
    decoder.confined([](png_structp png, png_infop) { png_read_end(png, nullptr); });
    decoder.file().checkEnd();
    return maker.proof();
}

} // namespace pagestack
