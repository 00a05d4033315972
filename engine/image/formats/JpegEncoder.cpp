#include "engine/image/formats/Density.h"
#include "engine/image/formats/Encoders.h"
#include "engine/image/formats/JpegMetadata.h"

#include <QtGlobal>

#include <cstdio>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstddef>
#include <exception>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::size_t bufferBytes = std::size_t { 64 } * 1024;

    /// ICC.1, annex B.4: up to 255 numbered segments, and what is left in each.
    constexpr qsizetype largestProfileBytes = 255 * qsizetype { 65519 };

    /// The encoder with everything that it needs until it is destroyed.
    class JpegCompressor
    {
    public:
        explicit JpegCompressor(StagedFile& file)
            : m_file(file)
        {
            m_codec.client_data = this;
            m_codec.err = jpeg_std_error(&m_errors);
            m_errors.emit_message = [](j_common_ptr, int) {};
            m_errors.error_exit = [](j_common_ptr codec) {
                codec->err->format_message(codec, of(codec).m_reason.data());
                std::longjmp(of(codec).m_jump, 1);
            };
            m_destination.init_destination = [](j_compress_ptr codec) { of(codec).write(0); };
            m_destination.empty_output_buffer = [](j_compress_ptr codec) -> boolean {
                of(codec).write(bufferBytes);
                return TRUE;
            };
            m_destination.term_destination = [](j_compress_ptr codec) {
                of(codec).write(bufferBytes - codec->dest->free_in_buffer);
            };
            confined([this] { jpeg_create_compress(&m_codec); });
            m_codec.dest = &m_destination;
        }
        ~JpegCompressor() { jpeg_destroy_compress(&m_codec); }
        JpegCompressor(const JpegCompressor&) = delete;
        JpegCompressor& operator=(const JpegCompressor&) = delete;

        /// Runs `steps`, the only frame that the encoder may jump out of: it holds references only
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
            throw std::runtime_error(m_reason.data());
        }

        jpeg_compress_struct& codec() { return m_codec; }

    private:
        template <typename Codec>
        static JpegCompressor& of(Codec* codec)
        {
            return *static_cast<JpegCompressor*>(codec->client_data);
        }

        /// Writes the first `bytes` of the buffer and begins it anew.
        void write(std::size_t bytes)
        {
            try {
                m_file.write({ m_buffer.data(), bytes });
            } catch (const std::runtime_error&) {
                m_failure = std::current_exception();
            }
            if (m_failure)
                std::longjmp(m_jump, 1);
            m_destination.next_output_byte = m_buffer.data();
            m_destination.free_in_buffer = m_buffer.size();
        }

        StagedFile& m_file;
        jpeg_compress_struct m_codec = {};
        jpeg_error_mgr m_errors = {};
        jpeg_destination_mgr m_destination = {};
        std::jmp_buf m_jump = {};
        std::array<char, JMSG_LENGTH_MAX> m_reason = {};
        std::exception_ptr m_failure; ///< of the file; the encoder is left by a jump
        std::array<std::uint8_t, bufferBytes> m_buffer {};
    };

    void configure(jpeg_compress_struct& codec, const PixelLayout& layout,
                   const PageProperties& page, int quality)
    {
        codec.image_width = static_cast<JDIMENSION>(page.widthPx);
        codec.image_height = static_cast<JDIMENSION>(page.heightPx);
        codec.input_components = layout.channels();
        codec.in_color_space = layout.model == ColorModel::Gray ? JCS_GRAYSCALE : JCS_RGB;
        jpeg_set_defaults(&codec);
        // The compression factor is quality / 10; the encoder clamps it to what it can do.
        const double factor = quality / 10.0;
        jpeg_set_quality(&codec, static_cast<int>(std::clamp(factor * 100.0, -1000.0, 1000.0)),
                         TRUE);
        if (quality >= 10)
            codec.comp_info[0].h_samp_factor = codec.comp_info[0].v_samp_factor = 1;
        codec.dct_method = JDCT_ISLOW;
        const Density density = jfifDensity(page.resolution);
        codec.density_unit = density.unit;
        codec.X_density = static_cast<UINT16>(density.x);
        codec.Y_density = static_cast<UINT16>(density.y);
    }

} // namespace

void encodeJpeg(UprightPage& upright, StagedFile& file)
{
    static_assert(jpegMostSidePx <= JPEG_MAX_DIMENSION);
    RowSource& rows = *upright.rows;
    const PageProperties& page = upright.properties;
    const int quality = upright.jpegQuality;
    if (page.iccProfile.size() > largestProfileBytes)
        throw std::runtime_error("an ICC profile of " + std::to_string(page.iccProfile.size())
                                 + " bytes is too large for JPEG");
    std::vector<JpegSegment> segments;
    if (upright.metadata)
        segments = jpegSegments(*upright.metadata, page, upright.leftOut);
    auto compressor = std::make_unique<JpegCompressor>(file);
    jpeg_compress_struct& codec = compressor->codec();
    const PixelLayout& layout = rows.layout();
    compressor->confined([&codec, &layout, &page, &segments, quality] {
        configure(codec, layout, page, quality);
        jpeg_start_compress(&codec, TRUE);
        for (const JpegSegment& segment : segments)
            jpeg_write_marker(&codec, JPEG_APP0 + segment.application,
                              reinterpret_cast<const JOCTET*>(segment.bytes.constData()),
                              static_cast<unsigned>(segment.bytes.size()));
        if (!page.iccProfile.isEmpty())
            jpeg_write_icc_profile(&codec,
                                   reinterpret_cast<const JOCTET*>(page.iccProfile.constData()),
                                   static_cast<unsigned>(page.iccProfile.size()));
    });
    std::vector<JSAMPROW> lines;
    for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand()) {
        lines.clear();
        for (int i = 0; i < band.rows; ++i)
            lines.push_back(const_cast<JSAMPROW>(band.row(i))); // libjpeg only reads them
        compressor->confined([&codec, &lines] {
            for (JDIMENSION done = 0; done < lines.size();)
                done += jpeg_write_scanlines(&codec, lines.data() + done,
                                             static_cast<JDIMENSION>(lines.size()) - done);
        });
    }
    compressor->confined([&codec] { jpeg_finish_compress(&codec); });
}

} // namespace pagestack
