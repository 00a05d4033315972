#include "engine/image/UprightRows.h"

#include <QDir>
#include <QTemporaryFile>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace pagestack {

namespace {

    constexpr qsizetype mostBytesInMemory = qsizetype { 16 } * 1024 * 1024;

    /// What TIFF 6.0 says of the first stored row and column.
    bool swapsSides(int orientation) { return orientation >= 5; }
    bool firstColumnIsRight(int orientation) { return orientation == 2 || orientation == 3; }
    bool firstRowIsBottom(int orientation) { return orientation == 3 || orientation == 4; }
    /// For turned pages: stored rows are columns, from the right for 6 and 7; stored columns are
    /// rows, from the bottom for 7 and 8.
    bool storedRowsRunFromRight(int orientation) { return orientation == 6 || orientation == 7; }
    bool storedColumnsRunFromBottom(int orientation)
    {
        return orientation == 7 || orientation == 8;
    }

    /// Pixels as units that can be moved: packed samples are spread to a byte each.
    class PixelUnits
    {
    public:
        explicit PixelUnits(const PixelLayout& layout)
            : m_bits(layout.bitsPerSample)
            , m_bytes(m_bits < 8 ? 1 : layout.channels() * m_bits / 8)
        {
        }
        qsizetype bytes() const { return m_bytes; }

        void spread(const std::uint8_t* row, int pixels, std::uint8_t* to) const
        {
            if (m_bits >= 8) {
                std::memcpy(to, row, static_cast<std::size_t>(pixels * m_bytes));
                return;
            }
            const int perByte = 8 / m_bits;
            for (int i = 0; i < pixels; ++i)
                to[i] = static_cast<std::uint8_t>(
                    (row[i / perByte] >> (8 - m_bits * (i % perByte + 1))) & ((1 << m_bits) - 1));
        }

        void pack(const std::uint8_t* units, int pixels, std::uint8_t* row) const
        {
            if (m_bits >= 8) {
                std::memcpy(row, units, static_cast<std::size_t>(pixels * m_bytes));
                return;
            }
            const int perByte = 8 / m_bits;
            std::memset(row, 0, static_cast<std::size_t>((pixels + perByte - 1) / perByte));
            for (int i = 0; i < pixels; ++i)
                row[i / perByte] = static_cast<std::uint8_t>(
                    row[i / perByte] | units[i] << (8 - m_bits * (i % perByte + 1)));
        }

    private:
        int m_bits;
        qsizetype m_bytes;
    };

    /// Mirrors each row; the order of the rows stays.
    class MirroredRows : public RowSource
    {
    public:
        explicit MirroredRows(std::unique_ptr<RowSource> source)
            : m_source(std::move(source))
            , m_units(m_source->layout())
            , m_spread(
                  static_cast<std::size_t>(qsizetype { m_source->widthPx() } * m_units.bytes()))
            , m_mirrored(m_spread.size())
        {
        }
        int widthPx() const override { return m_source->widthPx(); }
        int heightPx() const override { return m_source->heightPx(); }
        const PixelLayout& layout() const override { return m_source->layout(); }

        Band nextBand() override
        {
            const Band band = m_source->nextBand();
            const qsizetype stride = layout().rowBytes(widthPx());
            m_samples.resize(static_cast<std::size_t>(stride) * static_cast<unsigned>(band.rows));
            const qsizetype unit = m_units.bytes();
            for (int i = 0; i < band.rows; ++i) {
                m_units.spread(band.row(i), widthPx(), m_spread.data());
                for (qsizetype x = 0; x < widthPx(); ++x)
                    std::memcpy(m_mirrored.data() + x * unit,
                                m_spread.data() + (widthPx() - 1 - x) * unit,
                                static_cast<std::size_t>(unit));
                m_units.pack(m_mirrored.data(), widthPx(), m_samples.data() + i * stride);
            }
            return { m_samples.data(), band.rows, stride };
        }

    private:
        std::unique_ptr<RowSource> m_source;
        PixelUnits m_units;
        std::vector<std::uint8_t> m_spread;
        std::vector<std::uint8_t> m_mirrored;
        std::vector<std::uint8_t> m_samples;
    };

    /// A store of bytes in memory or, when it is large, in a temporary file that has no name any
    /// more once the program has ended.
    class Spool
    {
    public:
        explicit Spool(qsizetype bytes)
        {
            if (bytes <= mostBytesInMemory) {
                m_memory.resize(static_cast<std::size_t>(bytes));
                return;
            }
            m_file = std::make_unique<QTemporaryFile>(QDir::tempPath()
                                                      + QStringLiteral("/pagestack-XXXXXX"));
            if (!m_file->open() || !m_file->resize(bytes))
                fail();
        }

        void write(qsizetype offset, const std::uint8_t* from, qsizetype bytes)
        {
            if (!m_file) {
                std::memcpy(m_memory.data() + offset, from, static_cast<std::size_t>(bytes));
                return;
            }
            if (!m_file->seek(offset)
                || m_file->write(reinterpret_cast<const char*>(from), bytes) != bytes)
                fail();
        }

        void read(qsizetype offset, std::uint8_t* to, qsizetype bytes)
        {
            if (!m_file) {
                std::memcpy(to, m_memory.data() + offset, static_cast<std::size_t>(bytes));
                return;
            }
            if (!m_file->seek(offset) || m_file->read(reinterpret_cast<char*>(to), bytes) != bytes)
                fail();
        }

    private:
        [[noreturn]] void fail() const
        {
            throw std::runtime_error("the temporary file for turning the page: "
                                     + m_file->errorString().toStdString());
        }

        std::vector<std::uint8_t> m_memory;
        std::unique_ptr<QTemporaryFile> m_file;
    };

    /// Rows in another order or turned into columns. The stored page is read once and kept in
    /// blocks of `blockRows` stored rows; a block of a turned page is transposed, so that what a
    /// band of output rows needs of it lies in one piece.
    class RearrangedRows : public RowSource
    {
    public:
        RearrangedRows(std::unique_ptr<RowSource> source, int orientation)
            : m_layout(source->layout())
            , m_units(m_layout)
            , m_orientation(orientation)
            , m_storedWidth(source->widthPx())
            , m_storedHeight(source->heightPx())
            , m_spool(static_cast<qsizetype>(m_storedWidth) * m_storedHeight * m_units.bytes())
        {
            fill(*source);
        }
        int widthPx() const override
        {
            return swapsSides(m_orientation) ? m_storedHeight : m_storedWidth;
        }
        int heightPx() const override
        {
            return swapsSides(m_orientation) ? m_storedWidth : m_storedHeight;
        }
        const PixelLayout& layout() const override { return m_layout; }

        Band nextBand() override
        {
            const int rows = std::min(blockRows, heightPx() - m_nextRow);
            const qsizetype stride = m_layout.rowBytes(widthPx());
            m_samples.resize(static_cast<std::size_t>(stride * rows));
            if (rows > 0 && swapsSides(m_orientation))
                gatherColumns(rows);
            else if (rows > 0)
                gatherRows(rows);
            const qsizetype unitRowBytes = widthPx() * m_units.bytes();
            for (int i = 0; i < rows; ++i)
                m_units.pack(m_gathered.data() + i * unitRowBytes, widthPx(),
                             m_samples.data() + i * stride);
            m_nextRow += rows;
            return { m_samples.data(), rows, stride };
        }

    private:
        static constexpr int blockRows = 64;

        qsizetype blockOffset(int firstRow) const
        {
            return static_cast<qsizetype>(firstRow) * m_storedWidth * m_units.bytes();
        }

        void fill(RowSource& source)
        {
            const qsizetype unit = m_units.bytes();
            const qsizetype rowBytes = m_storedWidth * unit;
            std::vector<std::uint8_t> block(static_cast<std::size_t>(rowBytes * blockRows));
            int inBlock = 0;
            int stored = 0;
            for (Band band = source.nextBand(); band.rows > 0; band = source.nextBand()) {
                for (int i = 0; i < band.rows; ++i) {
                    m_units.spread(band.row(i), m_storedWidth, block.data() + inBlock * rowBytes);
                    ++inBlock;
                    if (inBlock == blockRows || stored + inBlock == m_storedHeight) {
                        store(block, stored, inBlock);
                        stored += inBlock;
                        inBlock = 0;
                    }
                }
            }
        }

        void store(const std::vector<std::uint8_t>& block, int firstRow, int rows)
        {
            const qsizetype unit = m_units.bytes();
            const qsizetype bytes = unit * m_storedWidth * rows;
            if (!swapsSides(m_orientation)) {
                m_spool.write(blockOffset(firstRow), block.data(), bytes);
                return;
            }
            m_transposed.resize(static_cast<std::size_t>(bytes));
            std::uint8_t* to = m_transposed.data();
            for (qsizetype x = 0; x < m_storedWidth; ++x)
                for (qsizetype y = 0; y < rows; ++y) {
                    std::memcpy(to, block.data() + (y * m_storedWidth + x) * unit,
                                static_cast<std::size_t>(unit));
                    to += unit;
                }
            m_spool.write(blockOffset(firstRow), m_transposed.data(), bytes);
        }

        /// Output rows are stored rows from the bottom on, mirrored where that is asked.
        void gatherRows(int rows)
        {
            const qsizetype unit = m_units.bytes();
            const qsizetype rowBytes = m_storedWidth * unit;
            m_gathered.resize(static_cast<std::size_t>(rowBytes * rows));
            m_piece.resize(static_cast<std::size_t>(rowBytes));
            for (int i = 0; i < rows; ++i) {
                const int row = m_nextRow + i;
                const int storedRow
                    = firstRowIsBottom(m_orientation) ? m_storedHeight - 1 - row : row;
                m_spool.read(blockOffset(storedRow), m_piece.data(), rowBytes);
                std::uint8_t* to = m_gathered.data() + i * rowBytes;
                if (!firstColumnIsRight(m_orientation)) {
                    std::memcpy(to, m_piece.data(), m_piece.size());
                    continue;
                }
                for (qsizetype x = 0; x < m_storedWidth; ++x)
                    std::memcpy(to + x * unit, m_piece.data() + (m_storedWidth - 1 - x) * unit,
                                static_cast<std::size_t>(unit));
            }
        }

        /// Output rows are stored columns: each block gives the pixels of its stored rows.
        void gatherColumns(int rows)
        {
            const qsizetype unit = m_units.bytes();
            m_gathered.resize(static_cast<std::size_t>(unit * widthPx() * rows));
            const bool fromBottom = storedColumnsRunFromBottom(m_orientation);
            const int firstColumn = fromBottom ? m_storedWidth - m_nextRow - rows : m_nextRow;
            for (int first = 0; first < m_storedHeight; first += blockRows) {
                const int inBlock = std::min(blockRows, m_storedHeight - first);
                const qsizetype pieceBytes = unit * inBlock * rows;
                m_piece.resize(static_cast<std::size_t>(pieceBytes));
                m_spool.read(blockOffset(first)
                                 + static_cast<qsizetype>(firstColumn) * inBlock * unit,
                             m_piece.data(), pieceBytes);
                for (int i = 0; i < rows; ++i) {
                    const int column = fromBottom ? rows - 1 - i : i;
                    for (int k = 0; k < inBlock; ++k) {
                        const int x = storedRowsRunFromRight(m_orientation)
                            ? m_storedHeight - 1 - (first + k)
                            : first + k;
                        std::memcpy(
                            m_gathered.data() + (static_cast<qsizetype>(i) * widthPx() + x) * unit,
                            m_piece.data() + (static_cast<qsizetype>(column) * inBlock + k) * unit,
                            static_cast<std::size_t>(unit));
                    }
                }
            }
        }

        PixelLayout m_layout;
        PixelUnits m_units;
        int m_orientation;
        int m_storedWidth;
        int m_storedHeight;
        Spool m_spool;
        int m_nextRow = 0;
        std::vector<std::uint8_t> m_transposed;
        std::vector<std::uint8_t> m_piece;
        std::vector<std::uint8_t> m_gathered;
        std::vector<std::uint8_t> m_samples;
    };

} // namespace

std::unique_ptr<RowSource> uprightRows(std::unique_ptr<RowSource> rows, int orientation)
{
    if (orientation == 2)
        return std::make_unique<MirroredRows>(std::move(rows));
    if (orientation >= 3 && orientation <= 8)
        return std::make_unique<RearrangedRows>(std::move(rows), orientation);
    return rows;
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
