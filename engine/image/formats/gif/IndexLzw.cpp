#include "engine/image/formats/gif/LzwCoder.h"

#include <algorithm>
#include <vector>

namespace pagestack {

namespace {

    /// Rows of one byte a pixel, each an index below 2^`indexBits`. Its table of strings is a hash
    /// table: of the few strings that can follow on each of 4096, most never do.
    class IndexLzw : public LzwCoder
    {
    public:
        IndexLzw(StagedFile& file, int widthPx, int indexBits)
            : LzwCoder(file, widthPx, indexBits)
            , m_slots(std::size_t { 1 } << slotBits)
        {
            // Multiples of 2^32 / golden ratio lie evenly (D. E. Knuth, volume 3, 6.4).
            for (std::uint32_t i = 0; i < m_spread.size(); ++i)
                m_spread[i] = (i * 0x9E3779B1U) >> (32 - slotBits);
        }

        void putRow(const std::uint8_t* row) override
        {
            constexpr std::uint32_t slotMask = (1U << slotBits) - 1;
            constexpr std::uint32_t codeMask = codeLimit - 1;
            std::uint32_t* const table = m_slots.data();
            const std::uint8_t* const end = row + m_widthPx;
            auto current = static_cast<std::uint32_t>(m_current >= 0 ? m_current : *row++);
            auto next = static_cast<std::uint32_t>(m_nextCode);
            while (row < end) {
                const std::uint32_t pixel = *row++;
                const std::uint32_t key = (current << 8U | pixel) << 12U;
                std::uint32_t slot = (current << (slotBits - 12U)) ^ m_spread[pixel];
                std::uint32_t found = table[slot];
                // Whether there is such a string cannot be predicted in a noisy picture. So the
                // only branch is for a slot of another string, and they are few.
                while (std::min((found ^ key) >> 12U, found) != 0) {
                    slot = (slot + 1) & slotMask;
                    found = table[slot];
                }
                const std::uint32_t isNew = found == 0 ? 1 : 0;
                const std::uint32_t newMask = 0U - isNew;
                m_codes[next] = static_cast<std::uint16_t>(current);
                table[slot] = found | (newMask & (key | next));
                current = (newMask & pixel) | (found & codeMask);
                next += isNew;
                if (next == codeLimit) {
                    m_nextCode = codeLimit;
                    startTable();
                    next = static_cast<std::uint32_t>(m_nextCode);
                    std::fill(m_slots.begin(), m_slots.end(), 0);
                }
            }
            m_current = static_cast<int>(current);
            m_nextCode = static_cast<int>(next);
        }

    private:
        static constexpr int slotBits = 14;

        /// The code before the last pixel, the last pixel and the string's code, from 12, 8 and 12
        /// bits; 0: empty.
        std::vector<std::uint32_t> m_slots;
        /// Where a pixel's strings lie, before the code.
        std::array<std::uint32_t, 256> m_spread {};
    };

    /// The same for up to 16 colours. What follows on a string is looked up without a search.
    class SmallIndexLzw : public LzwCoder
    {
    public:
        static constexpr int mostBits = 4;

        SmallIndexLzw(StagedFile& file, int widthPx, int indexBits)
            : LzwCoder(file, widthPx, indexBits)
            , m_colors(1 << indexBits)
            , m_followers(codeLimit)
        {
        }

        void putRow(const std::uint8_t* row) override
        {
            Followers* const followers = m_followers.data();
            const std::uint8_t* const end = row + m_widthPx;
            auto current = static_cast<std::uint16_t>(m_current >= 0 ? m_current : *row++);
            auto next = static_cast<std::size_t>(m_nextCode);
            while (row < end) {
                const std::uint8_t pixel = *row++;
                if (const std::uint16_t longer = followers[current][pixel]; longer != 0) {
                    current = longer;
                    continue;
                }
                m_codes[next] = current;
                followers[current][pixel] = static_cast<std::uint16_t>(next);
                followers[next] = {};
                current = pixel;
                if (++next == codeLimit) {
                    m_nextCode = codeLimit;
                    startTable();
                    next = static_cast<std::size_t>(m_nextCode);
                    std::fill_n(m_followers.begin(), m_colors, Followers {});
                }
            }
            m_current = current;
            m_nextCode = static_cast<int>(next);
        }

    private:
        using Followers = std::array<std::uint16_t, 1 << mostBits>;

        int m_colors;
        /// By code and next pixel; 0: there is no such string. Those of a free code are anything.
        std::vector<Followers> m_followers;
    };

} // namespace

std::unique_ptr<LzwCoder> indexLzw(StagedFile& file, int widthPx, int indexBits)
{
    if (indexBits <= SmallIndexLzw::mostBits)
        return std::make_unique<SmallIndexLzw>(file, widthPx, indexBits);
    return std::make_unique<IndexLzw>(file, widthPx, indexBits);
}

} // namespace pagestack
