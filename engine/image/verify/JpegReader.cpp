#include "engine/image/verify/ImageReaders.h"

#include <cstdio>
#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace pagestack {

namespace {

    class JpegDecoder
    {
    public:
        explicit JpegDecoder(ByteFile& file)
            : m_file(file)
        {
            m_codec.client_data = this;
            m_codec.err = jpeg_std_error(&m_errors);
            m_errors.error_exit = [](j_common_ptr codec) { of(codec).leave(); };
            m_errors.emit_message = [](j_common_ptr codec, int level) {
                if (level < 0) // a warning: pixels are not as they should be
                    of(codec).leave();
            };
            m_source.init_source = [](j_decompress_ptr) {};
            m_source.term_source = [](j_decompress_ptr) {};
            m_source.resync_to_restart = jpeg_resync_to_restart;
            m_source.fill_input_buffer
                = [](j_decompress_ptr codec) -> boolean { return of(codec).fill(); };
            m_source.skip_input_data = [](j_decompress_ptr codec, long count) {
                jpeg_source_mgr& source = *codec->src;
                for (auto left = static_cast<std::size_t>(std::max(count, 0L)); left > 0;) {
                    if (source.bytes_in_buffer == 0)
                        of(codec).fill();
                    const std::size_t part = std::min(left, source.bytes_in_buffer);
                    source.next_input_byte += part;
                    source.bytes_in_buffer -= part;
                    left -= part;
                }
            };
            confined([this] { jpeg_create_decompress(&m_codec); });
            m_codec.src = &m_source;
        }
        ~JpegDecoder() { jpeg_destroy_decompress(&m_codec); }
        JpegDecoder(const JpegDecoder&) = delete;
        JpegDecoder& operator=(const JpegDecoder&) = delete;

        /// Runs `steps`, the only frame that the decoder may jump out of: it holds references only
        /// and creates nothing that needs destroying.
        template <typename Steps>
        void confined(Steps steps)
        {
            static_assert(std::is_trivially_destructible_v<Steps>);
            if (setjmp(m_jump) == 0) {
                steps();
                return;
            }
            if (m_failure)
                std::rethrow_exception(m_failure);
            throw std::runtime_error(std::string("libjpeg says: ") + m_reason.data());
        }

        jpeg_decompress_struct& codec() { return m_codec; }

        void checkEnd() const { m_file.checkEnd(m_source.bytes_in_buffer); }

    private:
        template <typename Codec>
        static JpegDecoder& of(Codec* codec)
        {
            return *static_cast<JpegDecoder*>(codec->client_data);
        }

        [[noreturn]] void leave()
        {
            m_errors.format_message(reinterpret_cast<j_common_ptr>(&m_codec), m_reason.data());
            std::longjmp(m_jump, 1);
        }

        boolean fill()
        {
            std::size_t bytes = 0;
            try {
                bytes = m_file.read(m_buffer);
            } catch (const std::exception&) {
                m_failure = std::current_exception();
            }
            if (m_failure)
                std::longjmp(m_jump, 1);
            if (bytes == 0) {
                m_errors.msg_code = JERR_INPUT_EOF;
                leave();
            }
            m_source.next_input_byte = m_buffer.data();
            m_source.bytes_in_buffer = bytes;
            return TRUE;
        }

        FileSequence m_file;
        jpeg_decompress_struct m_codec = {};
        jpeg_error_mgr m_errors = {};
        jpeg_source_mgr m_source = {};
        std::jmp_buf m_jump = {};
        std::array<char, JMSG_LENGTH_MAX> m_reason = {};
        std::exception_ptr m_failure; ///< of the file; the decoder is left by a jump
        std::array<std::uint8_t, 65536> m_buffer {};
    };

} // namespace

ImageProof readJpeg(ByteFile& file)
{
    const auto decoder = std::make_unique<JpegDecoder>(file);
    jpeg_decompress_struct& codec = decoder->codec();
    decoder->confined([&codec] {
        jpeg_read_header(&codec, TRUE);
        // Only whether it can be decoded matters, not how well.
        codec.out_color_space = codec.jpeg_color_space;
        codec.do_fancy_upsampling = FALSE;
        codec.dct_method = JDCT_IFAST;
        jpeg_start_decompress(&codec);
    });
    PixelLayout layout;
    layout.model = codec.output_components == 1 ? ColorModel::Gray : ColorModel::Rgb;
    ProofMaker maker(static_cast<int>(codec.output_width), layout, KeptPixels::Size);
    std::vector<std::uint8_t> row(std::size_t { codec.output_width }
                                  * static_cast<unsigned>(codec.output_components));
    JSAMPROW to = row.data();
    while (codec.output_scanline < codec.output_height) {
        decoder->confined([&codec, &to] { jpeg_read_scanlines(&codec, &to, 1); });
        maker.add(row.data());
    }
    decoder->confined([&codec] { jpeg_finish_decompress(&codec); });
    decoder->checkEnd();
    return maker.proof();
}

} // namespace pagestack
