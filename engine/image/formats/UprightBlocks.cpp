#include "engine/image/formats/UprightBlocks.h"

#include "engine/files/ByteSpool.h"

#include <algorithm>
#include <span>
#include <utility>

namespace pagestack {

namespace {

    constexpr std::uint64_t mostBlockBytesInMemory = std::uint64_t { 16 } * 1024 * 1024;
    constexpr std::size_t wantedColumnBytes = std::size_t { 4 } * 1024 * 1024;

    /// How an orientation brings the stored image upright: its rows may become columns, then
    /// columns and rows may change their order.
    struct Turn
    {
        explicit Turn(int orientation)
            : isTransposed(orientation >= 5)
            , fromRight(orientation == 2 || orientation == 3 || orientation == 6
                        || orientation == 7)
            , fromBottom(orientation == 3 || orientation == 4 || orientation >= 7)
        {
        }

        /// Of the coefficients: what is mirrored has the odd frequencies with the other sign.
        void apply(const JpegBlock& from, JpegBlock& to) const
        {
            constexpr unsigned side = jpegBlockSidePx;
            for (unsigned y = 0; y < side; ++y)
                for (unsigned x = 0; x < side; ++x) {
                    const std::int16_t value = from[isTransposed ? x * side + y : y * side + x];
                    const bool isNegated = (fromRight && x % 2 != 0) != (fromBottom && y % 2 != 0);
                    to[y * side + x] = static_cast<std::int16_t>(isNegated ? -value : value);
                }
        }

        bool isTransposed;
        bool fromRight; ///< the first upright column was the last one
        bool fromBottom;
    };

    JpegFrame uprightFrame(JpegFrame frame, const Turn& turn)
    {
        if (!turn.isTransposed)
            return frame;
        std::swap(frame.widthPx, frame.heightPx);
        for (JpegComponent& component : frame.components) {
            std::swap(component.horizontal, component.vertical);
            const auto stored = component.quantization;
            for (std::size_t i = 0; i < stored.size(); ++i)
                component.quantization[i]
                    = stored[i % jpegBlockSidePx * jpegBlockSidePx + i / jpegBlockSidePx];
        }
        return frame;
    }

    /// Keeps the stored MCUs in their order, each with all its blocks.
    class TurnedBlocks : public JpegBlocks
    {
    public:
        TurnedBlocks(std::shared_ptr<JpegBlocks> stored, int orientation)
            : JpegBlocks(uprightFrame(stored->frame(), Turn(orientation)))
            , m_turn(orientation)
            , m_stored(std::move(stored))
            , m_storedAcross(m_stored->frame().unitsAcross())
            , m_storedDown(m_stored->frame().unitsDown())
            , m_row(m_frame, m_frame.unitsAcross())
            , m_unitBlocks(blocksOfUnit())
            , m_spool(byteOffset(m_storedDown, 0) > mostBlockBytesInMemory ? 0
                                                                           : mostBlockBytesInMemory)
        {
        }

        void restart() override
        {
            if (m_spool.size() == 0)
                fill();
            m_next = 0;
            m_columns.clear();
        }

        const JpegUnitRow& next() override
        {
            const int down = m_frame.unitsDown();
            const int line = m_turn.fromBottom ? down - 1 - m_next : m_next;
            ++m_next;
            if (m_turn.isTransposed)
                readColumn(line);
            else
                readRow(line);
            const int across = m_frame.unitsAcross();
            for (int unit = 0; unit < across; ++unit)
                put(m_units.data()
                        + static_cast<std::size_t>(m_turn.fromRight ? across - 1 - unit : unit)
                            * m_unitBlocks,
                    unit);
            return m_row;
        }

        void finish() override { } // fill() has done it

    private:
        std::size_t blocksOfUnit() const
        {
            std::size_t blocks = 0;
            for (const JpegComponent& component : m_frame.components)
                blocks += static_cast<std::size_t>(component.horizontal * component.vertical);
            return blocks;
        }

        std::uint64_t byteOffset(int row, int column) const
        {
            return (static_cast<std::uint64_t>(row) * static_cast<unsigned>(m_storedAcross)
                    + static_cast<unsigned>(column))
                * m_unitBlocks * sizeof(JpegBlock);
        }

        static std::span<std::uint8_t> bytesOf(std::span<JpegBlock> blocks)
        {
            return { reinterpret_cast<std::uint8_t*>(blocks.data()), blocks.size_bytes() };
        }

        void fill()
        {
            const JpegFrame& stored = m_stored->frame();
            std::vector<JpegBlock> units(static_cast<std::size_t>(m_storedAcross) * m_unitBlocks);
            m_stored->restart();
            for (int row = 0; row < m_storedDown; ++row) {
                const JpegUnitRow& from = m_stored->next();
                auto to = units.begin();
                for (int unit = 0; unit < m_storedAcross; ++unit)
                    for (std::size_t c = 0; c < stored.components.size(); ++c) {
                        const int across = stored.components[c].horizontal;
                        for (int y = 0; y < stored.components[c].vertical; ++y)
                            to = std::copy_n(from.row(c, y) + std::ptrdiff_t { unit } * across,
                                             across, to);
                    }
                m_spool.writeAt(byteOffset(row, 0), bytesOf(units));
            }
            m_stored->finish();
            m_stored.reset();
        }

        void readRow(int row)
        {
            m_units.resize(static_cast<std::size_t>(m_storedAcross) * m_unitBlocks);
            m_spool.readAt(byteOffset(row, 0), bytesOf(m_units));
        }

        /// Columns are read several at a time.
        void readColumn(int column)
        {
            const auto down = static_cast<std::size_t>(m_storedDown);
            if (m_columns.empty() || column < m_firstColumn || column >= m_endColumn) {
                const int count = static_cast<int>(std::clamp<std::size_t>(
                    wantedColumnBytes / (down * m_unitBlocks * sizeof(JpegBlock)), 1,
                    static_cast<std::size_t>(m_storedAcross)));
                m_firstColumn = column - column % count;
                m_endColumn = std::min(m_firstColumn + count, m_storedAcross);
                const std::size_t part
                    = static_cast<std::size_t>(m_endColumn - m_firstColumn) * m_unitBlocks;
                m_columns.resize(down * part);
                for (std::size_t row = 0; row < down; ++row)
                    m_spool.readAt(byteOffset(static_cast<int>(row), m_firstColumn),
                                   bytesOf(std::span(m_columns).subspan(row * part, part)));
            }
            m_units.resize(down * m_unitBlocks);
            const std::size_t part
                = static_cast<std::size_t>(m_endColumn - m_firstColumn) * m_unitBlocks;
            const std::size_t first
                = static_cast<std::size_t>(column - m_firstColumn) * m_unitBlocks;
            for (std::size_t row = 0; row < down; ++row)
                std::copy_n(m_columns.data() + row * part + first, m_unitBlocks,
                            m_units.data() + row * m_unitBlocks);
        }

        /// Puts the blocks of a stored MCU at the upright place `unit` of the row.
        void put(const JpegBlock* from, int unit)
        {
            for (std::size_t c = 0; c < m_frame.components.size(); ++c) {
                const int across = m_frame.components[c].horizontal;
                const int down = m_frame.components[c].vertical;
                for (int y = 0; y < down; ++y)
                    for (int x = 0; x < across; ++x) {
                        const int column = m_turn.fromRight ? across - 1 - x : x;
                        const int line = m_turn.fromBottom ? down - 1 - y : y;
                        const int place
                            = m_turn.isTransposed ? column * down + line : line * across + column;
                        m_turn.apply(from[place], m_row.row(c, y)[unit * across + x]);
                    }
                from += std::ptrdiff_t { across } * down;
            }
        }

        const Turn m_turn;
        std::shared_ptr<JpegBlocks> m_stored; ///< null once all is in the spool
        int m_storedAcross; ///< MCUs
        int m_storedDown;
        JpegUnitRow m_row;
        std::size_t m_unitBlocks;
        ByteSpool m_spool;
        int m_next = 0;
        std::vector<JpegBlock> m_units; ///< of a stored row or column
        std::vector<JpegBlock> m_columns; ///< of every stored row the MCUs between the two below
        int m_firstColumn = 0;
        int m_endColumn = 0;
    };

} // namespace

bool canTurnBlocks(const JpegFrame& frame, int orientation)
{
    const Turn turn(orientation);
    // In the stored image: what comes to the left of a transposed one was below.
    const bool needsRight = turn.isTransposed ? turn.fromBottom : turn.fromRight;
    const bool needsBottom = turn.isTransposed ? turn.fromRight : turn.fromBottom;
    return (!needsRight || frame.widthPx % frame.unitWidthPx() == 0)
        && (!needsBottom || frame.heightPx % frame.unitHeightPx() == 0);
}

std::shared_ptr<JpegBlocks> uprightBlocks(std::shared_ptr<JpegBlocks> blocks, int orientation)
{
    if (orientation == 1)
        return blocks;
    return std::make_shared<TurnedBlocks>(std::move(blocks), orientation);
}

} // namespace pagestack
