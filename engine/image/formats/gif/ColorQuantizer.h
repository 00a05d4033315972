#pragma once

#include "engine/image/pixels/PixelLayout.h"

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace pagestack {

/// Collects the colours of a page and chooses a palette for it.
///
/// As many different colours as the palette may have are kept exactly. Of up to 256 that are still
/// too many the rarest are left out. More are reduced by variance: the colour space is cut again
/// and again across the box whose split lowers the squared error most (the method published by X.
/// Wu in Graphics Gems II, 1991), on colours of 6 bits a channel, and the mean of each box's real
/// colours becomes a palette entry. The same colours give the same palette.
class ColorQuantizer
{
public:
    ColorQuantizer();

    /// Counts pixels of three bytes, red first.
    void add(const std::uint8_t* pixels, int count);

    /// True when the colours counted fit into a palette of `mostColors`, 2 to 256.
    bool isExact(int mostColors) const;

    /// A palette of at most `mostColors` for the colours counted: in the order of their RGB values
    /// when exact. At least one entry.
    std::vector<RgbColor> palette(int mostColors) const;

private:
    /// Moments of a cell or, once summed up, of all cells below it.
    struct Moments
    {
        std::int64_t count = 0;
        std::int64_t sum[3] = { 0, 0, 0 };
        std::int64_t squares = 0;

        Moments& operator+=(const Moments& other);
        Moments& operator-=(const Moments& other);
    };
    /// Cells above `low` and up to `high`, each channel.
    struct Box
    {
        int low[3];
        int high[3];
    };

    void keepColors(const std::uint8_t* pixels, int count);
    static std::size_t cellIndex(int red, int green, int blue);
    static Moments momentsOf(const std::vector<Moments>& sums, const Box& box);
    static double errorOf(const Moments& moments);
    static bool splitBest(const std::vector<Moments>& sums, const Box& box, Box& lower, Box& upper);
    std::vector<Moments> cumulated() const;
    std::vector<RgbColor> reducedPalette(std::size_t mostColors) const;
    std::vector<RgbColor> sortedColors() const;

    bool m_overflowed = false; ///< more than 256 colours
    std::unordered_map<std::uint32_t, std::int64_t>
        m_colors; ///< pixels a colour, while they are few
    std::vector<Moments> m_cells;
};

/// Finds palette entries for the pixels of one row after the other and spreads the error of each
/// pixel over its neighbours (Floyd and Steinberg, 1976), every other row from right to left.
class ErrorDiffusion
{
public:
    ErrorDiffusion(const std::vector<RgbColor>& palette, int widthPx);

    /// Replaces each RGB pixel of `row` by the index of a palette entry at `to`.
    void mapRow(const std::uint8_t* row, std::uint8_t* to);

private:
    /// Red, green, blue and index of a palette entry, from the highest byte on.
    using Entry = std::uint32_t;

    template <int step>
    void mapInDirection(const std::uint8_t* row, std::uint8_t* to);
    void findNearest(std::size_t cell);

    std::array<std::vector<std::int16_t>, 3> m_palette; ///< by channel
    int m_widthPx;
    bool m_fromRight = false;
    std::vector<int>
        m_errors; ///< of this row, in sixteenths, three channels, a pixel's margin each side
    std::vector<int> m_nextErrors;
    Entry m_unknown; ///< stands for an entry that was not looked for yet
    std::vector<Entry> m_nearest; ///< by 6 bits a channel
};

} // namespace pagestack
