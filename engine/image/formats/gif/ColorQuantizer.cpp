#include "engine/image/formats/gif/ColorQuantizer.h"

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

    int cellOf(int value) { return (value >> (8 - cellBits)) + 1; }

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
    return (static_cast<std::size_t>(red) * side + static_cast<unsigned>(green)) * side
        + static_cast<unsigned>(blue);
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
        ++cell.count;
        cell.sum[0] += red;
        cell.sum[1] += green;
        cell.sum[2] += blue;
        cell.squares += red * red + green * green + blue * blue;
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
    std::vector<std::uint32_t> colors;
    colors.reserve(m_colors.size());
    for (const auto& [color, pixels] : m_colors)
        colors.push_back(color);
    std::sort(colors.begin(), colors.end());
    std::vector<RgbColor> palette;
    palette.reserve(colors.size());
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
    return static_cast<double>(moments.squares) - meanPart / static_cast<double>(moments.count);
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

ErrorDiffusion::ErrorDiffusion(const std::vector<RgbColor>& palette, int widthPx)
    : m_widthPx(widthPx)
    , m_errors(static_cast<std::size_t>(widthPx + 2) * 3)
    , m_nextErrors(m_errors.size())
    , m_unknown(~packed(palette[0]) << 8U) // entry 0 does not have this colour
    , m_nearest(std::size_t { 1 } << (3 * searchBits), m_unknown)
{
    for (std::size_t c = 0; c < 3; ++c)
        for (const RgbColor& color : palette)
            m_palette[c].push_back(color[c]);
}

/// Looks for the palette entry that is nearest to the middle of a cell, so that the answer does not
/// depend on which colour of the cell came first.
void ErrorDiffusion::findNearest(std::size_t cell)
{
    constexpr int lost = 8 - searchBits;
    std::array<std::int16_t, 3> middle {};
    for (std::size_t c = 0; c < 3; ++c)
        middle[c] = static_cast<std::int16_t>(
            ((cell >> (searchBits * (2 - c)) & ((1U << searchBits) - 1)) << lost)
            + (1U << lost) / 2);
    int least = std::numeric_limits<int>::max();
    const auto entries = static_cast<int>(m_palette[0].size());
    for (int i = 0; i < entries; ++i) {
        int distance = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            const auto off = static_cast<std::int16_t>(m_palette[c].data()[i] - middle[c]);
            distance += off * off;
        }
        least = std::min(least, distance << 8 | i); // of equal distances the first
    }
    const auto index = static_cast<std::size_t>(least & 255);
    m_nearest[cell] = static_cast<Entry>(index);
    for (std::size_t c = 0; c < 3; ++c)
        m_nearest[cell] |= static_cast<Entry>(m_palette[c][index]) << (24 - 8 * c);
}

void ErrorDiffusion::mapRow(const std::uint8_t* row, std::uint8_t* to)
{
    if (m_fromRight)
        mapInDirection<-1>(row, to);
    else
        mapInDirection<1>(row, to);
    m_errors.swap(m_nextErrors);
    m_fromRight = !m_fromRight;
}

template <int step>
void ErrorDiffusion::mapInDirection(const std::uint8_t* row, std::uint8_t* to)
{
    constexpr int lost = 8 - searchBits;
    // What is spread goes from pixel to pixel in variables; the next row gets each sum once.
    std::array<int, 3> ahead {}; // for the next pixel
    std::array<int, 3> behind {}; // for the pixel behind, in the next row
    std::array<int, 3> below {};
    for (int i = 0, x = step > 0 ? 0 : m_widthPx - 1; i < m_widthPx; ++i, x += step) {
        const std::uint8_t* const pixel = row + 3 * qsizetype { x };
        const int* const errors = m_errors.data() + 3 * qsizetype { x + 1 };
        int* const nextBehind = m_nextErrors.data() + 3 * qsizetype { x + 1 - step };
        std::array<int, 3> wanted {};
        std::size_t cell = 0;
        for (std::size_t c = 0; c < 3; ++c) {
            wanted[c] = std::clamp(pixel[c] + (errors[c] + ahead[c] + 8) / 16, 0, 255);
            cell = cell << searchBits | static_cast<std::size_t>(wanted[c] >> lost);
        }
        if (m_nearest[cell] == m_unknown)
            findNearest(cell);
        const Entry entry = m_nearest[cell];
        to[x] = static_cast<std::uint8_t>(entry);
        for (std::size_t c = 0; c < 3; ++c) {
            const int error = wanted[c] - static_cast<int>(entry >> (24 - 8 * c) & 255U);
            ahead[c] = error * 7;
            nextBehind[c] = behind[c] + error * 3;
            behind[c] = below[c] + error * 5;
            below[c] = error;
        }
    }
    const qsizetype last = step > 0 ? m_widthPx - 1 : 0;
    std::copy(behind.begin(), behind.end(), m_nextErrors.begin() + 3 * (last + 1));
}

} // namespace pagestack
