#include "engine/image/decode/JpegStream.h"

#include "engine/image/decode/JpegCodes.h"
#include "engine/image/tiff/OpenTiffFile.h"

#include <cstdio>
#include <jerror.h>
#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <csetjmp>
#include <cstring>
#include <type_traits>
#include <vector>

namespace pagestack {

namespace {

    bool isSame(const JHUFF_TBL* one, const JHUFF_TBL& other)
    {
        return one != nullptr && std::memcmp(one->bits, other.bits, sizeof one->bits) == 0
            && std::memcmp(one->huffval, other.huffval, sizeof one->huffval) == 0;
    }

    bool isEmpty(const JHUFF_TBL& table)
    {
        return std::all_of(table.bits + 1, table.bits + 17, [](UINT8 count) { return count == 0; });
    }

    /// Codes by their slot: those for DC, then those for AC.
    using HuffmanTables = std::array<JHUFF_TBL, std::size_t { 2 } * NUM_HUFF_TBLS>;

} // namespace

/// The decoder with everything that it needs until it is destroyed. It is made to believe that it
/// has room for the blocks of a whole image, while each row of MCUs goes where it is wanted.
class JpegStream::Decoder
{
public:
    Decoder(const OpenTiffFile& file, std::span<const std::uint8_t> tables, std::size_t bufferBytes)
        : m_file(file)
        , m_tables(tables)
        , m_buffer(bufferBytes)
    {
        m_codec.client_data = this;
        m_codec.err = jpeg_std_error(&m_errors);
        m_errors.error_exit = [](j_common_ptr codec) { of(codec).leave(); };
        m_errors.emit_message = [](j_common_ptr codec, int level) {
            if (level < 0)
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
        m_codec.mem->request_virt_barray
            = [](j_common_ptr codec, int, boolean, JDIMENSION, JDIMENSION, JDIMENSION) {
                  return of(codec).nextArray();
              };
        m_codec.mem->access_virt_barray
            = [](j_common_ptr codec, jvirt_barray_ptr array, JDIMENSION, JDIMENSION, boolean) {
                  return of(codec).rowsOf(array);
              };
    }
    ~Decoder() { jpeg_destroy_decompress(&m_codec); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    JpegFrame begin(const FileRange& range)
    {
        readHeader(range);
        m_frame = described();
        m_rowsRead = 0;
        m_arrays = 0;
        confined([this] {
            m_codec.buffered_image = TRUE; // rows of MCUs are read one at a time
            m_codec.raw_data_out = TRUE; // nothing is got ready that makes pixels
            jpeg_start_decompress(&m_codec);
        });
        return m_frame;
    }

    JpegFrame beginCodes(const FileRange& range)
    {
        readHeader(range);
        const bool isWhole
            = m_codec.Ss == 0 && m_codec.Se == DCTSIZE2 - 1 && m_codec.Ah == 0 && m_codec.Al == 0;
        if (!isWhole || m_codec.restart_interval != 0 || !isInOrder())
            throw UnfitCodes("a JPEG stream with codes of an unusual kind");
        return described();
    }

    std::span<const std::uint8_t> takeBytes(std::size_t most)
    {
        if (m_source.bytes_in_buffer == 0 && !readsOn())
            return {};
        const std::span bytes(m_source.next_input_byte, std::min(most, m_source.bytes_in_buffer));
        m_source.next_input_byte += bytes.size();
        m_source.bytes_in_buffer -= bytes.size();
        return bytes;
    }

    void next(JpegUnitRow& to, int firstUnit)
    {
        for (std::size_t c = 0; c < m_frame.components.size(); ++c) {
            const JpegComponent& component = m_frame.components[c];
            for (int i = 0; i < component.vertical; ++i)
                m_rows.at(c).at(static_cast<std::size_t>(i)) = reinterpret_cast<JBLOCKROW>(
                    to.row(c, i) + std::ptrdiff_t { firstUnit } * component.horizontal);
        }
        const int result = consume();
        if (result != JPEG_ROW_COMPLETED && result != JPEG_SCAN_COMPLETED)
            throw UnfitBlocks("the JPEG data end early");
        ++m_rowsRead;
    }

    void finish()
    {
        if (m_rowsRead < m_frame.unitsDown()) {
            JpegUnitRow rest(m_frame, m_frame.unitsAcross());
            while (m_rowsRead < m_frame.unitsDown())
                next(rest, 0);
        }
        if (consume() != JPEG_REACHED_EOI)
            throw UnfitBlocks("the JPEG data go on behind the image");
    }

private:
    template <typename Codec>
    static Decoder& of(Codec* codec)
    {
        return *static_cast<Decoder*>(codec->client_data);
    }

    /// Runs `steps`, the only frame that the decoder may jump out of: it holds references only and
    /// creates nothing that needs destroying.
    template <typename Steps>
    void confined(Steps steps)
    {
        static_assert(std::is_trivially_destructible_v<Steps>);
        if (setjmp(m_jump) != 0)
            throw UnfitBlocks(m_reason.data());
        steps();
    }

    [[noreturn]] void leave()
    {
        m_errors.format_message(reinterpret_cast<j_common_ptr>(&m_codec), m_reason.data());
        std::longjmp(m_jump, 1);
    }

    int consume()
    {
        int result = JPEG_SUSPENDED;
        confined([this, &result] { result = jpeg_consume_input(&m_codec); });
        return result;
    }

    /// Begins the stream in `range` with its first scan.
    void readHeader(const FileRange& range)
    {
        if (!m_hasTables)
            loadTables();
        confined([this] { jpeg_abort_decompress(&m_codec); });
        restoreCodes();
        m_at = range.begin;
        m_end = range.end;
        m_source.bytes_in_buffer = 0;
        confined([this] { jpeg_read_header(&m_codec, TRUE); });
        checkKind();
    }

    bool isInOrder() const
    {
        for (int c = 0; c < m_codec.comps_in_scan; ++c)
            if (m_codec.cur_comp_info[c]->component_index != c)
                return false;
        return true;
    }

    boolean fill()
    {
        if (!readsOn()) {
            m_errors.msg_code = JERR_INPUT_EOF;
            leave();
        }
        return TRUE;
    }

    /// False at the end of the range, and where reading fails: who decodes the page meets it again.
    bool readsOn()
    {
        const auto bytes
            = static_cast<std::size_t>(std::min<std::uint64_t>(m_buffer.size(), m_end - m_at));
        if (bytes == 0)
            return false;
        try {
            m_file.readAt(m_at, { m_buffer.data(), bytes });
        } catch (const std::runtime_error&) {
            return false;
        }
        m_at += bytes;
        m_source.next_input_byte = m_buffer.data();
        m_source.bytes_in_buffer = bytes;
        return true;
    }

    JHUFF_TBL*& slot(std::size_t index)
    {
        return index < NUM_HUFF_TBLS ? m_codec.dc_huff_tbl_ptrs[index]
                                     : m_codec.ac_huff_tbl_ptrs[index - NUM_HUFF_TBLS];
    }

    void loadTables()
    {
        m_hasTables = true;
        if (m_tables.empty())
            return;
        m_source.next_input_byte = m_tables.data();
        m_source.bytes_in_buffer = m_tables.size();
        int found = JPEG_HEADER_OK;
        confined([this, &found] { found = jpeg_read_header(&m_codec, FALSE); });
        if (found != JPEG_HEADER_TABLES_ONLY)
            throw UnfitBlocks("the JPEG tables are an image");
        for (std::size_t i = 0; i < m_givenCodes.size(); ++i)
            if (slot(i) != nullptr)
                m_givenCodes.at(i) = *slot(i);
    }

    /// Codes of another stream must not serve for one that lacks its own.
    void restoreCodes()
    {
        for (std::size_t i = 0; i < m_givenCodes.size(); ++i)
            if (slot(i) != nullptr)
                *slot(i) = m_givenCodes.at(i);
    }

    /// Other tables than those of all streams may be meant for more streams than this one.
    void checkKind()
    {
        for (std::size_t i = 0; i < m_givenCodes.size(); ++i)
            if (!isEmpty(m_givenCodes.at(i)) && !isSame(slot(i), m_givenCodes.at(i)))
                throw UnfitBlocks("a JPEG stream with tables of its own");
        const int components = m_codec.num_components;
        if (m_codec.data_precision != BITS_IN_JSAMPLE || jpeg_has_multiple_scans(&m_codec) != 0
            || (components != 1 && components != static_cast<int>(mostJpegComponents)))
            throw UnfitBlocks("a JPEG stream of an unusual kind");
    }

    JpegFrame described() const
    {
        JpegFrame frame;
        frame.widthPx = static_cast<int>(m_codec.image_width);
        frame.heightPx = static_cast<int>(m_codec.image_height);
        frame.colors = m_codec.num_components == 1 ? JpegColors::Gray : JpegColors::YCbCr;
        for (int c = 0; c < m_codec.num_components; ++c) {
            const jpeg_component_info& from = m_codec.comp_info[c];
            JpegComponent component;
            component.horizontal = from.h_samp_factor;
            component.vertical = from.v_samp_factor;
            const JQUANT_TBL* table = from.quant_tbl_no < NUM_QUANT_TBLS
                ? m_codec.quant_tbl_ptrs[from.quant_tbl_no]
                : nullptr;
            // Larger ones would not be baseline, and none is 0.
            if (table == nullptr || std::ranges::any_of(table->quantval, [](UINT16 step) {
                    return step == 0 || step > 255;
                }))
                throw UnfitBlocks("a JPEG stream with unusual quantization");
            std::ranges::copy(table->quantval, component.quantization.begin());
            if (m_codec.arith_code == 0 && from.dc_tbl_no < NUM_HUFF_TBLS
                && from.ac_tbl_no < NUM_HUFF_TBLS) {
                const JHUFF_TBL* dc = m_codec.dc_huff_tbl_ptrs[from.dc_tbl_no];
                const JHUFF_TBL* ac = m_codec.ac_huff_tbl_ptrs[from.ac_tbl_no];
                if (dc != nullptr && ac != nullptr)
                    component.standardCodes
                        = JpegCodes::numberOf({ dc->bits, dc->huffval }, { ac->bits, ac->huffval });
            }
            frame.components.push_back(component);
        }
        return frame;
    }

    /// Stands for the blocks of a component, in order, towards the decoder.
    jvirt_barray_ptr nextArray()
    {
        if (m_arrays == m_rows.size()) {
            m_errors.msg_code = JERR_COMPONENT_COUNT;
            leave();
        }
        return reinterpret_cast<jvirt_barray_ptr>(&m_rows.at(m_arrays++));
    }

    JBLOCKARRAY rowsOf(jvirt_barray_ptr array)
    {
        return reinterpret_cast<std::array<JBLOCKROW, MAX_SAMP_FACTOR>*>(array)->data();
    }

    const OpenTiffFile& m_file;
    const std::span<const std::uint8_t> m_tables;
    bool m_hasTables = false; ///< they were looked at
    HuffmanTables m_givenCodes = {};
    std::uint64_t m_at = 0; ///< of the file, behind what is in the buffer
    std::uint64_t m_end = 0;
    std::vector<std::uint8_t> m_buffer;
    jpeg_decompress_struct m_codec = {};
    jpeg_error_mgr m_errors = {};
    jpeg_source_mgr m_source = {};
    std::jmp_buf m_jump = {};
    std::array<char, JMSG_LENGTH_MAX> m_reason = {};
    JpegFrame m_frame;
    int m_rowsRead = 0; ///< of MCUs
    std::size_t m_arrays = 0; ///< that the decoder has asked for
    std::array<std::array<JBLOCKROW, MAX_SAMP_FACTOR>, mostJpegComponents> m_rows = {};
};

JpegStream::JpegStream(const OpenTiffFile& file, std::span<const std::uint8_t> tables,
                       std::size_t bufferBytes)
    : m_decoder(std::make_unique<Decoder>(file, tables, bufferBytes))
{
}

JpegStream::~JpegStream() = default;

JpegFrame JpegStream::begin(const FileRange& range) { return m_decoder->begin(range); }

JpegFrame JpegStream::beginCodes(const FileRange& range) { return m_decoder->beginCodes(range); }

std::span<const std::uint8_t> JpegStream::takeBytes(std::size_t most)
{
    return m_decoder->takeBytes(most);
}

void JpegStream::next(JpegUnitRow& to, int firstUnit) { m_decoder->next(to, firstUnit); }

void JpegStream::finish() { m_decoder->finish(); }

} // namespace pagestack
