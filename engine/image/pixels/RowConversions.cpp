#include "engine/image/pixels/RowConversions.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <vector>

namespace pagestack {

namespace {

    using RowFunction = std::function<void(const std::uint8_t* from, std::uint8_t* to, int pixels)>;

    /// What was made of a part of a band stays in the cache until it is used.
    constexpr qsizetype wantedPartBytes = qsizetype { 128 } * 1024;

    /// Another source's rows, each put through a function that gives rows of another layout.
    class SteppedRows : public RowSource
    {
    public:
        SteppedRows(std::unique_ptr<RowSource> source, PixelLayout layout, RowFunction step)
            : m_source(std::move(source))
            , m_layout(std::move(layout))
            , m_step(std::move(step))
            , m_strideBytes(m_layout.rowBytes(m_source->widthPx()))
            , m_mostRows(static_cast<int>(std::max<qsizetype>(1, wantedPartBytes / m_strideBytes)))
            , m_samples(static_cast<std::size_t>(m_mostRows * m_strideBytes))
        {
        }
        int widthPx() const override { return m_source->widthPx(); }
        int heightPx() const override { return m_source->heightPx(); }
        const PixelLayout& layout() const override { return m_layout; }

        Band nextBand() override
        {
            if (m_done == m_band.rows) {
                m_band = m_source->nextBand();
                m_done = 0;
            }
            const int rows = std::min(m_mostRows, m_band.rows - m_done);
            for (int i = 0; i < rows; ++i)
                m_step(m_band.row(m_done + i), m_samples.data() + i * m_strideBytes, widthPx());
            m_done += rows;
            return { m_samples.data(), rows, m_strideBytes };
        }

    private:
        std::unique_ptr<RowSource> m_source;
        PixelLayout m_layout;
        RowFunction m_step;
        qsizetype m_strideBytes;
        int m_mostRows; ///< of a band
        std::vector<std::uint8_t> m_samples;
        Band m_band; ///< of the source
        int m_done = 0; ///< rows of `m_band` that were handed out
    };

    /// Calls `use(pixel index, value)` for every packed sample of a row.
    template <typename Use>
    void forEachPacked(const std::uint8_t* from, int bits, int pixels, Use use)
    {
        const int perByte = 8 / bits;
        const unsigned mask = (1U << static_cast<unsigned>(bits)) - 1U;
        for (int i = 0; i < pixels; ++i) {
            const int shift = 8 - bits * (i % perByte + 1);
            use(i,
                (static_cast<unsigned>(from[i / perByte]) >> static_cast<unsigned>(shift)) & mask);
        }
    }

    /// Gray samples to bytes, those of a whole packed byte at a time.
    template <int bits>
    RowFunction grayToBytes()
    {
        constexpr unsigned top = (1U << bits) - 1U;
        constexpr std::size_t perByte = 8 / bits;
        std::array<std::array<std::uint8_t, perByte>, 256> table {};
        for (unsigned byte = 0; byte < 256; ++byte) {
            const auto packed = static_cast<std::uint8_t>(byte);
            forEachPacked(&packed, bits, static_cast<int>(perByte), [&](int i, unsigned value) {
                table[byte][static_cast<std::size_t>(i)]
                    = static_cast<std::uint8_t>(value * 255U / top);
            });
        }
        return [table](const std::uint8_t* from, std::uint8_t* to, int pixels) {
            const auto whole = static_cast<std::size_t>(pixels) / perByte;
            for (std::size_t i = 0; i < whole; ++i)
                std::memcpy(to + i * perByte, table[from[i]].data(), perByte);
            if (const auto rest = static_cast<std::size_t>(pixels) % perByte; rest != 0)
                std::memcpy(to + whole * perByte, table[from[whole]].data(), rest);
        };
    }

    RowFunction grayToBytes(int bits)
    {
        return bits == 1 ? grayToBytes<1>() : bits == 2 ? grayToBytes<2>() : grayToBytes<4>();
    }

    RowFunction indexesToBytes(int bits)
    {
        return [bits](const std::uint8_t* from, std::uint8_t* to, int pixels) {
            forEachPacked(from, bits, pixels, [to](int i, unsigned value) {
                to[i] = static_cast<std::uint8_t>(value);
            });
        };
    }

    std::unique_ptr<RowSource> widened(std::unique_ptr<RowSource> rows)
    {
        PixelLayout layout = rows->layout();
        const int bits = layout.bitsPerSample;
        layout.bitsPerSample = 8;
        if (layout.model == ColorModel::Palette) {
            layout.palette.resize(256);
            return std::make_unique<SteppedRows>(std::move(rows), layout, indexesToBytes(bits));
        }
        return std::make_unique<SteppedRows>(std::move(rows), layout, grayToBytes(bits));
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
        return std::make_unique<SteppedRows>(
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

    /// Lays the pixels over white: the rows lose their alpha.
    template <typename Sample>
    RowFunction flattened(int colors, bool isPremultiplied)
    {
        return [colors, isPremultiplied](const std::uint8_t* from, std::uint8_t* to, int pixels) {
            for (int i = 0; i < pixels; ++i) {
                Sample in[4];
                Sample out[3];
                std::memcpy(in, from, sizeof(Sample) * static_cast<unsigned>(colors + 1));
                for (int c = 0; c < colors; ++c)
                    out[c] = overWhite(in[c], in[colors], isPremultiplied);
                std::memcpy(to, out, sizeof(Sample) * static_cast<unsigned>(colors));
                from += sizeof(Sample) * static_cast<unsigned>(colors + 1);
                to += sizeof(Sample) * static_cast<unsigned>(colors);
            }
        };
    }

    template <typename Sample>
    RowFunction straightened(int colors)
    {
        return [colors](const std::uint8_t* from, std::uint8_t* to, int pixels) {
            const std::size_t pixelBytes = sizeof(Sample) * static_cast<unsigned>(colors + 1);
            for (int i = 0; i < pixels; ++i) {
                Sample samples[4];
                std::memcpy(samples, from, pixelBytes);
                for (int c = 0; c < colors; ++c)
                    samples[c] = dividedOut(samples[c], samples[colors]);
                std::memcpy(to, samples, pixelBytes);
                from += pixelBytes;
                to += pixelBytes;
            }
        };
    }

    std::unique_ptr<RowSource> withoutAlpha(std::unique_ptr<RowSource> rows)
    {
        PixelLayout layout = rows->layout();
        const bool isPremultiplied = layout.alpha == AlphaKind::Premultiplied;
        layout.alpha = AlphaKind::None;
        const int colors = layout.colorChannels();
        RowFunction step = layout.bitsPerSample == 8
            ? flattened<std::uint8_t>(colors, isPremultiplied)
            : flattened<std::uint16_t>(colors, isPremultiplied);
        return std::make_unique<SteppedRows>(std::move(rows), layout, std::move(step));
    }

    std::unique_ptr<RowSource> withStraightAlpha(std::unique_ptr<RowSource> rows)
    {
        PixelLayout layout = rows->layout();
        layout.alpha = AlphaKind::Straight;
        const int colors = layout.colorChannels();
        RowFunction step = layout.bitsPerSample == 8 ? straightened<std::uint8_t>(colors)
                                                     : straightened<std::uint16_t>(colors);
        return std::make_unique<SteppedRows>(std::move(rows), layout, std::move(step));
    }

    std::unique_ptr<RowSource> reducedTo8Bits(std::unique_ptr<RowSource> rows)
    {
        PixelLayout layout = rows->layout();
        layout.bitsPerSample = 8;
        const int channels = layout.channels();
        return std::make_unique<SteppedRows>(
            std::move(rows), layout,
            [channels](const std::uint8_t* from, std::uint8_t* to, int pixels) {
                for (qsizetype i = 0; i < qsizetype { pixels } * channels; ++i) {
                    std::uint16_t wide = 0;
                    std::memcpy(&wide, from + 2 * i, sizeof wide);
                    to[i] = static_cast<std::uint8_t>((wide * 255U + 32767U) / 65535U);
                }
            });
    }

} // namespace

std::unique_ptr<RowSource> adaptRows(std::unique_ptr<RowSource> rows, const TargetPixels& target)
{
    if (rows->layout().model == ColorModel::Palette && !target.takesPalette)
        rows = withoutPalette(std::move(rows));
    const int bits = rows->layout().bitsPerSample;
    if ((bits == 1 && !target.takes1Bit) || ((bits == 2 || bits == 4) && !target.takes2And4Bits))
        rows = widened(std::move(rows));
    if (rows->layout().alpha != AlphaKind::None && !target.takesAlpha)
        rows = withoutAlpha(std::move(rows));
    else if (rows->layout().alpha == AlphaKind::Premultiplied)
        rows = withStraightAlpha(std::move(rows));
    if (rows->layout().bitsPerSample == 16 && !target.takes16Bits)
        rows = reducedTo8Bits(std::move(rows));
    return rows;
}

} // namespace pagestack
