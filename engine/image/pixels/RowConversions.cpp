#include "engine/image/pixels/RowConversions.h"

#include "engine/image/pixels/SampleMath.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

namespace pagestack {

namespace {

    /// Whole packed bytes at a time.
    template <int bits>
    RowFunction samplesToBytes(bool isGray)
    {
        constexpr unsigned top = (1U << bits) - 1U;
        constexpr std::size_t perByte = 8 / bits;
        std::array<std::array<std::uint8_t, perByte>, 256> table {};
        for (unsigned byte = 0; byte < table.size(); ++byte)
            for (std::size_t i = 0; i < perByte; ++i) {
                const unsigned value = byte >> (8 - bits * (i + 1)) & top;
                table[byte][i] = static_cast<std::uint8_t>(isGray ? value * 255U / top : value);
            }
        return [table](const std::uint8_t* from, std::uint8_t* to, int pixels) {
            const auto whole = static_cast<std::size_t>(pixels) / perByte;
            for (std::size_t i = 0; i < whole; ++i)
                std::memcpy(to + i * perByte, table[from[i]].data(), perByte);
            if (const auto rest = static_cast<std::size_t>(pixels) % perByte; rest != 0)
                std::memcpy(to + whole * perByte, table[from[whole]].data(), rest);
        };
    }

    std::unique_ptr<RowSource> widened(std::unique_ptr<RowSource> rows)
    {
        PixelLayout layout = rows->layout();
        const int bits = layout.bitsPerSample;
        layout.bitsPerSample = 8;
        const bool isGray = layout.model == ColorModel::Gray;
        if (!isGray)
            layout.palette.resize(256);
        return steppedRows(std::move(rows), layout, packedToBytes(bits, isGray));
    }

    std::unique_ptr<RowSource> withoutPalette(std::unique_ptr<RowSource> rows)
    {
        if (rows->layout().bitsPerSample < 8)
            rows = widened(std::move(rows));
        const std::vector<RgbColor> palette = rows->layout().palette;
        const bool isGray = std::all_of(palette.begin(), palette.end(), [](const RgbColor& color) {
            return color[0] == color[1] && color[1] == color[2];
        });
        PixelLayout layout;
        layout.model = isGray ? ColorModel::Gray : ColorModel::Rgb;
        const auto channels = static_cast<std::size_t>(layout.channels());
        return steppedRows(
            std::move(rows), layout,
            [palette, channels](const std::uint8_t* from, std::uint8_t* to, int pixels) {
                for (int i = 0; i < pixels; ++i) {
                    std::memcpy(to, palette[from[i]].data(), channels);
                    to += channels;
                }
            });
    }

    /// `value` * `alpha` / full scale, rounded.
    template <typename Sample>
    std::uint32_t scaledBy(Sample value, Sample alpha)
    {
        constexpr std::uint32_t top = static_cast<Sample>(~Sample { 0 });
        return static_cast<std::uint32_t>((std::uint64_t { value } * alpha + top / 2) / top);
    }

    template <typename Sample>
    Sample overWhite(Sample value, Sample alpha, bool isPremultiplied)
    {
        constexpr std::uint32_t top = static_cast<Sample>(~Sample { 0 });
        const std::uint32_t own = isPremultiplied ? value : scaledBy(value, alpha);
        return static_cast<Sample>(std::min(top, own + (top - alpha)));
    }

    template <typename Sample>
    Sample dividedOut(Sample value, Sample alpha)
    {
        constexpr std::uint64_t top = static_cast<Sample>(~Sample { 0 });
        if (alpha == 0)
            return 0;
        return static_cast<Sample>(
            std::min(top, (std::uint64_t { value } * top + alpha / 2U) / alpha));
    }

    /// Makes each colour of `make(colour, alpha)`; the pixels keep their alpha if they are to.
    template <typename Sample, typename Make>
    RowFunction withEachColor(int colors, bool keepsAlpha, Make make)
    {
        const std::size_t fromBytes = sizeof(Sample) * static_cast<unsigned>(colors + 1);
        const std::size_t toBytes = fromBytes - (keepsAlpha ? 0 : sizeof(Sample));
        return [=](const std::uint8_t* from, std::uint8_t* to, int pixels) {
            for (int i = 0; i < pixels; ++i, from += fromBytes, to += toBytes) {
                Sample samples[4];
                std::memcpy(samples, from, fromBytes);
                for (int c = 0; c < colors; ++c)
                    samples[c] = make(samples[c], samples[colors]);
                std::memcpy(to, samples, toBytes);
            }
        };
    }

    /// Lays the pixels over white, or makes their alpha straight.
    template <typename Sample>
    RowFunction alphaStep(int colors, AlphaKind from, AlphaKind to)
    {
        if (to == AlphaKind::Straight)
            return withEachColor<Sample>(
                colors, true, [](Sample value, Sample alpha) { return dividedOut(value, alpha); });
        const bool isPremultiplied = from == AlphaKind::Premultiplied;
        return withEachColor<Sample>(colors, false, [=](Sample value, Sample alpha) {
            return overWhite(value, alpha, isPremultiplied);
        });
    }

    std::unique_ptr<RowSource> withAlpha(std::unique_ptr<RowSource> rows, AlphaKind kind)
    {
        PixelLayout layout = rows->layout();
        const AlphaKind from = std::exchange(layout.alpha, kind);
        const int colors = layout.colorChannels();
        RowFunction step = layout.bitsPerSample == 8 ? alphaStep<std::uint8_t>(colors, from, kind)
                                                     : alphaStep<std::uint16_t>(colors, from, kind);
        return steppedRows(std::move(rows), layout, std::move(step));
    }

    std::unique_ptr<RowSource> reducedTo8Bits(std::unique_ptr<RowSource> rows)
    {
        PixelLayout layout = rows->layout();
        layout.bitsPerSample = 8;
        const int channels = layout.channels();
        return steppedRows(std::move(rows), layout,
                           [channels](const std::uint8_t* from, std::uint8_t* to, int pixels) {
                               for (qsizetype i = 0; i < qsizetype { pixels } * channels; ++i)
                                   to[i] = toByte(loadSample<std::uint16_t>(from + 2 * i));
                           });
    }

} // namespace

RowFunction packedToBytes(int bits, bool isGray)
{
    return bits == 1 ? samplesToBytes<1>(isGray)
        : bits == 2  ? samplesToBytes<2>(isGray)
                     : samplesToBytes<4>(isGray);
}

std::unique_ptr<RowSource> adaptRows(std::unique_ptr<RowSource> rows, const TargetPixels& target)
{
    if (rows->layout().model == ColorModel::Palette && !target.takesPalette)
        rows = withoutPalette(std::move(rows));
    const int bits = rows->layout().bitsPerSample;
    if ((bits == 1 && !target.takes1Bit) || ((bits == 2 || bits == 4) && !target.takes2And4Bits))
        rows = widened(std::move(rows));
    if (rows->layout().alpha != AlphaKind::None && !target.takesAlpha)
        rows = withAlpha(std::move(rows), AlphaKind::None);
    else if (rows->layout().alpha == AlphaKind::Premultiplied)
        rows = withAlpha(std::move(rows), AlphaKind::Straight);
    if (rows->layout().bitsPerSample == 16 && !target.takes16Bits)
        rows = reducedTo8Bits(std::move(rows));
    return rows;
}

} // namespace pagestack
