#include "engine/image/pixels/BilevelRows.h"

#include "engine/image/pixels/ErrorDiffusion.h"
#include "engine/image/pixels/RowConversions.h"
#include "engine/threads/StopScope.h"

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::size_t levels = 256;

    std::uint8_t luminance(const std::uint8_t* rgb)
    {
        return static_cast<std::uint8_t>((299U * rgb[0] + 587U * rgb[1] + 114U * rgb[2] + 500U)
                                         / 1000U);
    }

    /// Packs a byte a pixel, each put through `isWhite`, the first pixel in the highest bit.
    template <typename IsWhite>
    void packBits(const std::uint8_t* from, std::uint8_t* to, int pixels, IsWhite isWhite)
    {
        const auto pack = [&](int count) {
            unsigned bits = 0;
            for (int i = 0; i < count; ++i)
                bits |= (isWhite(from[i]) ? 0x80U : 0U) >> static_cast<unsigned>(i);
            return static_cast<std::uint8_t>(bits);
        };
        for (; pixels >= 8; pixels -= 8, from += 8)
            *to++ = pack(8);
        if (pixels > 0)
            *to = pack(pixels);
    }

    std::unique_ptr<RowSource> packedRows(std::unique_ptr<RowSource> rows, RowFunction step)
    {
        PixelLayout layout;
        layout.bitsPerSample = 1;
        return steppedRows(std::move(rows), layout, std::move(step));
    }

    std::array<std::uint64_t, levels> countLevels(RowSource& rows)
    {
        std::array<std::uint64_t, levels> counts {};
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand()) {
            StopScope::leavePageIfStopped();
            for (int i = 0; i < band.rows; ++i)
                for (qsizetype x = 0; x < rows.widthPx(); ++x)
                    ++counts[band.row(i)[x]];
        }
        return counts;
    }

} // namespace

std::unique_ptr<RowSource> luminanceRows(std::unique_ptr<RowSource> rows)
{
    rows = adaptRows(std::move(rows), {});
    if (rows->layout().model == ColorModel::Gray)
        return rows;
    return steppedRows(std::move(rows), {},
                       [](const std::uint8_t* from, std::uint8_t* to, int pixels) {
                           for (int i = 0; i < pixels; ++i, from += 3)
                               to[i] = luminance(from);
                       });
}

int otsuThreshold(RowSource& luminance)
{
    const std::array<std::uint64_t, levels> counts = countLevels(luminance);
    double pixels = 0;
    double sum = 0;
    for (std::size_t level = 0; level < levels; ++level) {
        pixels += static_cast<double>(counts[level]);
        sum += static_cast<double>(level) * static_cast<double>(counts[level]);
    }
    double best = 0;
    int found = 128;
    double darkPixels = 0;
    double darkSum = 0;
    for (std::size_t threshold = 1; threshold < levels; ++threshold) {
        darkPixels += static_cast<double>(counts[threshold - 1]);
        darkSum += static_cast<double>(threshold - 1) * static_cast<double>(counts[threshold - 1]);
        if (darkPixels == 0 || darkPixels == pixels)
            continue;
        const double difference = darkSum / darkPixels - (sum - darkSum) / (pixels - darkPixels);
        const double between = darkPixels * (pixels - darkPixels) * difference * difference;
        if (between > best) {
            best = between;
            found = static_cast<int>(threshold);
        }
    }
    return found;
}

std::unique_ptr<RowSource> thresholdRows(std::unique_ptr<RowSource> luminance, int threshold)
{
    return packedRows(std::move(luminance),
                      [threshold](const std::uint8_t* from, std::uint8_t* to, int pixels) {
                          packBits(from, to, pixels,
                                   [threshold](std::uint8_t level) { return level >= threshold; });
                      });
}

std::unique_ptr<RowSource> ditheredRows(std::unique_ptr<RowSource> luminance)
{
    const int widthPx = luminance->widthPx();
    return packedRows(
        std::move(luminance),
        [diffusion = ErrorDiffusion<1>(widthPx),
         whites = std::vector<std::uint8_t>(static_cast<std::size_t>(widthPx))](
            const std::uint8_t* from, std::uint8_t* to, int pixels) mutable {
            using Color = ErrorDiffusion<1>::Color;
            diffusion.mapRow(from, whites.data(), [](const Color& wanted, Color& chosen) {
                const bool isWhite = wanted[0] >= 128;
                chosen[0] = isWhite ? 255 : 0;
                return isWhite;
            });
            packBits(whites.data(), to, pixels, [](std::uint8_t white) { return white != 0; });
        });
}

} // namespace pagestack
