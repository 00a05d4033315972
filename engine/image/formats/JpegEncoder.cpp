#include "engine/image/formats/Density.h"
#include "engine/image/formats/Encoders.h"
#include "engine/image/formats/JpegBlocks.h"
#include "engine/image/formats/JpegMetadata.h"
#include "engine/image/metadata/PageMetadata.h"

#include <QtGlobal>

#include <cstdio>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstddef>
#include <exception>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::size_t bufferBytes = std::size_t { 64 } * 1024;

    /// ICC.1, annex B.4: up to 255 numbered segments, and what is left in each.
    constexpr qsizetype largestProfileBytes = 255 * qsizetype { 65519 };

    /// Hands the encoder, which reads arrays of the blocks of a whole image from top to bottom, one
    /// or two times, a row of MCUs at a time: it goes on once it has the rows of all components.
    class BlockFeed
    {
    public:
        explicit BlockFeed(JpegBlocks& blocks)
            : m_blocks(blocks)
            , m_planes(blocks.frame().components.size())
        {
            static_assert(sizeof(JpegBlock) == sizeof(JBLOCK));
            for (std::size_t c = 0; c < m_planes.size(); ++c) {
                m_planes[c].rows.resize(
                    static_cast<unsigned>(blocks.frame().components[c].vertical));
                m_arrays.push_back(reinterpret_cast<jvirt_barray_ptr>(&m_planes[c]));
            }
        }

        jvirt_barray_ptr* arrays() { return m_arrays.data(); }

        JBLOCKARRAY rows(jvirt_barray_ptr array, JDIMENSION first)
        {
            Plane& plane = *reinterpret_cast<Plane*>(array);
            const auto row = static_cast<int>(first / plane.rows.size());
            if (row != m_row)
                go(row);
            return plane.rows.data();
        }

    private:
        struct Plane
        {
            std::vector<JBLOCKROW> rows;
        };

        void go(int row)
        {
            if (row == 0)
                m_blocks.restart();
            m_row = row;
            const JpegUnitRow& unitRow = m_blocks.next();
            for (std::size_t c = 0; c < m_planes.size(); ++c)
                for (std::size_t i = 0; i < m_planes[c].rows.size(); ++i)
                    m_planes[c].rows[i] // libjpeg only reads them
                        = reinterpret_cast<JBLOCKROW>(
                            const_cast<JpegBlock*>(unitRow.row(c, static_cast<int>(i))));
        }

        JpegBlocks& m_blocks;
        int m_row = -1;
        std::vector<Plane> m_planes;
        std::vector<jvirt_barray_ptr> m_arrays; ///< which the encoder takes for libjpeg's own
    };

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
            if (!m_hasHeaders)
                throw std::runtime_error(m_reason.data());
        }

        jpeg_compress_struct& codec() { return m_codec; }

        /// For callbacks of the encoder: runs `steps` and leaves the encoder when they throw.
        template <typename Steps>
        void guarded(Steps steps)
        {
            try {
                steps();
            } catch (const std::runtime_error&) {
                m_failure = std::current_exception();
            }
            if (m_failure)
                std::longjmp(m_jump, 1);
        }

        void takeBlocksFrom(BlockFeed& feed)
        {
            m_feed = &feed;
            m_codec.mem->access_virt_barray = [](j_common_ptr codec, jvirt_barray_ptr array,
                                                 JDIMENSION first, JDIMENSION, boolean) {
                JBLOCKARRAY rows = nullptr;
                of(codec).guarded([&] { rows = of(codec).m_feed->rows(array, first); });
                return rows;
            };
        }

        /// Has the encoder end, with all headers written, where it asks for blocks.
        void endBehindHeaders()
        {
            m_codec.mem->access_virt_barray = [](j_common_ptr codec, jvirt_barray_ptr, JDIMENSION,
                                                 JDIMENSION, boolean) -> JBLOCKARRAY {
                JpegCompressor& self = of(codec);
                self.write(bufferBytes - self.m_destination.free_in_buffer);
                self.m_hasHeaders = true;
                std::longjmp(self.m_jump, 1);
            };
        }

    private:
        template <typename Codec>
        static JpegCompressor& of(Codec* codec)
        {
            return *static_cast<JpegCompressor*>(codec->client_data);
        }

        /// Writes the first `bytes` of the buffer and begins it anew.
        void write(std::size_t bytes)
        {
            guarded([&] { m_file.write({ m_buffer.data(), bytes }); });
            m_destination.next_output_byte = m_buffer.data();
            m_destination.free_in_buffer = m_buffer.size();
        }

        StagedFile& m_file;
        BlockFeed* m_feed = nullptr;
        bool m_hasHeaders = false; ///< and is to write nothing more
        jpeg_compress_struct m_codec = {};
        jpeg_error_mgr m_errors = {};
        jpeg_destination_mgr m_destination = {};
        std::jmp_buf m_jump = {};
        std::array<char, JMSG_LENGTH_MAX> m_reason = {};
        std::exception_ptr m_failure; ///< of the file; the encoder is left by a jump
        std::array<std::uint8_t, bufferBytes> m_buffer {};
    };

    /// All that has nothing to do with quality.
    void describe(jpeg_compress_struct& codec, ColorModel model, const PageProperties& page)
    {
        codec.image_width = static_cast<JDIMENSION>(page.widthPx);
        codec.image_height = static_cast<JDIMENSION>(page.heightPx);
        codec.input_components = model == ColorModel::Gray ? 1 : 3;
        codec.in_color_space = model == ColorModel::Gray ? JCS_GRAYSCALE : JCS_RGB;
        jpeg_set_defaults(&codec);
        const Density density = jfifDensity(page.resolution);
        codec.density_unit = density.unit;
        codec.X_density = static_cast<UINT16>(density.x);
        codec.Y_density = static_cast<UINT16>(density.y);
    }

    void configure(jpeg_compress_struct& codec, const PixelLayout& layout,
                   const PageProperties& page, int quality)
    {
        describe(codec, layout.model, page);
        // The compression factor is quality / 10; the encoder clamps it to what it can do.
        const double factor = quality / 10.0;
        jpeg_set_quality(&codec, static_cast<int>(std::clamp(factor * 100.0, -1000.0, 1000.0)),
                         TRUE);
        if (quality >= 10)
            codec.comp_info[0].h_samp_factor = codec.comp_info[0].v_samp_factor = 1;
        codec.dct_method = JDCT_ISLOW;
        codec.raw_data_in = layout.model == ColorModel::Gray ? TRUE : FALSE;
    }

    void checkProfile(const PageProperties& page)
    {
        if (page.iccProfile.size() > largestProfileBytes)
            throw std::runtime_error("an ICC profile of " + std::to_string(page.iccProfile.size())
                                     + " bytes is too large for JPEG");
    }

    void writeSegments(jpeg_compress_struct& codec, const std::vector<JpegSegment>& segments,
                       const PageProperties& page)
    {
        for (const JpegSegment& segment : segments)
            jpeg_write_marker(&codec, JPEG_APP0 + segment.application,
                              reinterpret_cast<const JOCTET*>(segment.bytes.constData()),
                              static_cast<unsigned>(segment.bytes.size()));
        if (!page.iccProfile.isEmpty())
            jpeg_write_icc_profile(&codec,
                                   reinterpret_cast<const JOCTET*>(page.iccProfile.constData()),
                                   static_cast<unsigned>(page.iccProfile.size()));
    }

    /// Of a file with the blocks of `frame`.
    void configure(jpeg_compress_struct& codec, const JpegFrame& frame, const PageProperties& page)
    {
        describe(codec, frame.model(), page);
        if (frame.colors == JpegColors::Rgb)
            jpeg_set_colorspace(&codec, JCS_RGB);
        std::array<const JpegComponent*, NUM_QUANT_TBLS> tables = {};
        for (std::size_t c = 0; c < frame.components.size(); ++c) {
            const JpegComponent& from = frame.components[c];
            jpeg_component_info& to = codec.comp_info[c];
            to.h_samp_factor = from.horizontal;
            to.v_samp_factor = from.vertical;
            int table = 0;
            while (tables.at(static_cast<std::size_t>(table)) != nullptr
                   && tables.at(static_cast<std::size_t>(table))->quantization != from.quantization)
                ++table;
            tables.at(static_cast<std::size_t>(table)) = &from;
            to.quant_tbl_no = table;
            if (codec.quant_tbl_ptrs[table] == nullptr)
                codec.quant_tbl_ptrs[table]
                    = jpeg_alloc_quant_table(reinterpret_cast<j_common_ptr>(&codec));
            JQUANT_TBL& quantization = *codec.quant_tbl_ptrs[table];
            std::ranges::copy(from.quantization, quantization.quantval);
            quantization.sent_table = FALSE;
            to.dc_tbl_no = to.ac_tbl_no = std::max(from.standardCodes, 0);
            // Other codes fit the data better than the standard ones, and may lack some that are
            // needed now.
            if (from.standardCodes < 0)
                codec.optimize_coding = TRUE;
        }
    }

    /// Gathers gray rows into rows of blocks, which are encoded as they are: the encoder's own way
    /// in copies gray pixels one by one, which is a fifth of its time. Repeats the last pixel and
    /// the last row up to whole blocks, as that way does.
    class GrayBlocks
    {
    public:
        explicit GrayBlocks(std::size_t widthPx)
            : m_widthPx(widthPx)
            , m_stride((widthPx + DCTSIZE - 1) / DCTSIZE * DCTSIZE)
            , m_pixels(m_stride * DCTSIZE)
        {
            for (std::size_t i = 0; i < m_rows.size(); ++i)
                m_rows[i] = m_pixels.data() + i * m_stride;
        }

        /// Takes one row; true when a row of blocks is complete.
        bool take(const std::uint8_t* row)
        {
            std::uint8_t* const to = m_rows[m_taken++];
            std::copy_n(row, m_widthPx, to);
            std::fill(to + m_widthPx, to + m_stride, row[m_widthPx - 1]);
            return m_taken == m_rows.size();
        }

        /// Completes a row of blocks that has begun; false when none has.
        bool complete()
        {
            if (m_taken == 0)
                return false;
            while (m_taken < m_rows.size())
                take(m_rows[m_taken - 1]);
            return true;
        }

        /// Inside of JpegCompressor::confined().
        void write(jpeg_compress_struct& codec)
        {
            JSAMPARRAY rows = m_rows.data();
            jpeg_write_raw_data(&codec, &rows, DCTSIZE);
            m_taken = 0;
        }

    private:
        std::size_t m_widthPx;
        std::size_t m_stride;
        std::vector<std::uint8_t> m_pixels;
        std::array<JSAMPROW, DCTSIZE> m_rows {};
        std::size_t m_taken = 0;
    };

    void writeGray(JpegCompressor& compressor, RowSource& rows, std::size_t widthPx)
    {
        jpeg_compress_struct& codec = compressor.codec();
        GrayBlocks blocks(widthPx);
        JDIMENSION taken = 0;
        const auto write = [&] { compressor.confined([&codec, &blocks] { blocks.write(codec); }); };
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
            for (int i = 0; i < band.rows; ++i, ++taken)
                if (blocks.take(band.row(i)))
                    write();
        if (taken != codec.image_height) // what completes blocks would hide it from the encoder
            throw std::logic_error("rows of the page are missing");
        if (blocks.complete())
            write();
    }

    void writeColor(JpegCompressor& compressor, RowSource& rows)
    {
        jpeg_compress_struct& codec = compressor.codec();
        std::vector<JSAMPROW> lines;
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand()) {
            lines.clear();
            for (int i = 0; i < band.rows; ++i)
                lines.push_back(const_cast<JSAMPROW>(band.row(i))); // libjpeg only reads them
            compressor.confined([&codec, &lines] {
                for (JDIMENSION done = 0; done < lines.size();)
                    done += jpeg_write_scanlines(&codec, lines.data() + done,
                                                 static_cast<JDIMENSION>(lines.size()) - done);
            });
        }
    }

    /// A file with the coefficients of `blocks`, or with its codes.
    void writeBlocks(UprightPage& upright, JpegBlocks& blocks, bool hasCodes,
                     const std::vector<JpegSegment>& segments, StagedFile& file)
    {
        BlockFeed feed(blocks);
        auto compressor = std::make_unique<JpegCompressor>(file);
        if (hasCodes)
            compressor->endBehindHeaders();
        else
            compressor->takeBlocksFrom(feed);
        jpeg_compress_struct& codec = compressor->codec();
        compressor->confined([&] {
            configure(codec, blocks.frame(), upright.properties);
            jpeg_write_coefficients(&codec, feed.arrays());
            writeSegments(codec, segments, upright.properties);
            jpeg_finish_compress(&codec);
        });
        if (hasCodes) {
            blocks.readCodes([&file](std::span<const std::uint8_t> bytes) { file.write(bytes); });
            file.write(std::array<std::uint8_t, 2> { 0xFF, JPEG_EOI });
        } else {
            blocks.finish();
        }
    }

} // namespace

void encodeJpeg(UprightPage& upright, StagedFile& file)
{
    static_assert(jpegMostSidePx <= JPEG_MAX_DIMENSION);
    RowSource& rows = *upright.rows;
    const PageProperties& page = upright.properties;
    const int quality = upright.jpegQuality;
    checkProfile(page);
    std::vector<JpegSegment> segments;
    if (upright.metadata)
        segments = jpegSegments(*upright.metadata, page, upright.leftOut);
    auto compressor = std::make_unique<JpegCompressor>(file);
    jpeg_compress_struct& codec = compressor->codec();
    const PixelLayout& layout = rows.layout();
    compressor->confined([&codec, &layout, &page, &segments, quality] {
        configure(codec, layout, page, quality);
        jpeg_start_compress(&codec, TRUE);
        writeSegments(codec, segments, page);
    });
    if (codec.raw_data_in)
        writeGray(*compressor, rows, codec.image_width);
    else
        writeColor(*compressor, rows);
    compressor->confined([&codec] { jpeg_finish_compress(&codec); });
}

void encodeJpegBlocks(UprightPage& upright, JpegBlocks& blocks, StagedFile& file)
{
    const PageProperties& page = upright.properties;
    const JpegFrame& frame = blocks.frame();
    checkProfile(page);
    const bool hasJfifHeader = frame.colors != JpegColors::Rgb;
    std::vector<JpegSegment> segments;
    if (upright.metadata || !hasJfifHeader)
        segments = jpegSegments(upright.metadata ? *upright.metadata : PageMetadata {}, page,
                                upright.leftOut, hasJfifHeader);
    try {
        writeBlocks(upright, blocks, blocks.hasCodes(), segments, file);
    } catch (const UnfitCodes&) {
        file.resize(0);
        writeBlocks(upright, blocks, false, segments, file);
    }
}

} // namespace pagestack
