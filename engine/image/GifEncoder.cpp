#include "engine/image/ColorQuantizer.h"
#include "engine/image/Encoders.h"

#include <gif_lib.h>

#include <algorithm>
#include <exception>
#include <optional>
#include <stdexcept>
#include <vector>

namespace pagestack {

namespace {

    constexpr int largestSidePx = 65535;

    struct GifTarget
    {
        StagedFile* file = nullptr;
        std::exception_ptr failure;
    };

    int writeBytes(GifFileType* codec, const GifByteType* bytes, int count)
    {
        auto* target = static_cast<GifTarget*>(codec->UserData);
        try {
            target->file->write({ bytes, static_cast<std::size_t>(count) });
            return count;
        } catch (const std::runtime_error&) {
            target->failure = std::current_exception();
            return 0;
        }
    }

    struct ColorMapFreer
    {
        void operator()(ColorMapObject* map) const noexcept { GifFreeMapObject(map); }
    };

    /// One GIF image of which rows of indexes are written from the top on.
    class GifImage
    {
    public:
        GifImage(StagedFile& file, int widthPx, int heightPx, const std::vector<RgbColor>& palette,
                 std::optional<int> transparentIndex)
        {
            m_target.file = &file;
            int error = 0;
            m_codec = EGifOpen(&m_target, writeBytes, &error);
            if (m_codec == nullptr)
                fail(error);
            EGifSetGifVersion(m_codec, true);
            int tableSize = 2;
            while (tableSize < static_cast<int>(palette.size()))
                tableSize *= 2;
            const std::unique_ptr<ColorMapObject, ColorMapFreer> map(
                GifMakeMapObject(tableSize, nullptr));
            if (!map)
                throw std::bad_alloc();
            for (std::size_t i = 0; i < palette.size(); ++i)
                map->Colors[i] = { palette[i][0], palette[i][1], palette[i][2] };
            check(EGifPutScreenDesc(m_codec, widthPx, heightPx, 8, 0, map.get()));
            if (transparentIndex) {
                GraphicsControlBlock control = {};
                control.TransparentColor = *transparentIndex;
                GifByteType bytes[4];
                check(EGifPutExtension(m_codec, GRAPHICS_EXT_FUNC_CODE,
                                       static_cast<int>(EGifGCBToExtension(&control, bytes)),
                                       bytes));
            }
            check(EGifPutImageDesc(m_codec, 0, 0, widthPx, heightPx, false, nullptr));
        }
        ~GifImage()
        {
            int error = 0;
            if (m_codec != nullptr)
                EGifCloseFile(m_codec, &error);
        }
        GifImage(const GifImage&) = delete;
        GifImage& operator=(const GifImage&) = delete;

        void putRow(std::vector<std::uint8_t>& indexes)
        {
            check(EGifPutLine(m_codec, indexes.data(), static_cast<int>(indexes.size())));
        }

        void finish()
        {
            int error = 0;
            GifFileType* codec = std::exchange(m_codec, nullptr);
            if (EGifCloseFile(codec, &error) == GIF_ERROR || m_target.failure)
                fail(error);
        }

    private:
        void check(int result)
        {
            if (result == GIF_ERROR || m_target.failure)
                fail(m_codec->Error);
        }

        [[noreturn]] void fail(int error)
        {
            if (m_target.failure)
                std::rethrow_exception(m_target.failure);
            const char* text = GifErrorString(error);
            throw std::runtime_error(text != nullptr ? text : "the GIF encoder failed");
        }

        GifTarget m_target;
        GifFileType* m_codec = nullptr;
    };

    std::vector<RgbColor> grayPalette(int bits)
    {
        const int last = (1 << bits) - 1;
        std::vector<RgbColor> palette;
        for (int i = 0; i <= last; ++i) {
            const auto level = static_cast<std::uint8_t>(i * 255 / last);
            palette.push_back({ level, level, level });
        }
        return palette;
    }

    void unpackIndexes(const std::uint8_t* row, int bits, std::vector<std::uint8_t>& to)
    {
        const auto perByte = static_cast<std::size_t>(8 / bits);
        for (std::size_t i = 0; i < to.size(); ++i)
            to[i] = static_cast<std::uint8_t>(
                (row[i / perByte] >> (8 - static_cast<std::size_t>(bits) * (i % perByte + 1)))
                & ((1 << bits) - 1));
    }

    /// Rows whose samples are palette indexes or gray levels already.
    void encodeIndexed(RowSource& rows, StagedFile& file)
    {
        const PixelLayout& layout = rows.layout();
        GifImage image(file, rows.widthPx(), rows.heightPx(),
                       layout.model == ColorModel::Palette ? layout.palette
                                                           : grayPalette(layout.bitsPerSample),
                       std::nullopt);
        std::vector<std::uint8_t> indexes(static_cast<std::size_t>(rows.widthPx()));
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
            for (int i = 0; i < band.rows; ++i) {
                unpackIndexes(band.row(i), layout.bitsPerSample, indexes);
                image.putRow(indexes);
            }
        image.finish();
    }

    /// Pixels of a colour page, or of one with alpha, as RGB over white and a flag.
    class ColorPixels
    {
    public:
        explicit ColorPixels(const PixelLayout& layout)
            : m_colors(layout.colorChannels())
            , m_hasAlpha(layout.alpha != AlphaKind::None)
        {
        }

        bool hasAlpha() const { return m_hasAlpha; }

        bool isTransparent(const std::uint8_t* pixel) const
        {
            return m_hasAlpha && pixel[m_colors] < 128;
        }

        RgbColor color(const std::uint8_t* pixel) const
        {
            RgbColor color
                = { pixel[0], pixel[m_colors == 3 ? 1 : 0], pixel[m_colors == 3 ? 2 : 0] };
            if (m_hasAlpha)
                for (std::uint8_t& channel : color)
                    channel = static_cast<std::uint8_t>(
                        (channel * pixel[m_colors] + 255 * (255 - pixel[m_colors]) + 127) / 255);
            return color;
        }

        int pixelBytes() const { return m_colors + (m_hasAlpha ? 1 : 0); }

    private:
        int m_colors;
        bool m_hasAlpha;
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
        const ColorPixels pixels(rows.layout());
        ColorQuantizer quantizer;
        bool isTransparent = false;
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
            for (int i = 0; i < band.rows; ++i)
                for (qsizetype x = 0; x < rows.widthPx(); ++x) {
                    const std::uint8_t* pixel = band.row(i) + x * pixels.pixelBytes();
                    if (pixels.isTransparent(pixel))
                        isTransparent = true;
                    else
                        quantizer.add(pixels.color(pixel));
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

    /// The second pass: the indexes of the colours.
    void encodeReduced(RowSource& rows, const Reduction& reduction, StagedFile& file)
    {
        const ColorPixels pixels(rows.layout());
        const int width = rows.widthPx();
        GifImage image(file, width, rows.heightPx(), reduction.palette, reduction.transparentIndex);
        std::vector<RgbColor> opaque = reduction.palette;
        if (reduction.transparentIndex)
            opaque.pop_back();
        ErrorDiffusion diffusion(opaque, width);
        std::vector<std::uint8_t> colors(static_cast<std::size_t>(width) * 3);
        std::vector<std::uint8_t> indexes(static_cast<std::size_t>(width));
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
            for (int i = 0; i < band.rows; ++i) {
                for (qsizetype x = 0; x < width; ++x) {
                    const RgbColor color = pixels.color(band.row(i) + x * pixels.pixelBytes());
                    std::copy(color.begin(), color.end(), colors.begin() + x * 3);
                    if (reduction.isExact) // palettes of exact pages are sorted by colour
                        indexes[static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(
                            std::lower_bound(opaque.begin(), opaque.end(), color) - opaque.begin());
                }
                if (!reduction.isExact)
                    diffusion.mapRow(colors.data(), indexes.data());
                for (qsizetype x = 0; reduction.transparentIndex && x < width; ++x)
                    if (pixels.isTransparent(band.row(i) + x * pixels.pixelBytes()))
                        indexes[static_cast<std::size_t>(x)]
                            = static_cast<std::uint8_t>(*reduction.transparentIndex);
                image.putRow(indexes);
            }
        image.finish();
    }

} // namespace

TargetPixels gifPixels()
{
    TargetPixels target;
    target.takesPalette = true;
    target.takesAlpha = true;
    target.takes1Bit = true;
    target.takes2And4Bits = true;
    return target;
}

void encodeGif(const std::function<std::unique_ptr<RowSource>()>& source, StagedFile& file)
{
    std::unique_ptr<RowSource> rows = source();
    if (rows->widthPx() > largestSidePx || rows->heightPx() > largestSidePx)
        throw std::runtime_error("a page of " + std::to_string(rows->widthPx()) + " x "
                                 + std::to_string(rows->heightPx())
                                 + " pixels is too large for GIF");
    const bool isIndexed
        = rows->layout().model != ColorModel::Rgb && rows->layout().alpha == AlphaKind::None;
    if (isIndexed) {
        encodeIndexed(*rows, file);
        return;
    }
    const Reduction reduction = chooseColors(*rows);
    rows.reset(); // passes over one file cannot overlap
    encodeReduced(*source(), reduction, file);
}

} // namespace pagestack
