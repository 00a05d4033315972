#include "engine/image/ColorQuantizer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

namespace pagestack {

namespace {

    constexpr int cellBits = 6;
    constexpr int side = (1 << cellBits) + 1; // with a border of zeros below the first cell
    constexpr int searchBits = 6;
    constexpr std::size_t mostExactColors = 256;

    std::uint32_t packed(const RgbColor& color)
    {
        return std::uint32_t { color[0] } << 16U | std::uint32_t { color[1] } << 8U | color[2];
    }

    int cellOf(std::uint8_t value) { return (value >> (8 - cellBits)) + 1; }

} // namespace

ColorQuantizer::Moments& ColorQuantizer::Moments::operator+=(const Moments& other)
{
    count += other.count;
    for (int c = 0; c < 3; ++c)
        sum[c] += other.sum[c];
    squares += other.squares;
    return *this;
}

ColorQuantizer::Moments& ColorQuantizer::Moments::operator-=(const Moments& other)
{
    count -= other.count;
    for (int c = 0; c < 3; ++c)
        sum[c] -= other.sum[c];
    squares -= other.squares;
    return *this;
}

ColorQuantizer::ColorQuantizer()
    : m_cells(static_cast<std::size_t>(side * side * side))
{
}

std::size_t ColorQuantizer::cellIndex(int red, int green, int blue)
{
    return static_cast<std::size_t>((red * side + green) * side + blue);
}

void ColorQuantizer::add(const RgbColor& color)
{
    if (!m_overflowed) {
        ++m_colors[packed(color)];
        m_overflowed = m_colors.size() > mostExactColors;
    }
    Moments& cell = m_cells[cellIndex(cellOf(color[0]), cellOf(color[1]), cellOf(color[2]))];
    ++cell.count;
    int squares = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        cell.sum[c] += color[c];
        squares += color[c] * color[c];
    }
    cell.squares += squares;
}

bool ColorQuantizer::isExact(int mostColors) const
{
    return !m_overflowed && m_colors.size() <= static_cast<std::size_t>(mostColors);
}

std::vector<RgbColor> ColorQuantizer::sortedColors() const
{
    std::vector<std::uint32_t> colors;
    for (const auto& [color, pixels] : m_colors)
        colors.push_back(color);
    std::sort(colors.begin(), colors.end());
    std::vector<RgbColor> palette;
    for (const std::uint32_t color : colors)
        palette.push_back({ static_cast<std::uint8_t>(color >> 16U),
                            static_cast<std::uint8_t>(color >> 8U),
                            static_cast<std::uint8_t>(color) });
    if (palette.empty())
        palette.push_back({ 0, 0, 0 });
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
            Moments line;
            for (int b = 1; b < side; ++b) {
                line += m_cells[cellIndex(r, g, b)];
                area[static_cast<std::size_t>(b)] += line;
                Moments& sum = sums[cellIndex(r, g, b)];
                sum = sums[cellIndex(r - 1, g, b)];
                sum += area[static_cast<std::size_t>(b)];
            }
        }
    }
    return sums;
}

ColorQuantizer::Moments ColorQuantizer::momentsOf(const std::vector<Moments>& sums, const Box& box)
{
    Moments moments;
    for (int corner = 0; corner < 8; ++corner) {
        int lows = 0;
        int at[3];
        for (int c = 0; c < 3; ++c) {
            const bool isLow = (corner >> c & 1) != 0;
            at[c] = isLow ? box.low[c] : box.high[c];
            lows += isLow ? 1 : 0;
        }
        if (lows % 2 == 0)
            moments += sums[cellIndex(at[0], at[1], at[2])];
        else
            moments -= sums[cellIndex(at[0], at[1], at[2])];
    }
    return moments;
}

/// Sum of the squared distances from the mean.
double ColorQuantizer::errorOf(const Moments& moments)
{
    if (moments.count == 0)
        return 0;
    double meanPart = 0;
    for (const std::int64_t sum : moments.sum)
        meanPart += static_cast<double>(sum) * static_cast<double>(sum);
    return moments.squares - meanPart / static_cast<double>(moments.count);
}

/// Cuts `box` where the two parts together have the least error; false when it cannot be cut.
bool ColorQuantizer::splitBest(const std::vector<Moments>& sums, const Box& box, Box& lower,
                               Box& upper)
{
    const Moments whole = momentsOf(sums, box);
    double least = std::numeric_limits<double>::infinity();
    for (int c = 0; c < 3; ++c) {
        for (int cut = box.low[c] + 1; cut < box.high[c]; ++cut) {
            Box below = box;
            below.high[c] = cut;
            const Moments lowerPart = momentsOf(sums, below);
            Moments upperPart = whole;
            upperPart -= lowerPart;
            if (lowerPart.count == 0 || upperPart.count == 0)
                continue;
            const double error = errorOf(lowerPart) + errorOf(upperPart);
            if (error < least) {
                least = error;
                lower = below;
                upper = box;
                upper.low[c] = cut;
            }
        }
    }
    return std::isfinite(least);
}

std::vector<RgbColor> ColorQuantizer::reducedPalette(std::size_t mostColors) const
{
    const std::vector<Moments> sums = cumulated();
    std::vector<Box> boxes { { { 0, 0, 0 }, { side - 1, side - 1, side - 1 } } };
    std::multimap<double, std::size_t> byError { { errorOf(momentsOf(sums, boxes[0])), 0 } };
    while (boxes.size() < mostColors && !byError.empty()) {
        const auto worst = std::prev(byError.end());
        const std::size_t index = worst->second;
        byError.erase(worst);
        Box lower = {};
        Box upper = {};
        if (!splitBest(sums, boxes[index], lower, upper))
            continue; // a single cell: it stays as it is
        boxes[index] = lower;
        boxes.push_back(upper);
        byError.emplace(errorOf(momentsOf(sums, lower)), index);
        byError.emplace(errorOf(momentsOf(sums, upper)), boxes.size() - 1);
    }
    std::vector<RgbColor> palette;
    for (const Box& box : boxes) {
        const Moments moments = momentsOf(sums, box);
        RgbColor color = {};
        for (std::size_t c = 0; c < 3; ++c)
            color[c] = static_cast<std::uint8_t>((moments.sum[c] + moments.count / 2)
                                                 / std::max<std::int64_t>(moments.count, 1));
        palette.push_back(color);
    }
    return palette;
}

ErrorDiffusion::ErrorDiffusion(std::vector<RgbColor> palette, int widthPx)
    : m_palette(std::move(palette))
    , m_widthPx(widthPx)
    , m_errors(static_cast<std::size_t>(widthPx + 2) * 3)
    , m_nextErrors(m_errors.size())
    , m_nearest(std::size_t { 1 } << (3 * searchBits), -1)
{
}

std::uint8_t ErrorDiffusion::nearest(int red, int green, int blue)
{
    constexpr int shift = 8 - searchBits;
    const int cell
        = (((red >> shift) << searchBits | green >> shift) << searchBits) | blue >> shift;
    std::int16_t& found = m_nearest[static_cast<std::size_t>(cell)];
    if (found >= 0)
        return static_cast<std::uint8_t>(found);
    // The search is for the middle of the cell, so that the answer does not depend on which colour
    // of the cell came first.
    const auto middle = [](int value) { return (value >> shift << shift) + (1 << shift) / 2; };
    int least = std::numeric_limits<int>::max();
    for (std::size_t i = 0; i < m_palette.size(); ++i) {
        const int r = m_palette[i][0] - middle(red);
        const int g = m_palette[i][1] - middle(green);
        const int b = m_palette[i][2] - middle(blue);
        const int distance = r * r + g * g + b * b;
        if (distance < least) {
            least = distance;
            found = static_cast<std::int16_t>(i);
        }
    }
    return static_cast<std::uint8_t>(found);
}

void ErrorDiffusion::mapRow(const std::uint8_t* row, std::uint8_t* to)
{
    std::fill(m_nextErrors.begin(), m_nextErrors.end(), 0);
    const int step = m_fromRight ? -1 : 1;
    for (int i = 0; i < m_widthPx; ++i) {
        const int x = m_fromRight ? m_widthPx - 1 - i : i;
        const std::size_t at = static_cast<std::size_t>(x + 1) * 3;
        int wanted[3];
        for (std::size_t c = 0; c < 3; ++c)
            wanted[c] = std::clamp(
                row[static_cast<std::size_t>(x) * 3 + c] + (m_errors[at + c] + 8) / 16, 0, 255);
        const std::uint8_t index = nearest(wanted[0], wanted[1], wanted[2]);
        to[x] = index;
        const std::size_t ahead = static_cast<std::size_t>(x + 1 + step) * 3;
        const std::size_t behind = static_cast<std::size_t>(x + 1 - step) * 3;
        for (std::size_t c = 0; c < 3; ++c) {
            const int error = wanted[c] - m_palette[index][c];
            m_errors[ahead + c] += error * 7;
            m_nextErrors[behind + c] += error * 3;
            m_nextErrors[at + c] += error * 5;
            m_nextErrors[ahead + c] += error;
        }
    }
    m_errors.swap(m_nextErrors);
    m_fromRight = !m_fromRight;
}

} // namespace pagestack
