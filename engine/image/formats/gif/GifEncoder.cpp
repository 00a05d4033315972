#include "engine/image/formats/Encoders.h"
#include "engine/image/formats/gif/ColorQuantizer.h"
#include "engine/image/formats/gif/LzwCoder.h"
#include "engine/image/pixels/ErrorDiffusion.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <stdexcept>
#include <vector>

namespace pagestack {

namespace {

    /// Rows whose samples are palette indexes or gray levels already.
    void encodeIndexed(RowSource& rows, StagedFile& file)
    {
        const PixelLayout& layout = rows.layout();
        const int bits = layout.bitsPerSample;
        const auto image
            = startGif(file, rows.widthPx(), rows.heightPx(),
                       layout.model == ColorModel::Palette ? layout.palette : grayPalette(bits),
                       std::nullopt, bits == 1);
        const RowFunction unpack
            = bits == 2 || bits == 4 ? packedToBytes(bits, false) : RowFunction();
        std::vector<std::uint8_t> indexes(unpack ? static_cast<std::size_t>(rows.widthPx()) : 0);
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
            for (int i = 0; i < band.rows; ++i) {
                if (unpack)
                    unpack(band.row(i), indexes.data(), rows.widthPx());
                image->putRow(unpack ? indexes.data() : band.row(i));
            }
        image->finish();
    }

    /// Pixels of a colour page, or of one with alpha, as RGB over white and a flag.
    class ColorPixels
    {
    public:
        ColorPixels(const PixelLayout& layout, int widthPx)
            : m_colors(layout.colorChannels())
            , m_hasAlpha(layout.alpha != AlphaKind::None)
            , m_widthPx(widthPx)
            , m_row(m_colors == 3 && !m_hasAlpha ? 0 : static_cast<std::size_t>(widthPx) * 3)
        {
        }

        bool hasAlpha() const { return m_hasAlpha; }

        bool isTransparent(const std::uint8_t* row, qsizetype x) const
        {
            return m_hasAlpha && row[x * (m_colors + 1) + m_colors] < 128;
        }

        /// The colours of the row, red first; they stay valid until the next call.
        const std::uint8_t* colors(const std::uint8_t* row)
        {
            if (m_row.empty())
                return row;
            std::uint8_t* to = m_row.data();
            for (int x = 0; x < m_widthPx; ++x, row += m_colors + 1)
                for (int c = 0; c < 3; ++c)
                    *to++ = overWhite(row[m_colors == 3 ? c : 0], row[m_colors]);
            return m_row.data();
        }

    private:
        static std::uint8_t overWhite(int value, int alpha)
        {
            return static_cast<std::uint8_t>((value * alpha + 255 * (255 - alpha) + 127) / 255);
        }

        int m_colors;
        bool m_hasAlpha;
        int m_widthPx;
        std::vector<std::uint8_t> m_row;
    };

    constexpr int searchBits = 6;
    constexpr int lost = 8 - searchBits; ///< bits of a channel that are not searched for

    std::uint32_t entryOf(const RgbColor& color, std::size_t index)
    {
        return std::uint32_t { color[0] } << 24U | std::uint32_t { color[1] } << 16U
            | std::uint32_t { color[2] } << 8U | static_cast<std::uint32_t>(index);
    }

    /// Finds palette entries for the pixels of one row after the other by error diffusion.
    class PaletteDiffusion
    {
    public:
        PaletteDiffusion(const std::vector<RgbColor>& palette, int widthPx)
            : m_diffusion(widthPx)
            , m_unknown(~entryOf(palette[0], 255)) // entry 0 does not have this colour
            , m_nearest(std::size_t { 1 } << (3 * searchBits), m_unknown)
        {
            for (const RgbColor& color : palette) {
                m_entries.push_back(entryOf(color, m_entries.size()));
                for (std::size_t c = 0; c < 3; ++c)
                    m_palette[c].push_back(color[c]);
            }
        }

        /// Replaces each RGB pixel of `row` by the index of a palette entry at `to`.
        void mapRow(const std::uint8_t* row, std::uint8_t* to)
        {
            using Color = ErrorDiffusion<3>::Color;
            m_diffusion.mapRow(row, to, [this](const Color& wanted, Color& chosen) {
                std::size_t cell = 0;
                for (const int value : wanted)
                    cell = cell << searchBits | static_cast<std::size_t>(value >> lost);
                if (m_nearest[cell] == m_unknown)
                    findNearest(cell);
                const Entry entry = m_nearest[cell];
                for (std::size_t c = 0; c < 3; ++c)
                    chosen[c] = static_cast<int>(entry >> (24 - 8 * c) & 255U);
                return entry & 255U;
            });
        }

    private:
        /// Red, green, blue and index of a palette entry, from the highest byte on.
        using Entry = std::uint32_t;

        /// Looks for the palette entry that is nearest to the middle of a cell, so that the answer
        /// does not depend on which colour of the cell came first.
        void findNearest(std::size_t cell)
        {
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
            m_nearest[cell] = m_entries[static_cast<std::size_t>(least & 255)];
        }

        ErrorDiffusion<3> m_diffusion;
        std::vector<Entry> m_entries;
        std::array<std::vector<std::int16_t>, 3> m_palette; ///< by channel
        Entry m_unknown; ///< stands for an entry that was not looked for yet
        std::vector<Entry> m_nearest; ///< by 6 bits a channel
    };

    struct Reduction
    {
        std::vector<RgbColor> palette;
        std::optional<int> transparentIndex;
        bool isExact = true;
    };

    /// The first pass: which colours there are.
    Reduction chooseColors(RowSource& rows)
    {
        const int width = rows.widthPx();
        ColorPixels pixels(rows.layout(), width);
        ColorQuantizer quantizer;
        bool isTransparent = false;
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
            for (int i = 0; i < band.rows; ++i) {
                const std::uint8_t* const row = band.row(i);
                const std::uint8_t* const colors = pixels.colors(row);
                if (!pixels.hasAlpha()) {
                    quantizer.add(colors, width);
                    continue;
                }
                for (qsizetype x = 0; x < width; ++x)
                    if (pixels.isTransparent(row, x))
                        isTransparent = true;
                    else
                        quantizer.add(colors + 3 * x, 1);
            }
        const int mostColors = isTransparent ? 255 : 256;
        Reduction reduction { quantizer.palette(mostColors), std::nullopt,
                              quantizer.isExact(mostColors) };
        if (isTransparent) {
            reduction.transparentIndex = static_cast<int>(reduction.palette.size());
            reduction.palette.push_back({ 255, 255, 255 });
        }
        return reduction;
    }

    /// The indexes of the row's colours in `palette`, which is sorted; of transparent pixels, any.
    /// Throws std::runtime_error when a colour is missing.
    void findIndexes(const std::vector<RgbColor>& palette, ColorPixels& pixels,
                     const std::uint8_t* row, std::vector<std::uint8_t>& to)
    {
        const std::uint8_t* colors = pixels.colors(row);
        bool isFound = false;
        for (std::size_t x = 0; x < to.size(); ++x, colors += 3) {
            if (x > 0 && std::equal(colors, colors + 3, colors - 3)) {
                to[x] = to[x - 1];
            } else {
                const RgbColor color { colors[0], colors[1], colors[2] };
                const auto found = std::lower_bound(palette.begin(), palette.end(), color);
                isFound = found != palette.end() && *found == color;
                to[x] = isFound ? static_cast<std::uint8_t>(found - palette.begin()) : 0;
            }
            if (!isFound && !pixels.isTransparent(row, static_cast<qsizetype>(x)))
                throw std::runtime_error("the pixels changed while they were read");
        }
    }

    /// The second pass: the indexes of the colours.
    void encodeReduced(RowSource& rows, const Reduction& reduction, StagedFile& file)
    {
        const int width = rows.widthPx();
        ColorPixels pixels(rows.layout(), width);
        const auto image = startGif(file, width, rows.heightPx(), reduction.palette,
                                    reduction.transparentIndex, false);
        std::vector<RgbColor> opaque = reduction.palette;
        if (reduction.transparentIndex)
            opaque.pop_back();
        PaletteDiffusion diffusion(opaque, width);
        std::vector<std::uint8_t> indexes(static_cast<std::size_t>(width));
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
            for (int i = 0; i < band.rows; ++i) {
                const std::uint8_t* const row = band.row(i);
                if (reduction.isExact)
                    findIndexes(opaque, pixels, row, indexes);
                else
                    diffusion.mapRow(pixels.colors(row), indexes.data());
                for (qsizetype x = 0; reduction.transparentIndex && x < width; ++x)
                    if (pixels.isTransparent(row, x))
                        indexes[static_cast<std::size_t>(x)]
                            = static_cast<std::uint8_t>(*reduction.transparentIndex);
                image->putRow(indexes.data());
            }
        image->finish();
    }

} // namespace

void encodeGif(UprightPage& page, StagedFile& file)
{
    const PixelLayout& layout = page.rows->layout();
    if (layout.model != ColorModel::Rgb && layout.alpha == AlphaKind::None) {
        encodeIndexed(*page.rows, file);
        return;
    }
    const Reduction reduction = chooseColors(*page.rows);
    page.rows.reset(); // passes over one file cannot overlap
    page.rows = page.startPass();
    encodeReduced(*page.rows, reduction, file);
}

} // namespace pagestack
