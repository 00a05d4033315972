#include "engine/image/pixels/UprightRows.h"

#include "engine/files/ByteSpool.h"
#include "engine/image/pixels/RowByRow.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::uint64_t mostBytesInMemory = std::uint64_t { 16 } * 1024 * 1024;

    /// What a block of stored rows and a band of upright rows aim at.
    constexpr qsizetype wantedBlockBytes = qsizetype { 4 } * 1024 * 1024;
    constexpr qsizetype wantedBandBytes = qsizetype { 1024 } * 1024;

    /// So many rows stay in the cache while they are transposed.
    constexpr int cachedRows = 64;

    // What TIFF 6.0 says of the first stored row and column. Stored rows are columns from 5 on.
    bool swapsSides(int orientation) { return orientation >= 5; }
    /// The first output row was stored last, as a row or a column.
    bool runsFromBottom(int orientation)
    {
        return orientation == 3 || orientation == 4 || orientation >= 7;
    }
    /// The first output column was.
    bool runsFromRight(int orientation) { return (orientation & 2) != 0; }

    int rowsOf(qsizetype bytes, qsizetype rowBytes, int most)
    {
        return static_cast<int>(std::clamp<qsizetype>(bytes / rowBytes, 1, std::max(1, most)));
    }

    /// Transposes samples of `bits` bits, which stay packed, a group that fills a byte in each
    /// direction at a time.
    template <int bits>
    void transposePacked(const std::uint8_t* from, qsizetype columns, qsizetype rows,
                         std::uint8_t* to, qsizetype toStride)
    {
        constexpr int perByte = 8 / bits;
        constexpr unsigned mask = (1U << bits) - 1;
        const qsizetype stride = (columns + perByte - 1) / perByte;
        for (qsizetype x = 0; x < columns; x += perByte)
            for (qsizetype y = 0; y < rows; y += perByte) {
                std::array<unsigned, perByte> turned = {};
                const qsizetype down = std::min<qsizetype>(perByte, rows - y);
                for (qsizetype i = 0; i < down; ++i) {
                    const unsigned samples = from[(y + i) * stride + x / perByte];
                    for (std::size_t k = 0; k < perByte; ++k)
                        turned[k] |= (samples >> (8 - bits * (k + 1)) & mask)
                            << (8 - bits * (i + 1));
                }
                const qsizetype across = std::min<qsizetype>(perByte, columns - x);
                for (qsizetype k = 0; k < across; ++k)
                    to[(x + k) * toStride + y / perByte]
                        = static_cast<std::uint8_t>(turned[static_cast<std::size_t>(k)]);
            }
    }

    /// How pixels are moved: whole bytes each, or samples of 1, 2 or 4 bits that stay packed.
    class PixelMover
    {
    public:
        explicit PixelMover(const PixelLayout& layout)
            : m_bits(layout.channels() * layout.bitsPerSample)
            , m_perByte(std::max(1, 8 / m_bits))
        {
            for (unsigned byte = 0; m_bits < 8 && byte < m_mirrored.size(); ++byte) {
                unsigned mirrored = 0;
                for (int i = 0; i < m_perByte; ++i)
                    mirrored = mirrored << m_bits | (byte >> (m_bits * i) & ((1U << m_bits) - 1));
                m_mirrored[byte] = static_cast<std::uint8_t>(mirrored);
            }
        }

        /// Of so many pixels in a row.
        qsizetype bytes(qsizetype pixels) const { return (pixels * m_bits + 7) / 8; }
        int pixelsPerByte() const { return m_perByte; }

        void mirror(const std::uint8_t* row, qsizetype pixels, std::uint8_t* to) const
        {
            const qsizetype rowBytes = bytes(pixels);
            if (m_bits >= 8) {
                const qsizetype unit = m_bits / 8;
                for (qsizetype from = rowBytes - unit; from >= 0; from -= unit, to += unit)
                    std::memcpy(to, row + from, static_cast<std::size_t>(unit));
                return;
            }
            // What fills up the last byte would come first.
            const auto fill = static_cast<unsigned>(rowBytes * 8 - pixels * m_bits);
            unsigned bits = m_mirrored[row[rowBytes - 1]];
            for (qsizetype from = rowBytes - 2; from >= 0; --from) {
                bits = bits << 8U | m_mirrored[row[from]];
                *to++ = static_cast<std::uint8_t>(bits >> (8 - fill));
            }
            *to = static_cast<std::uint8_t>(bits << fill);
        }

        /// Makes of `rows` rows of `columns` pixels as many rows as there are columns.
        void transpose(const std::uint8_t* from, qsizetype columns, qsizetype rows,
                       std::uint8_t* to) const
        {
            const auto part = m_bits == 1 ? transposePacked<1>
                : m_bits == 2             ? transposePacked<2>
                : m_bits == 4             ? transposePacked<4>
                                          : nullptr;
            const qsizetype toStride = bytes(rows);
            for (qsizetype done = 0; done < rows; done += cachedRows) {
                const qsizetype count = std::min<qsizetype>(cachedRows, rows - done);
                if (part != nullptr)
                    part(from, columns, count, to, toStride);
                else
                    transposeUnits(from, columns, count, to, toStride);
                from += count * bytes(columns);
                to += bytes(count);
            }
        }

    private:
        void transposeUnits(const std::uint8_t* from, qsizetype columns, qsizetype rows,
                            std::uint8_t* to, qsizetype toStride) const
        {
            const qsizetype unit = m_bits / 8;
            for (qsizetype x = 0; x < columns; ++x)
                for (qsizetype y = 0; y < rows; ++y)
                    std::memcpy(to + x * toStride + y * unit, from + (y * columns + x) * unit,
                                static_cast<std::size_t>(unit));
        }

        int m_bits; ///< of a pixel
        int m_perByte;
        std::array<std::uint8_t, 256> m_mirrored = {}; ///< each byte of packed samples
    };

    /// Rows from the bottom or turned into columns, not mirrored yet. The stored page is read once
    /// and kept in blocks of stored rows; a block of a turned page is transposed, so that what a
    /// band of output rows needs of it lies in one piece.
    class RearrangedRows : public RowSource
    {
    public:
        RearrangedRows(std::unique_ptr<RowSource> source, int orientation)
            : RowSource(swapsSides(orientation) ? source->heightPx() : source->widthPx(),
                        swapsSides(orientation) ? source->widthPx() : source->heightPx(),
                        source->layout())
            , m_mover(layout())
            , m_orientation(orientation)
            , m_storedWidth(source->widthPx())
            , m_storedHeight(source->heightPx())
            , m_blockRows(rowsOfBlocks())
            , m_spool(blockOffset(m_storedHeight) > mostBytesInMemory ? 0 : mostBytesInMemory)
        {
            if (swapsSides(m_orientation)
                && (static_cast<std::uint32_t>(widthPx()) > longestRowPx
                    || static_cast<std::uint64_t>(rowBytes()) > longestRowBytes))
                throw std::runtime_error("its rows of " + std::to_string(widthPx())
                                         + " pixels, once it is turned, are too long");
            fill(*source);
        }

        Band nextBand() override
        {
            const int rows
                = std::min(rowsOf(wantedBandBytes, rowBytes(), heightPx()), heightPx() - m_nextRow);
            m_samples.resize(static_cast<std::size_t>(rowBytes() * rows));
            if (rows > 0)
                gather(rows);
            m_nextRow += rows;
            return { m_samples.data(), rows, rowBytes() };
        }

    private:
        /// Few where rows are long: a block is held twice. All but the last fill whole bytes with
        /// the pixels of a column.
        int rowsOfBlocks() const
        {
            const int perByte = m_mover.pixelsPerByte();
            const int rows = rowsOf(wantedBlockBytes, m_mover.bytes(m_storedWidth), m_storedHeight);
            return std::max(rows / perByte, 1) * perByte;
        }

        std::uint64_t blockOffset(int firstRow) const
        {
            return static_cast<std::uint64_t>(swapsSides(m_orientation)
                                                  ? m_mover.bytes(firstRow) * m_storedWidth
                                                  : m_mover.bytes(m_storedWidth) * firstRow);
        }

        void fill(RowSource& source)
        {
            const auto rowBytes = static_cast<std::size_t>(m_mover.bytes(m_storedWidth));
            const auto most = static_cast<std::size_t>(std::min(m_blockRows, m_storedHeight));
            std::vector<std::uint8_t> block;
            block.reserve(rowBytes * most);
            int stored = 0;
            for (Band band = source.nextBand(); band.rows > 0; band = source.nextBand())
                for (int i = 0; i < band.rows; ++i) {
                    block.insert(block.end(), band.row(i), band.row(i) + rowBytes);
                    const int rows = static_cast<int>(block.size() / rowBytes);
                    if (rows < m_blockRows && stored + rows < m_storedHeight)
                        continue;
                    store(block, stored, rows);
                    stored += rows;
                    block.clear();
                }
            m_piece = {};
        }

        void store(const std::vector<std::uint8_t>& block, int firstRow, int rows)
        {
            if (!swapsSides(m_orientation)) {
                m_spool.writeAt(blockOffset(firstRow), block);
                return;
            }
            m_piece.resize(static_cast<std::size_t>(m_mover.bytes(rows) * m_storedWidth));
            m_mover.transpose(block.data(), m_storedWidth, rows, m_piece.data());
            m_spool.writeAt(blockOffset(firstRow), m_piece);
        }

        /// Takes of each block what the output rows have of it. A page that is not turned is one
        /// block to them, since its rows are whole.
        void gather(int rows)
        {
            const bool fromBottom = runsFromBottom(m_orientation);
            const int firstRow = fromBottom ? heightPx() - m_nextRow - rows : m_nextRow;
            const int blockPixels = swapsSides(m_orientation) ? m_blockRows : widthPx();
            for (int first = 0; first < widthPx();) {
                const int pixels = std::min(blockPixels, widthPx() - first);
                const qsizetype bytes = m_mover.bytes(pixels);
                m_piece.resize(static_cast<std::size_t>(bytes * rows));
                const qsizetype begin = m_mover.bytes(first);
                m_spool.readAt(static_cast<std::uint64_t>(begin * heightPx() + bytes * firstRow),
                               m_piece);
                for (int i = 0; i < rows; ++i)
                    std::memcpy(m_samples.data() + i * rowBytes() + begin,
                                m_piece.data() + (fromBottom ? rows - 1 - i : i) * bytes,
                                static_cast<std::size_t>(bytes));
                first += pixels;
            }
        }

        PixelMover m_mover;
        int m_orientation;
        int m_storedWidth;
        int m_storedHeight;
        int m_blockRows;
        ByteSpool m_spool;
        int m_nextRow = 0;
        std::vector<std::uint8_t> m_piece;
        std::vector<std::uint8_t> m_samples;
    };

    std::unique_ptr<RowSource> mirroredRows(std::unique_ptr<RowSource> rows)
    {
        const PixelLayout layout = rows->layout();
        return steppedRows(
            std::move(rows), layout,
            [mover = PixelMover(layout)](const std::uint8_t* from, std::uint8_t* to, int pixels) {
                mover.mirror(from, pixels, to);
            });
    }

} // namespace

std::unique_ptr<RowSource> uprightRows(std::unique_ptr<RowSource> rows, int orientation)
{
    if (orientation >= 3)
        rows = std::make_unique<RearrangedRows>(std::move(rows), orientation);
    return runsFromRight(orientation) ? mirroredRows(std::move(rows)) : std::move(rows);
}

PageProperties uprightProperties(const PageProperties& stored)
{
    PageProperties upright = stored;
    upright.orientation = 1;
    if (swapsSides(stored.orientation)) {
        std::swap(upright.widthPx, upright.heightPx);
        std::swap(upright.resolution.x, upright.resolution.y);
    }
    return upright;
}

} // namespace pagestack
