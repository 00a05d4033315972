#pragma once

#include "engine/image/formats/gif/LzwCoder.h"

#include <vector>

namespace pagestack {

/// Rows of one byte a pixel, each an index below 2^`indexBits`. Its table of strings is a hash
/// table: of the few strings that can follow on each of 4096, most never do.
class IndexLzw : public LzwCoder
{
public:
    IndexLzw(StagedFile& file, int widthPx, int indexBits);

    void putRow(const std::uint8_t* row) override;

private:
    static constexpr int slotBits = 14;

    int m_widthPx;
    /// The code before the last pixel, the last pixel and the string's code, from 12, 8 and 12
    /// bits; 0: empty.
    std::vector<std::uint32_t> m_slots;
    std::array<std::uint32_t, 256> m_spread {}; ///< where a pixel's strings lie, before the code
};

/// The same for up to 16 colours. What follows on a string is looked up without a search.
class SmallIndexLzw : public LzwCoder
{
public:
    static constexpr int mostBits = 4;

    SmallIndexLzw(StagedFile& file, int widthPx, int indexBits);

    void putRow(const std::uint8_t* row) override;

private:
    using Followers = std::array<std::uint16_t, 1 << mostBits>;

    int m_widthPx;
    int m_colors;
    /// By code and next pixel; 0: there is no such string. Those of a free code are anything.
    std::vector<Followers> m_followers;
};

} // namespace pagestack
