#include "engine/image/formats/Density.h"
#include "engine/image/formats/Encoders.h"

#include <QtGlobal>

#include <cstdio>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::size_t bufferBytes = std::size_t { 64 } * 1024;

    /// ICC.1, annex B.4: up to 255 numbered segments, and what is left in each.
    constexpr qsizetype largestProfileBytes = 255 * qsizetype { 65519 };

    struct JpegErrors
    {
        jpeg_error_mgr base;
        std::jmp_buf jump;
        std::array<char, JMSG_LENGTH_MAX> reason;
    };

    struct FileDestination
    {
        jpeg_destination_mgr base;
        StagedFile* file;
        std::exception_ptr failure; ///< of the staged file; the encoder is left by a jump
        std::array<std::uint8_t, bufferBytes> buffer;
    };

    void leaveWithReason(j_common_ptr codec)
    {
        auto* errors = reinterpret_cast<JpegErrors*>(codec->err);
        codec->err->format_message(codec, errors->reason.data());
        std::longjmp(errors->jump, 1);
    }

    void ignoreMessage(j_common_ptr, int) { }

    void writeBuffer(j_compress_ptr codec, std::size_t bytes)
    {
        auto* destination = reinterpret_cast<FileDestination*>(codec->dest);
        try {
            destination->file->write({ destination->buffer.data(), bytes });
        } catch (const std::runtime_error&) {
            destination->failure = std::current_exception();
        }
        if (destination->failure) {
            auto* errors = reinterpret_cast<JpegErrors*>(codec->err);
            std::longjmp(errors->jump, 1);
        }
        destination->base.next_output_byte = destination->buffer.data();
        destination->base.free_in_buffer = destination->buffer.size();
    }

    void startBuffer(j_compress_ptr codec)
    {
        auto* destination = reinterpret_cast<FileDestination*>(codec->dest);
        destination->base.next_output_byte = destination->buffer.data();
        destination->base.free_in_buffer = destination->buffer.size();
    }

    boolean emptyBuffer(j_compress_ptr codec)
    {
        writeBuffer(codec, bufferBytes);
        return TRUE;
    }

    void endBuffer(j_compress_ptr codec)
    {
        auto* destination = reinterpret_cast<FileDestination*>(codec->dest);
        writeBuffer(codec, bufferBytes - destination->base.free_in_buffer);
    }

    /// The encoder with everything that it needs until it is destroyed.
    class JpegCompressor
    {
    public:
        explicit JpegCompressor(StagedFile& file)
        {
            m_codec.err = jpeg_std_error(&m_errors.base);
            m_errors.base.error_exit = leaveWithReason;
            m_errors.base.emit_message = ignoreMessage;
            m_destination.base.init_destination = startBuffer;
            m_destination.base.empty_output_buffer = emptyBuffer;
            m_destination.base.term_destination = endBuffer;
            m_destination.file = &file;
            confined([this] { jpeg_create_compress(&m_codec); });
            m_codec.dest = &m_destination.base;
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
            if (setjmp(m_errors.jump) == 0) {
                steps();
                return;
            }
            if (m_destination.failure)
                std::rethrow_exception(m_destination.failure);
            throw std::runtime_error(m_errors.reason.data());
        }

        jpeg_compress_struct& codec() { return m_codec; }

    private:
        jpeg_compress_struct m_codec = {};
        JpegErrors m_errors = {};
        FileDestination m_destination = {};
    };

    void writeProfile(jpeg_compress_struct& codec, const QByteArray& profile)
    {
        if (!profile.isEmpty())
            jpeg_write_icc_profile(&codec, reinterpret_cast<const JOCTET*>(profile.constData()),
                                   static_cast<unsigned>(profile.size()));
    }

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
        const JfifDensity density = jfifDensity(page.resolution);
        codec.density_unit = density.unit;
        codec.X_density = density.x;
        codec.Y_density = density.y;
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
    auto compressor = std::make_unique<JpegCompressor>(file);
    jpeg_compress_struct& codec = compressor->codec();
    const PixelLayout& layout = rows.layout();
    compressor->confined([&codec, &layout, &page, quality] {
        configure(codec, layout, page, quality);
        jpeg_start_compress(&codec, TRUE);
        writeProfile(codec, page.iccProfile);
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
