#include "engine/image/decode/JpegCodes.h"

#include <cstdio>
#include <jpeglib.h>

#include <algorithm>

namespace pagestack {

namespace {

    constexpr int longestCode = 16;

    bool isSame(const JpegHuffmanTable& one, const JpegHuffmanTable& other)
    {
        return std::ranges::equal(one.counts, other.counts)
            && std::ranges::equal(one.values, other.values);
    }

    /// Has libjpeg's tables for encoders, which are the standard ones.
    class StandardTables
    {
    public:
        StandardTables()
        {
            m_codec.err = jpeg_std_error(&m_errors);
            jpeg_create_compress(&m_codec);
            m_codec.in_color_space = JCS_RGB;
            m_codec.input_components = 3;
            jpeg_set_defaults(&m_codec);
        }
        ~StandardTables() { jpeg_destroy_compress(&m_codec); }
        StandardTables(const StandardTables&) = delete;
        StandardTables& operator=(const StandardTables&) = delete;

        JpegHuffmanTable dc(int number) const { return table(m_codec.dc_huff_tbl_ptrs[number]); }
        JpegHuffmanTable ac(int number) const { return table(m_codec.ac_huff_tbl_ptrs[number]); }

    private:
        static JpegHuffmanTable table(const JHUFF_TBL* from)
        {
            return { from->bits, from->huffval };
        }

        jpeg_error_mgr m_errors = {};
        jpeg_compress_struct m_codec = {};
    };

    const StandardTables& tables()
    {
        static const StandardTables tables;
        return tables;
    }

} // namespace

const JpegCodes& JpegCodes::standard(int number)
{
    static const std::array<JpegCodes, 2> codes { JpegCodes(tables().dc(0), tables().ac(0)),
                                                  JpegCodes(tables().dc(1), tables().ac(1)) };
    return codes.at(static_cast<std::size_t>(number));
}

int JpegCodes::numberOf(const JpegHuffmanTable& dc, const JpegHuffmanTable& ac)
{
    for (int number = 0; number < 2; ++number)
        if (isSame(dc, tables().dc(number)) && isSame(ac, tables().ac(number)))
            return number;
    return -1;
}

JpegCodes::JpegCodes(const JpegHuffmanTable& dc, const JpegHuffmanTable& ac)
{
    const std::vector<Symbol> differences = symbolsOf(dc);
    for (const Symbol& symbol : differences)
        m_differences.at(static_cast<std::size_t>(symbol.value)) = symbol.code;
    const std::vector<Symbol> coefficients = symbolsOf(ac);
    for (const Symbol& symbol : coefficients)
        if (symbol.code.length > windowBits)
            m_longCodes.push_back(symbol);
    for (unsigned window = 0; window < windows; ++window) {
        if (const Symbol* symbol = find(differences, window, windowBits))
            m_dc[window] = { static_cast<std::uint8_t>(symbol->code.length),
                             static_cast<std::uint8_t>(symbol->value) };
        Steps all;
        while (all.bits < windowBits && !all.isEnd) {
            const int left = windowBits - all.bits;
            const Symbol* symbol = find(coefficients, window & ((1U << left) - 1), left);
            if (symbol == nullptr)
                break;
            const Steps step = stepOf(*symbol);
            if (all.bits == 0)
                m_step[window] = step;
            all.bits = static_cast<std::uint8_t>(all.bits + step.bits);
            all.coefficients = static_cast<std::uint8_t>(all.coefficients + step.coefficients);
            all.isEnd = step.isEnd;
        }
        m_steps[window] = all;
    }
}

JpegCodes::Steps JpegCodes::longStep(unsigned bits) const
{
    const Symbol* symbol = find(m_longCodes, bits, longestCode);
    return symbol == nullptr ? Steps {} : stepOf(*symbol);
}

std::vector<JpegCodes::Symbol> JpegCodes::symbolsOf(const JpegHuffmanTable& table)
{
    std::vector<Symbol> symbols;
    unsigned code = 0;
    for (int length = 1; length <= longestCode; ++length, code *= 2)
        for (int i = 0; i < table.counts[static_cast<std::size_t>(length)]; ++i)
            symbols.push_back({ { code++, length }, table.values[symbols.size()] });
    return symbols;
}

const JpegCodes::Symbol* JpegCodes::find(const std::vector<Symbol>& symbols, unsigned bits,
                                         int count)
{
    const auto found = std::ranges::find_if(symbols, [bits, count](const Symbol& symbol) {
        return symbol.code.length <= count
            && bits >> (count - symbol.code.length) == symbol.code.bits;
    });
    return found == symbols.end() ? nullptr : &*found;
}

JpegCodes::Steps JpegCodes::stepOf(const Symbol& symbol)
{
    constexpr int sizeBits = 4;
    const int size = symbol.value % (1 << sizeBits);
    const int zeros = symbol.value >> sizeBits;
    Steps step;
    step.bits = static_cast<std::uint8_t>(symbol.code.length + size);
    step.isEnd = symbol.value == 0;
    step.coefficients = static_cast<std::uint8_t>(step.isEnd ? 0 : zeros + 1);
    return step;
}

} // namespace pagestack
