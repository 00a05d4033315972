#include "engine/image/formats/Encoders.h"
#include "engine/image/formats/gif/ColorQuantizer.h"
#include "engine/image/formats/gif/ErrorDiffusion.h"
#include "engine/image/formats/gif/GifImage.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <vector>

namespace pagestack {

namespace {

    template <int bits>
    void unpackIndexes(const std::uint8_t* row, std::vector<std::uint8_t>& to)
    {
        constexpr std::size_t perByte = 8 / bits;
        for (std::size_t i = 0; i < to.size(); ++i)
            to[i] = static_cast<std::uint8_t>(row[i / perByte] >> (8 - bits * (i % perByte + 1))
                                              & ((1U << bits) - 1));
    }

    /// Rows whose samples are palette indexes or gray levels already.
    void encodeIndexed(RowSource& rows, StagedFile& file)
    {
        const PixelLayout& layout = rows.layout();
        const int bits = layout.bitsPerSample;
        GifImage image(file, rows.widthPx(), rows.heightPx(),
                       layout.model == ColorModel::Palette ? layout.palette : grayPalette(bits),
                       std::nullopt, bits == 1 ? GifImage::Rows::Bits : GifImage::Rows::Bytes);
        const bool isUnpacked = bits == 2 || bits == 4;
        std::vector<std::uint8_t> indexes(isUnpacked ? static_cast<std::size_t>(rows.widthPx())
                                                     : 0);
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
            for (int i = 0; i < band.rows; ++i) {
                if (isUnpacked)
                    (bits == 2 ? unpackIndexes<2> : unpackIndexes<4>)(band.row(i), indexes);
                image.putRow(isUnpacked ? indexes.data() : band.row(i));
            }
        image.finish();
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
        GifImage image(file, width, rows.heightPx(), reduction.palette, reduction.transparentIndex,
                       GifImage::Rows::Bytes);
        std::vector<RgbColor> opaque = reduction.palette;
        if (reduction.transparentIndex)
            opaque.pop_back();
        ErrorDiffusion diffusion(opaque, width);
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
                image.putRow(indexes.data());
            }
        image.finish();
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
