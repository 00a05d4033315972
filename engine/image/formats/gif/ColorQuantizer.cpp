#include "engine/image/formats/gif/ColorQuantizer.h"

#include <algorithm>
#include <limits>
#include <map>
#include <optional>

namespace pagestack {

namespace {

    constexpr int cellBits = 6;
    constexpr int side = (1 << cellBits) + 1; // with a border of zeros below the first cell
    constexpr std::size_t mostExactColors = 256;

    std::uint32_t packed(const RgbColor& color)
    {
        return std::uint32_t { color[0] } << 16U | std::uint32_t { color[1] } << 8U | color[2];
    }

    int cellOf(int value) { return (value >> (8 - cellBits)) + 1; }

    /// Places in Moments.
    enum : std::size_t { Red, Green, Blue, Count, Squares };
    using Moments = std::array<std::int64_t, 5>;
    /// Cells above `low` and up to `high`, each channel.
    struct Box
    {
        std::array<int, 3> low;
        std::array<int, 3> high;
    };
    struct Cut
    {
        Box lower;
        Box upper;
    };

    std::size_t cellIndex(int red, int green, int blue)
    {
        return (static_cast<std::size_t>(red) * side + static_cast<unsigned>(green)) * side
            + static_cast<unsigned>(blue);
    }

    void addTo(Moments& sums, const Moments& moments, int sign = 1)
    {
        for (std::size_t i = 0; i < sums.size(); ++i)
            sums[i] += sign * moments[i];
    }

    Moments momentsOf(const std::vector<Moments>& sums, const Box& box)
    {
        Moments moments {};
        for (unsigned corner = 0; corner < 8; ++corner) {
            int at[3];
            int sign = 1;
            for (unsigned c = 0; c < 3; ++c) {
                const bool isLow = (corner >> c & 1U) != 0;
                at[c] = isLow ? box.low[c] : box.high[c];
                sign = isLow ? -sign : sign;
            }
            addTo(moments, sums[cellIndex(at[0], at[1], at[2])], sign);
        }
        return moments;
    }

    /// Sum of the squared distances from the mean.
    double errorOf(const Moments& moments)
    {
        if (moments[Count] == 0)
            return 0;
        double meanPart = 0;
        for (std::size_t c = 0; c < 3; ++c)
            meanPart += static_cast<double>(moments[c]) * static_cast<double>(moments[c]);
        return static_cast<double>(moments[Squares])
            - meanPart / static_cast<double>(moments[Count]);
    }

    /// The two parts of `box` that together have the least error; none when it cannot be cut.
    std::optional<Cut> bestCut(const std::vector<Moments>& sums, const Box& box)
    {
        const Moments whole = momentsOf(sums, box);
        std::optional<Cut> best;
        double least = std::numeric_limits<double>::infinity();
        for (std::size_t c = 0; c < 3; ++c)
            for (int at = box.low[c] + 1; at < box.high[c]; ++at) {
                Cut cut { box, box };
                cut.lower.high[c] = cut.upper.low[c] = at;
                const Moments lower = momentsOf(sums, cut.lower);
                Moments upper = whole;
                addTo(upper, lower, -1);
                if (lower[Count] == 0 || upper[Count] == 0)
                    continue;
                const double error = errorOf(lower) + errorOf(upper);
                if (error < least) {
                    least = error;
                    best = cut;
                }
            }
        return best;
    }

} // namespace

ColorQuantizer::ColorQuantizer()
    : m_cells(static_cast<std::size_t>(side * side * side))
{
}

void ColorQuantizer::add(const std::uint8_t* pixels, int count)
{
    if (!m_overflowed)
        keepColors(pixels, count);
    for (const std::uint8_t* const end = pixels + 3 * qsizetype { count }; pixels < end;
         pixels += 3) {
        const int red = pixels[0];
        const int green = pixels[1];
        const int blue = pixels[2];
        Moments& cell = m_cells[cellIndex(cellOf(red), cellOf(green), cellOf(blue))];
        ++cell[Count];
        cell[Red] += red;
        cell[Green] += green;
        cell[Blue] += blue;
        cell[Squares] += red * red + green * green + blue * blue;
    }
}

/// Counts the pixels by their colours as long as these are few.
void ColorQuantizer::keepColors(const std::uint8_t* pixels, int count)
{
    for (int i = 0; i < count && !m_overflowed;) {
        const std::uint8_t* const pixel = pixels + 3 * qsizetype { i };
        const int first = i;
        while (++i < count && std::equal(pixel, pixel + 3, pixels + 3 * qsizetype { i })) { }
        m_colors[packed({ pixel[0], pixel[1], pixel[2] })] += i - first;
        m_overflowed = m_colors.size() > mostExactColors;
    }
}

bool ColorQuantizer::isExact(int mostColors) const
{
    return !m_overflowed && m_colors.size() <= static_cast<std::size_t>(mostColors);
}

std::vector<RgbColor> ColorQuantizer::sortedColors() const
{
    std::vector<RgbColor> palette;
    for (const auto& [color, pixels] : std::map(m_colors.begin(), m_colors.end()))
        palette.push_back({ static_cast<std::uint8_t>(color >> 16U),
                            static_cast<std::uint8_t>(color >> 8U),
                            static_cast<std::uint8_t>(color) });
    if (palette.empty())
        palette.push_back({});
    return palette;
}

std::vector<RgbColor> ColorQuantizer::palette(int mostColors) const
{
    if (m_overflowed)
        return reducedPalette(static_cast<std::size_t>(mostColors));
    // A few colours too many: the rarest go, and their pixels take the nearest of the others.
    std::vector<RgbColor> colors = sortedColors();
    while (colors.size() > static_cast<std::size_t>(mostColors))
        colors.erase(std::min_element(colors.begin(), colors.end(), [&](auto& one, auto& other) {
            return m_colors.at(packed(one)) < m_colors.at(packed(other));
        }));
    return colors;
}

/// Each cell with the sum of all cells that are not above it in any channel.
std::vector<ColorQuantizer::Moments> ColorQuantizer::cumulated() const
{
    std::vector<Moments> sums = m_cells;
    for (int r = 1; r < side; ++r) {
        std::vector<Moments> area(side);
        for (int g = 1; g < side; ++g) {
            Moments line {};
            for (int b = 1; b < side; ++b) {
                addTo(line, m_cells[cellIndex(r, g, b)]);
                addTo(area[static_cast<std::size_t>(b)], line);
                Moments& sum = sums[cellIndex(r, g, b)];
                sum = sums[cellIndex(r - 1, g, b)];
                addTo(sum, area[static_cast<std::size_t>(b)]);
            }
        }
    }
    return sums;
}

std::vector<RgbColor> ColorQuantizer::reducedPalette(std::size_t mostColors) const
{
    const std::vector<Moments> sums = cumulated();
    std::vector<Box> boxes { { {}, { side - 1, side - 1, side - 1 } } };
    std::multimap<double, std::size_t> byError { { errorOf(momentsOf(sums, boxes[0])), 0 } };
    while (boxes.size() < mostColors && !byError.empty()) {
        const auto worst = std::prev(byError.end());
        const std::size_t index = worst->second;
        byError.erase(worst);
        const std::optional<Cut> cut = bestCut(sums, boxes[index]);
        if (!cut)
            continue; // a single cell: it stays as it is
        boxes[index] = cut->lower;
        boxes.push_back(cut->upper);
        byError.emplace(errorOf(momentsOf(sums, cut->lower)), index);
        byError.emplace(errorOf(momentsOf(sums, cut->upper)), boxes.size() - 1);
    }
    std::vector<RgbColor> palette;
    for (const Box& box : boxes) {
        const Moments moments = momentsOf(sums, box);
        RgbColor& color = palette.emplace_back();
        for (std::size_t c = 0; c < 3; ++c)
            color[c] = static_cast<std::uint8_t>((moments[c] + moments[Count] / 2)
                                                 / std::max<std::int64_t>(moments[Count], 1));
    }
    return palette;
}

} // namespace pagestack
