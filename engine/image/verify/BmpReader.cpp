#include "engine/image/pixels/ByteOrder.h"
#include "engine/image/verify/ImageReaders.h"

#include <algorithm>
#include <stdexcept>

namespace pagestack {

namespace {

    constexpr std::size_t headerBytes = 54;
    constexpr std::uint64_t blockBytes = std::uint64_t { 256 } * 1024;

    struct BmpHeader
    {
        std::uint64_t pixelsAt;
        std::uint64_t widthPx;
        std::uint64_t heightPx;
        std::uint64_t bitsPerPixel;
        std::uint64_t colors;

        std::uint64_t rowBytes() const { return (widthPx * bitsPerPixel + 31) / 32 * 4; }
    };

    BmpHeader readHeader(ByteFile& file)
    {
        std::vector<std::uint8_t> bytes(headerBytes);
        file.readAt(0, bytes);
        const auto field = [&](std::size_t at, std::size_t size) {
            return numberIn(std::span(bytes).subspan(at, size), false);
        };
        const BmpHeader header { field(10, 4), field(18, 4), field(22, 4), field(28, 2),
                                 field(46, 4) };
        const bool isKnown = bytes[0] == 'B' && bytes[1] == 'M' && field(14, 4) == 40
            && field(30, 4) == 0
            && (header.bitsPerPixel == 24 || header.bitsPerPixel == 8 || header.bitsPerPixel == 1);
        const std::uint64_t colors
            = header.bitsPerPixel == 24 ? 0 : std::uint64_t { 1 } << header.bitsPerPixel;
        if (!isKnown || header.colors != colors || header.pixelsAt != headerBytes + 4 * colors
            || header.widthPx == 0 || header.widthPx > longestRowPx || header.heightPx > INT32_MAX)
            throw std::runtime_error("its header is damaged");
        const std::uint64_t size = header.pixelsAt + header.rowBytes() * header.heightPx;
        if (field(2, 4) != file.size() || size != file.size())
            throw std::runtime_error("it is not as long as its rows");
        return header;
    }

    PixelLayout layoutOf(ByteFile& file, const BmpHeader& header)
    {
        PixelLayout layout;
        layout.model = header.colors == 0 ? ColorModel::Rgb : ColorModel::Palette;
        layout.bitsPerSample = header.colors == 0 ? 8 : static_cast<int>(header.bitsPerPixel);
        std::vector<std::uint8_t> table(4 * header.colors);
        file.readAt(headerBytes, table);
        for (std::size_t at = 0; at < table.size(); at += 4)
            layout.palette.push_back({ table[at + 2], table[at + 1], table[at] });
        return layout;
    }

    /// The file's last rows are the upper ones.
    class BmpRows : public RowSource
    {
    public:
        BmpRows(ByteFile& file, const BmpHeader& header)
            : RowSource(static_cast<int>(header.widthPx), static_cast<int>(header.heightPx),
                        layoutOf(file, header))
            , m_file(file)
            , m_header(header)
            , m_left(header.heightPx)
        {
        }

        Band nextBand() override
        {
            const std::uint64_t bytes = m_header.rowBytes();
            const std::uint64_t rows
                = std::min(std::max<std::uint64_t>(1, blockBytes / bytes), m_left);
            if (rows == 0)
                return {};
            m_left -= rows;
            m_block.resize(rows * bytes);
            m_file.readAt(m_header.pixelsAt + m_left * bytes, m_block);
            for (std::uint64_t i = 0; m_header.colors == 0 && i < rows; ++i) {
                std::uint8_t* const row = m_block.data() + i * bytes;
                for (std::uint64_t x = 0; x < m_header.widthPx; ++x)
                    std::swap(row[3 * x], row[3 * x + 2]);
            }
            return { m_block.data() + (rows - 1) * bytes, static_cast<int>(rows),
                     -static_cast<qsizetype>(bytes) };
        }

    private:
        ByteFile& m_file;
        const BmpHeader m_header;
        std::uint64_t m_left; ///< rows
        std::vector<std::uint8_t> m_block;
    };

} // namespace

ImageProof readBmp(ByteFile& file) { return readProof(*openBmp(file).rows, KeptPixels::Samples); }

OpenImage openBmp(ByteFile& file) { return { std::make_unique<BmpRows>(file, readHeader(file)) }; }

} // namespace pagestack
