#include "engine/image/verify/ImageReaders.h"

#include <cstdio>
#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace pagestack {

namespace {

    /// Takes what libjpeg makes of a file for the blocks of a whole image: a row of MCUs at a time,
    /// which is complete when the next one is asked for.
    class BlockTaker
    {
    public:
        explicit BlockTaker(const JpegFrame& frame)
            : m_frame(frame)
            , m_maker(frame)
            , m_row(frame, frame.unitsAcross())
        {
            for (const JpegComponent& component : frame.components)
                m_planes.push_back(
                    { m_planes.size(),
                      std::vector<JBLOCKROW>(static_cast<unsigned>(component.vertical)) });
        }

        jvirt_barray_ptr nextArray()
        {
            return reinterpret_cast<jvirt_barray_ptr>(&m_planes.at(m_arrays++));
        }

        JBLOCKARRAY rows(jvirt_barray_ptr array, JDIMENSION first)
        {
            Plane& plane = *reinterpret_cast<Plane*>(array);
            if (const std::size_t row = first / plane.rows.size(); row != m_units) {
                take();
                m_units = row;
            }
            for (std::size_t i = 0; i < plane.rows.size(); ++i)
                plane.rows[i]
                    = reinterpret_cast<JBLOCKROW>(m_row.row(plane.component, static_cast<int>(i)));
            return plane.rows.data();
        }

        void take()
        {
            m_maker.add(m_row);
            m_row.clear();
        }

        ImageProof proof() const { return m_maker.proof(); }

    private:
        struct Plane
        {
            std::size_t component;
            std::vector<JBLOCKROW> rows;
        };
        const JpegFrame m_frame;
        BlockProofMaker m_maker;
        JpegUnitRow m_row;
        std::size_t m_units = 0; ///< rows of MCUs that were taken
        std::vector<Plane> m_planes;
        std::size_t m_arrays = 0;
    };

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

        void giveBlocksTo(BlockTaker& taker)
        {
            m_taker = &taker;
            m_codec.mem->request_virt_barray
                = [](j_common_ptr codec, int, boolean, JDIMENSION, JDIMENSION, JDIMENSION) {
                      return of(codec).m_taker->nextArray();
                  };
            m_codec.mem->access_virt_barray
                = [](j_common_ptr codec, jvirt_barray_ptr array, JDIMENSION first, JDIMENSION,
                     boolean) { return of(codec).m_taker->rows(array, first); };
        }

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
        BlockTaker* m_taker = nullptr;
        jpeg_decompress_struct m_codec = {};
        jpeg_error_mgr m_errors = {};
        jpeg_source_mgr m_source = {};
        std::jmp_buf m_jump = {};
        std::array<char, JMSG_LENGTH_MAX> m_reason = {};
        std::exception_ptr m_failure; ///< of the file; the decoder is left by a jump
        std::array<std::uint8_t, 65536> m_buffer {};
    };

    JpegFrame frameOf(const jpeg_decompress_struct& codec)
    {
        JpegFrame frame;
        frame.widthPx = static_cast<int>(codec.image_width);
        frame.heightPx = static_cast<int>(codec.image_height);
        frame.colors = codec.jpeg_color_space == JCS_GRAYSCALE ? JpegColors::Gray
            : codec.jpeg_color_space == JCS_RGB                ? JpegColors::Rgb
                                                               : JpegColors::YCbCr;
        for (int c = 0; c < codec.num_components; ++c) {
            const jpeg_component_info& from = codec.comp_info[c];
            JpegComponent component;
            component.horizontal = from.h_samp_factor;
            component.vertical = from.v_samp_factor;
            const JQUANT_TBL* table
                = codec.quant_tbl_ptrs[std::clamp(from.quant_tbl_no, 0, NUM_QUANT_TBLS - 1)];
            if (table == nullptr)
                throw std::runtime_error("its samples are of another kind");
            std::ranges::copy(table->quantval, component.quantization.begin());
            frame.components.push_back(component);
        }
        return frame;
    }

    /// Starts to decode at once.
    PixelLayout startedLayout(JpegDecoder& decoder, bool isProof)
    {
        jpeg_decompress_struct& codec = decoder.codec();
        decoder.confined([&codec, isProof] {
            if (!isProof)
                jpeg_save_markers(&codec, JPEG_APP0 + 2, 0xffff);
            jpeg_read_header(&codec, TRUE);
            if (isProof) { // only whether it can be decoded matters, not how well
                codec.out_color_space = codec.jpeg_color_space;
                codec.do_fancy_upsampling = FALSE;
                codec.dct_method = JDCT_IFAST;
            }
            jpeg_start_decompress(&codec);
        });
        PixelLayout layout;
        layout.model = codec.output_components == 1 ? ColorModel::Gray : ColorModel::Rgb;
        if (codec.output_components != layout.channels())
            throw std::runtime_error("its samples are of another kind");
        return layout;
    }

    /// A row each band.
    class JpegRows : public RowSource
    {
    public:
        JpegRows(std::unique_ptr<JpegDecoder> decoder, const PixelLayout& layout)
            : RowSource(static_cast<int>(decoder->codec().output_width),
                        static_cast<int>(decoder->codec().output_height), layout)
            , m_decoder(std::move(decoder))
            , m_row(static_cast<std::size_t>(rowBytes()))
        {
        }

        Band nextBand() override
        {
            jpeg_decompress_struct& codec = m_decoder->codec();
            if (codec.output_scanline == codec.output_height) {
                m_decoder->confined([&codec] { jpeg_finish_decompress(&codec); });
                m_decoder->checkEnd();
                return {};
            }
            JSAMPROW to = m_row.data();
            m_decoder->confined([&codec, &to] { jpeg_read_scanlines(&codec, &to, 1); });
            return { m_row.data(), 1, rowBytes() };
        }

    private:
        std::unique_ptr<JpegDecoder> m_decoder;
        std::vector<std::uint8_t> m_row;
    };

    struct FreeMemory
    {
        void operator()(JOCTET* bytes) const noexcept { std::free(bytes); }
    };

    QByteArray profileOf(JpegDecoder& decoder)
    {
        jpeg_decompress_struct& codec = decoder.codec();
        JOCTET* bytes = nullptr;
        unsigned count = 0;
        decoder.confined([&] { jpeg_read_icc_profile(&codec, &bytes, &count); });
        const std::unique_ptr<JOCTET, FreeMemory> owner(bytes);
        return { reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(count) };
    }

} // namespace

ImageProof readJpegBlocks(ByteFile& file)
{
    const auto decoder = std::make_unique<JpegDecoder>(file);
    jpeg_decompress_struct& codec = decoder->codec();
    decoder->confined([&codec] { jpeg_read_header(&codec, TRUE); });
    if (jpeg_has_multiple_scans(&codec) != 0)
        throw std::runtime_error("its samples are of another kind");
    BlockTaker taker(frameOf(codec));
    decoder->giveBlocksTo(taker);
    decoder->confined([&codec] { jpeg_read_coefficients(&codec); });
    taker.take();
    decoder->confined([&codec] { jpeg_finish_decompress(&codec); });
    decoder->checkEnd();
    return taker.proof();
}

ImageProof readJpeg(ByteFile& file)
{
    auto decoder = std::make_unique<JpegDecoder>(file);
    const PixelLayout layout = startedLayout(*decoder, true);
    return readProof(*std::make_unique<JpegRows>(std::move(decoder), layout), KeptPixels::Size);
}

OpenImage openJpeg(ByteFile& file)
{
    auto decoder = std::make_unique<JpegDecoder>(file);
    const PixelLayout layout = startedLayout(*decoder, false);
    const QByteArray profile = profileOf(*decoder);
    return { std::make_unique<JpegRows>(std::move(decoder), layout), profile };
}

} // namespace pagestack
