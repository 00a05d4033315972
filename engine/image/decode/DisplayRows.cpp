#include "engine/image/decode/DisplayRows.h"

#include "engine/image/decode/ColorTransform.h"
#include "engine/image/decode/SampleRange.h"
#include "engine/image/decode/SampleUnpacker.h"
#include "engine/image/decode/StoredRows.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/SampleMath.h"

#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    bool isGray(const TiffPageTags& tags)
    {
        return tags.photometric == PHOTOMETRIC_MINISWHITE
            || tags.photometric == PHOTOMETRIC_MINISBLACK || tags.photometric == PHOTOMETRIC_MASK;
    }

    /// How many of a pixel's samples are colour.
    int colorSamples(const TiffPageTags& tags)
    {
        if (isGray(tags) || tags.photometric == PHOTOMETRIC_PALETTE)
            return 1;
        return tags.photometric == PHOTOMETRIC_SEPARATED ? 4 : 3;
    }

    std::optional<SourceColor> convertedColor(const TiffPageTags& tags)
    {
        switch (tags.photometric) {
        case PHOTOMETRIC_SEPARATED:
            return SourceColor::Cmyk;
        case PHOTOMETRIC_CIELAB:
            return SourceColor::CieLab;
        case PHOTOMETRIC_ICCLAB:
            return SourceColor::IccLab;
        default:
            return std::nullopt;
        }
    }

    struct AlphaSample
    {
        AlphaKind kind = AlphaKind::None;
        int index = 0; ///< among the samples of a pixel
    };

    AlphaSample alphaSample(const TiffPageTags& tags)
    {
        for (std::size_t i = 0; i < tags.extraSamples.size(); ++i) {
            const int index = tags.samplesPerPixel - static_cast<int>(tags.extraSamples.size() - i);
            if (index < colorSamples(tags))
                continue;
            if (tags.extraSamples[i] == EXTRASAMPLE_ASSOCALPHA)
                return { AlphaKind::Premultiplied, index };
            if (tags.extraSamples[i] == EXTRASAMPLE_UNASSALPHA)
                return { AlphaKind::Straight, index };
        }
        return {};
    }

    /// The colour map of the current page, 8 bits a channel, one entry a possible index.
    std::vector<RgbColor> readPalette(TIFF* handle, int bitsPerSample)
    {
        std::uint16_t* red = nullptr;
        std::uint16_t* green = nullptr;
        std::uint16_t* blue = nullptr;
        if (TIFFGetField(handle, TIFFTAG_COLORMAP, &red, &green, &blue) != 1)
            throw std::runtime_error("the colour map is missing");
        const std::size_t count = std::size_t { 1 } << static_cast<unsigned>(bitsPerSample);
        // Some writers fill the 16-bit entries with 8-bit values.
        const auto isSmall = [&](const std::uint16_t* values) {
            return std::all_of(values, values + count, [](std::uint16_t v) { return v <= 255; });
        };
        const unsigned shift = isSmall(red) && isSmall(green) && isSmall(blue) ? 0 : 8;
        std::vector<RgbColor> palette(count);
        for (std::size_t i = 0; i < count; ++i)
            palette[i] = { static_cast<std::uint8_t>(red[i] >> shift),
                           static_cast<std::uint8_t>(green[i] >> shift),
                           static_cast<std::uint8_t>(blue[i] >> shift) };
        return palette;
    }

    void checkSupported(const TiffPageTags& tags)
    {
        if (tags.samplesPerPixel < colorSamples(tags))
            throw std::runtime_error(std::to_string(tags.samplesPerPixel)
                                     + " samples a pixel do not fit its photometric interpretation "
                                     + std::to_string(tags.photometric));
        const std::string bits = std::to_string(tags.bitsPerSample);
        const std::optional<SourceColor> converted = convertedColor(tags);
        if (tags.photometric == PHOTOMETRIC_PALETTE && tags.bitsPerSample > 16)
            throw std::runtime_error("a colour map of " + bits + " bits is not supported");
        if (converted == SourceColor::Cmyk && tags.inkSet != INKSET_CMYK)
            throw std::runtime_error("inks other than CMYK are not supported");
        if (converted && converted != SourceColor::Cmyk && tags.bitsPerSample != 8
            && tags.bitsPerSample != 16)
            throw std::runtime_error("L*a*b* with " + bits + " bits a sample is not supported");
        // YCbCr is that of JPEG only, of which the decoder gives RGB.
        if (!converted && !isGray(tags) && tags.photometric != PHOTOMETRIC_RGB
            && tags.photometric != PHOTOMETRIC_PALETTE && tags.photometric != PHOTOMETRIC_YCBCR)
            throw std::runtime_error("photometric interpretation "
                                     + std::to_string(tags.photometric) + " is not supported");
    }

    bool isPackedSample(const TiffPageTags& tags)
    {
        return tags.samplesPerPixel == 1 && tags.sampleFormat != SAMPLEFORMAT_INT
            && (tags.bitsPerSample == 1 || tags.bitsPerSample == 2 || tags.bitsPerSample == 4);
    }

    SampleUnpacker unpackerFor(const TiffPageTags& tags)
    {
        // L*a*b* has signs of its own, which its conversion knows.
        const bool isPlain = convertedColor(tags) && tags.sampleFormat == SAMPLEFORMAT_INT;
        return { tags.bitsPerSample, isPlain ? SAMPLEFORMAT_UINT : tags.sampleFormat };
    }

    PixelLayout layoutFor(const TiffPageTags& tags, const std::vector<RgbColor>& palette)
    {
        PixelLayout layout;
        layout.alpha = alphaSample(tags).kind;
        layout.bitsPerSample
            = isPackedSample(tags) ? tags.bitsPerSample : unpackerFor(tags).outputBits();
        layout.model = isGray(tags) ? ColorModel::Gray : ColorModel::Rgb;
        if (tags.photometric != PHOTOMETRIC_PALETTE)
            return layout;
        if (tags.bitsPerSample > 8 || layout.alpha != AlphaKind::None) {
            layout.bitsPerSample = 8;
            return layout;
        }
        layout.model = ColorModel::Palette;
        layout.palette = palette;
        layout.palette.resize(isPackedSample(tags) ? palette.size() : 256);
        return layout;
    }

    class DisplayRows : public RowByRow
    {
    public:
        DisplayRows(const TiffPage& page, std::vector<RgbColor> palette, int shownBits,
                    const std::optional<PagePart>& part, SharedWork* work)
            : RowByRow(page.properties().widthPx, page.properties().heightPx,
                       layoutFor(page.tags(), palette))
            , m_messages(page.messages())
            , m_tags(page.tags())
            , m_stored(page, part, work)
            , m_unpacker(unpackerFor(m_tags))
            , m_alpha(alphaSample(m_tags))
            , m_range(m_tags.bitsPerSample, m_tags.sampleFormat, shownBits)
            , m_palette(std::move(palette))
        {
            if (m_tags.sampleFormat == SAMPLEFORMAT_IEEEFP)
                m_messages.addLogLine(
                    u"page %1: floating-point samples are taken as 0 to 1"_s.arg(page.index() + 1));
            if (const auto color = convertedColor(m_tags))
                m_transform = colorTransform(*color, layout().bitsPerSample, m_tags.iccProfile);
            m_mode = chooseMode();
        }

        Band nextBand() override
        {
            if (m_mode != Mode::AsStored)
                return RowByRow::nextBand();
            const int rows = fetch();
            return rows == 0 ? Band {} : Band { m_band.row(0, 0), rows, m_band.strideBytes };
        }

    private:
        enum class Mode {
            AsStored, ///< the file's samples are what the layout says
            Inverted, ///< all bits have to be turned over
            LookedUp, ///< indexes become colours
            Indexed, ///< indexes become bytes
            Converted, ///< sample by sample
        };

        Mode chooseMode() const
        {
            if (m_tags.photometric == PHOTOMETRIC_PALETTE && layout().model != ColorModel::Palette)
                return Mode::LookedUp;
            const bool samplesFit = m_tags.bitsPerSample == layout().bitsPerSample
                && m_tags.samplesPerPixel == layout().channels() && m_tags.planes() == 1
                && (m_tags.sampleFormat == SAMPLEFORMAT_UINT
                    || m_tags.sampleFormat == SAMPLEFORMAT_VOID);
            if (!samplesFit || m_transform)
                return layout().model == ColorModel::Palette ? Mode::Indexed : Mode::Converted;
            if (m_tags.photometric != PHOTOMETRIC_MINISWHITE)
                return Mode::AsStored;
            return m_alpha.kind == AlphaKind::None ? Mode::Inverted : Mode::Converted;
        }

        int fetch() override
        {
            m_band = m_stored.nextBand();
            lookAtRange();
            return m_band.rows;
        }

        /// Indexes and L*a*b* have ranges of their own.
        void lookAtRange()
        {
            if (m_tags.photometric == PHOTOMETRIC_PALETTE
                || m_tags.photometric == PHOTOMETRIC_CIELAB
                || m_tags.photometric == PHOTOMETRIC_ICCLAB)
                return;
            for (int i = 0; i < m_band.rows; ++i)
                for (int c = 0; c < colorSamples(m_tags); ++c)
                    m_range.look(m_unpacker, samples(i, c));
            m_rowsLookedAt += m_band.rows;
            if (m_rowsLookedAt < heightPx() || m_band.rows == 0)
                return;
            if (const QString warning = m_range.warning(); !warning.isNull())
                m_messages.addPageWarning(warning);
        }

        /// Sample `sample` of every pixel of row `index` of the band.
        SampleRun samples(int index, int sample) const
        {
            if (m_tags.planesAreSeparate)
                return { m_band.row(sample, index), 0, 1, widthPx() };
            return { m_band.row(0, index), sample, m_tags.samplesPerPixel, widthPx() };
        }

        void make(int index, std::uint8_t* to) override
        {
            switch (m_mode) {
            case Mode::AsStored:
            case Mode::Inverted:
                std::transform(m_band.row(0, index), m_band.row(0, index) + rowBytes(), to,
                               [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
                break;
            case Mode::LookedUp:
                lookUp(index, to);
                break;
            case Mode::Indexed:
                unpackIndexes(index);
                std::transform(m_indexes.begin(), m_indexes.end(), to, [](std::uint16_t value) {
                    return static_cast<std::uint8_t>(value);
                });
                break;
            case Mode::Converted:
                convert(index, to);
            }
        }

        void convert(int index, std::uint8_t* to)
        {
            const int sampleBytes = layout().bitsPerSample / 8;
            const int channels = layout().channels();
            if (m_transform)
                transformColor(index, to);
            else
                for (int c = 0; c < layout().colorChannels(); ++c)
                    m_unpacker.unpack(samples(index, c), to + qsizetype { c } * sampleBytes,
                                      channels);
            if (m_tags.photometric == PHOTOMETRIC_MINISWHITE)
                invertGray(to);
            if (m_alpha.kind != AlphaKind::None)
                m_unpacker.unpack(samples(index, m_alpha.index),
                                  to + qsizetype { channels - 1 } * sampleBytes, channels);
        }

        void transformColor(int index, std::uint8_t* to)
        {
            const auto sampleBytes = static_cast<std::size_t>(layout().bitsPerSample / 8);
            const int inputs = colorSamples(m_tags);
            m_color.resize(sampleBytes * static_cast<unsigned>(inputs) * m_tags.widthPx);
            for (int c = 0; c < inputs; ++c)
                m_unpacker.unpack(samples(index, c),
                                  m_color.data() + static_cast<unsigned>(c) * sampleBytes, inputs);
            if (layout().channels() == 3) {
                m_transform(m_color.data(), to, widthPx());
                return;
            }
            m_rgb.resize(sampleBytes * 3 * m_tags.widthPx);
            m_transform(m_color.data(), m_rgb.data(), widthPx());
            for (std::size_t i = 0; i < m_tags.widthPx; ++i)
                std::memcpy(to + i * 4 * sampleBytes, m_rgb.data() + i * 3 * sampleBytes,
                            3 * sampleBytes);
        }

        void invertGray(std::uint8_t* to) const
        {
            const qsizetype sampleBytes = layout().bitsPerSample / 8;
            for (qsizetype at = 0; at < rowBytes(); at += sampleBytes * layout().channels())
                for (qsizetype b = 0; b < sampleBytes; ++b)
                    to[at + b] = static_cast<std::uint8_t>(~to[at + b]);
        }

        void unpackIndexes(int index)
        {
            m_indexes.resize(m_tags.widthPx);
            m_unpacker.unpackIndexes(samples(index, 0), m_indexes.data());
        }

        void lookUp(int index, std::uint8_t* to)
        {
            unpackIndexes(index);
            const auto channels = static_cast<std::size_t>(layout().channels());
            for (std::size_t i = 0; i < m_indexes.size(); ++i)
                std::memcpy(to + i * channels, m_palette.at(m_indexes[i]).data(), 3);
            if (m_alpha.kind == AlphaKind::None)
                return;
            m_color.resize(std::size_t { m_tags.widthPx } * 2);
            m_unpacker.unpack(samples(index, m_alpha.index), m_color.data(), 1);
            const bool isWide = m_unpacker.outputBits() == 16;
            for (std::size_t i = 0; i < m_indexes.size(); ++i)
                to[i * channels + 3] = isWide
                    ? toByte(loadSample<std::uint16_t>(m_color.data() + 2 * i))
                    : m_color[i];
        }

        TiffMessages& m_messages;
        const TiffPageTags& m_tags;
        StoredRows m_stored;
        StoredBand m_band;
        SampleUnpacker m_unpacker;
        AlphaSample m_alpha;
        SampleRange m_range;
        int m_rowsLookedAt = 0;
        std::vector<RgbColor> m_palette;
        RowFunction m_transform; ///< of CMYK and L*a*b*
        Mode m_mode = Mode::Converted;
        std::vector<std::uint8_t> m_color; ///< or alpha of a row
        std::vector<std::uint8_t> m_rgb;
        std::vector<std::uint16_t> m_indexes;
    };

} // namespace

bool needsRgbaInterface(const TiffPageTags& tags)
{
    const bool isDecodedToRgb = tags.compression == COMPRESSION_JPEG && !tags.planesAreSeparate;
    return tags.compression == COMPRESSION_OJPEG || tags.photometric == PHOTOMETRIC_LOGL
        || tags.photometric == PHOTOMETRIC_LOGLUV
        || (tags.photometric == PHOTOMETRIC_YCBCR && !isDecodedToRgb);
}

bool profileFitsDisplayRows(const TiffPageTags& tags)
{
    // ICC.1, header: the colour space of the data stands in bytes 16 to 19.
    if (tags.iccProfile.size() < 128)
        return false;
    const QByteArray space = tags.iccProfile.mid(16, 4);
    if (isGray(tags))
        return space == "GRAY";
    return space == "RGB "
        && (tags.photometric == PHOTOMETRIC_RGB || tags.photometric == PHOTOMETRIC_PALETTE
            || tags.photometric == PHOTOMETRIC_YCBCR);
}

std::unique_ptr<RowSource> displayRows(const TiffPage& page, int shownBits,
                                       const std::optional<PagePart>& part, SharedWork* work)
{
    const TiffPageTags& tags = page.tags();
    if (needsRgbaInterface(tags))
        return rgbaRows(page);
    checkSupported(tags);
    std::vector<RgbColor> palette;
    if (tags.photometric == PHOTOMETRIC_PALETTE)
        palette = readPalette(page.load(), tags.bitsPerSample);
    return std::make_unique<DisplayRows>(page, std::move(palette), shownBits, part, work);
}

} // namespace pagestack
