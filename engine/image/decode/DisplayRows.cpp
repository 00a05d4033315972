#include "engine/image/decode/DisplayRows.h"

#include "engine/image/decode/ColorTransform.h"
#include "engine/image/decode/RgbaRows.h"
#include "engine/image/decode/SampleRange.h"
#include "engine/image/decode/SampleUnpacker.h"
#include "engine/image/decode/StoredRows.h"

#include <tiffio.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// How many of a pixel's samples are colour.
    int colorSamples(const TiffPageTags& tags)
    {
        switch (tags.photometric) {
        case PHOTOMETRIC_MINISWHITE:
        case PHOTOMETRIC_MINISBLACK:
        case PHOTOMETRIC_MASK:
        case PHOTOMETRIC_PALETTE:
            return 1;
        case PHOTOMETRIC_SEPARATED:
            return 4;
        default:
            return 3;
        }
    }

    bool isGray(const TiffPageTags& tags)
    {
        return tags.photometric == PHOTOMETRIC_MINISWHITE
            || tags.photometric == PHOTOMETRIC_MINISBLACK || tags.photometric == PHOTOMETRIC_MASK;
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
        switch (tags.photometric) {
        case PHOTOMETRIC_MINISWHITE:
        case PHOTOMETRIC_MINISBLACK:
        case PHOTOMETRIC_MASK:
        case PHOTOMETRIC_RGB:
            return;
        case PHOTOMETRIC_PALETTE:
            if (tags.bitsPerSample > 16)
                throw std::runtime_error("a colour map of " + std::to_string(tags.bitsPerSample)
                                         + " bits is not supported");
            return;
        case PHOTOMETRIC_YCBCR: // JPEG only: the decoder gives RGB
            return;
        case PHOTOMETRIC_SEPARATED:
            if (tags.inkSet != INKSET_CMYK)
                throw std::runtime_error("inks other than CMYK are not supported");
            return;
        case PHOTOMETRIC_CIELAB:
        case PHOTOMETRIC_ICCLAB:
            if (tags.bitsPerSample != 8 && tags.bitsPerSample != 16)
                throw std::runtime_error("L*a*b* with " + std::to_string(tags.bitsPerSample)
                                         + " bits a sample is not supported");
            return;
        default:
            throw std::runtime_error("photometric interpretation "
                                     + std::to_string(tags.photometric) + " is not supported");
        }
    }

    /// Strips and tiles may be large; what is made of them is shown in smaller bands.
    constexpr qsizetype mostShownBytes = qsizetype { 4 } * 1024 * 1024;

    class DisplayRows : public RowSource
    {
    public:
        DisplayRows(TiffFile& file, int index, const TiffPageTags& tags, int shownBits)
            : m_messages(file.messages())
            , m_tags(tags)
            , m_stored(file, index, tags)
            // L*a*b* has signs of its own, which its conversion knows.
            , m_unpacker(tags.bitsPerSample,
                         convertedColor(tags) && tags.sampleFormat == 2 ? 1 : tags.sampleFormat)
            , m_alpha(alphaSample(tags))
            , m_range(tags.bitsPerSample, tags.sampleFormat, shownBits)
        {
            if (tags.sampleFormat == SAMPLEFORMAT_IEEEFP)
                m_messages.addLogLine(
                    u"page %1: floating-point samples are taken as 0 to 1"_s.arg(index + 1));
            if (tags.photometric == PHOTOMETRIC_PALETTE)
                m_palette = readPalette(file.current(), tags.bitsPerSample);
            chooseLayout();
            if (const auto color = convertedColor(tags))
                m_transform.emplace(*color, m_layout.bitsPerSample, tags.iccProfile);
            m_mode = chooseMode();
        }

        int widthPx() const override { return static_cast<int>(m_tags.widthPx); }
        int heightPx() const override { return static_cast<int>(m_tags.heightPx); }
        const PixelLayout& layout() const override { return m_layout; }

        Band nextBand() override
        {
            if (m_shownRows == m_band.rows) {
                m_band = m_stored.nextBand();
                m_shownRows = 0;
                lookAtRange();
            }
            const qsizetype stride = m_layout.rowBytes(widthPx());
            const int rows = static_cast<int>(std::min<qsizetype>(
                m_band.rows - m_shownRows, std::max<qsizetype>(1, mostShownBytes / stride)));
            const int first = std::exchange(m_shownRows, m_shownRows + rows);
            if (rows == 0)
                return {};
            if (m_mode == Mode::AsStored)
                return { m_band.row(0, first), rows, m_band.strideBytes };
            m_samples.resize(static_cast<std::size_t>(stride) * static_cast<unsigned>(rows));
            for (int i = 0; i < rows; ++i) {
                const std::uint8_t* from = m_band.row(0, first + i);
                std::uint8_t* to = m_samples.data() + i * stride;
                switch (m_mode) {
                case Mode::Inverted:
                    std::transform(from, from + stride, to, [](std::uint8_t byte) {
                        return static_cast<std::uint8_t>(~byte);
                    });
                    break;
                case Mode::LookedUp:
                    lookUp(m_band, first + i, to);
                    break;
                default:
                    convert(m_band, first + i, to);
                }
            }
            return { m_samples.data(), rows, stride };
        }

    private:
        /// Indexes and L*a*b* have ranges of their own.
        void lookAtRange()
        {
            if (m_tags.photometric == PHOTOMETRIC_PALETTE
                || m_tags.photometric == PHOTOMETRIC_CIELAB
                || m_tags.photometric == PHOTOMETRIC_ICCLAB)
                return;
            for (int i = 0; i < m_band.rows; ++i)
                for (int c = 0; c < colorSamples(m_tags); ++c)
                    if (m_tags.planesAreSeparate)
                        m_range.look(m_unpacker, m_band.row(c, i), 0, 1, widthPx());
                    else
                        m_range.look(m_unpacker, m_band.row(0, i), c, m_tags.samplesPerPixel,
                                     widthPx());
            m_rowsLookedAt += m_band.rows;
            if (m_rowsLookedAt < heightPx() || m_band.rows == 0)
                return;
            if (const QString warning = m_range.warning(); !warning.isNull())
                m_messages.addPageWarning(warning);
        }

        enum class Mode {
            AsStored, ///< the file's samples are what the layout says
            Inverted, ///< all bits have to be turned over
            LookedUp, ///< indexes become colours
            Converted, ///< sample by sample
        };

        void chooseLayout()
        {
            m_layout.alpha = m_alpha.kind;
            m_layout.bitsPerSample = m_unpacker.outputBits();
            m_layout.model = isGray(m_tags) ? ColorModel::Gray : ColorModel::Rgb;
            const bool isPacked = m_tags.samplesPerPixel == 1 && m_tags.sampleFormat != 2
                && (m_tags.bitsPerSample == 1 || m_tags.bitsPerSample == 2
                    || m_tags.bitsPerSample == 4);
            if (m_tags.photometric == PHOTOMETRIC_PALETTE) {
                if (m_tags.bitsPerSample > 8 || m_alpha.kind != AlphaKind::None) {
                    m_layout.bitsPerSample = 8;
                    return;
                }
                m_layout.model = ColorModel::Palette;
                m_layout.palette = m_palette;
                m_layout.palette.resize(isPacked ? m_palette.size() : 256);
            }
            if (isPacked)
                m_layout.bitsPerSample = m_tags.bitsPerSample;
        }

        Mode chooseMode() const
        {
            if (m_tags.photometric == PHOTOMETRIC_PALETTE && m_layout.model != ColorModel::Palette)
                return Mode::LookedUp;
            const bool samplesFit = m_tags.bitsPerSample == m_layout.bitsPerSample
                && m_tags.samplesPerPixel == m_layout.channels() && m_tags.planes() == 1
                && (m_tags.sampleFormat == 1 || m_tags.sampleFormat == 4);
            if (!samplesFit || m_transform)
                return Mode::Converted;
            if (m_tags.photometric != PHOTOMETRIC_MINISWHITE)
                return Mode::AsStored;
            return m_layout.alpha == AlphaKind::None ? Mode::Inverted : Mode::Converted;
        }

        /// Unpacks sample `sample` of every pixel of row `index` to every `step`-th element of
        /// `to`.
        void unpackSample(const StoredBand& stored, int index, int sample, std::uint8_t* to,
                          int step) const
        {
            if (m_tags.planesAreSeparate)
                m_unpacker.unpack(stored.row(sample, index), 0, 1, widthPx(), to, step);
            else
                m_unpacker.unpack(stored.row(0, index), sample, m_tags.samplesPerPixel, widthPx(),
                                  to, step);
        }

        void convert(const StoredBand& stored, int index, std::uint8_t* to)
        {
            const int sampleBytes = m_layout.bitsPerSample / 8;
            const int channels = m_layout.channels();
            if (m_layout.model == ColorModel::Palette) {
                unpackIndexRow(stored, index);
                std::transform(m_indexes.begin(), m_indexes.end(), to, [](std::uint16_t value) {
                    return static_cast<std::uint8_t>(value);
                });
                return;
            }
            if (m_transform)
                transformColor(stored, index, to);
            else
                for (int c = 0; c < m_layout.colorChannels(); ++c)
                    unpackSample(stored, index, c, to + qsizetype { c } * sampleBytes, channels);
            if (m_tags.photometric == PHOTOMETRIC_MINISWHITE)
                invertColor(to);
            if (m_alpha.kind != AlphaKind::None)
                unpackSample(stored, index, m_alpha.index,
                             to + qsizetype { channels - 1 } * sampleBytes, channels);
        }

        void transformColor(const StoredBand& stored, int index, std::uint8_t* to)
        {
            const int sampleBytes = m_layout.bitsPerSample / 8;
            const int inputs = m_transform->inputChannels();
            m_color.resize(std::size_t { m_tags.widthPx }
                           * static_cast<unsigned>(inputs * sampleBytes));
            for (int c = 0; c < inputs; ++c)
                unpackSample(stored, index, c, m_color.data() + qsizetype { c } * sampleBytes,
                             inputs);
            if (m_layout.channels() == 3) {
                m_transform->apply(m_color.data(), to, widthPx());
                return;
            }
            const std::size_t rgbBytes = 3 * static_cast<std::size_t>(sampleBytes);
            m_rgb.resize(m_tags.widthPx * rgbBytes);
            m_transform->apply(m_color.data(), m_rgb.data(), widthPx());
            for (std::size_t i = 0; i < m_tags.widthPx; ++i)
                std::memcpy(to + i * static_cast<unsigned>(4 * sampleBytes),
                            m_rgb.data() + i * rgbBytes, rgbBytes);
        }

        void invertColor(std::uint8_t* to) const
        {
            const qsizetype sampleBytes = m_layout.bitsPerSample / 8;
            const qsizetype pixelBytes = sampleBytes * m_layout.channels();
            for (qsizetype i = 0; i < widthPx(); ++i)
                for (qsizetype b = 0; b < sampleBytes; ++b)
                    to[i * pixelBytes + b] = static_cast<std::uint8_t>(~to[i * pixelBytes + b]);
        }

        void unpackIndexRow(const StoredBand& stored, int index)
        {
            m_indexes.resize(m_tags.widthPx);
            m_unpacker.unpackIndexes(stored.row(0, index), 0, m_tags.samplesInPlane(), widthPx(),
                                     m_indexes.data());
        }

        void lookUp(const StoredBand& stored, int index, std::uint8_t* to)
        {
            unpackIndexRow(stored, index);
            const int channels = m_layout.channels();
            for (std::size_t i = 0; i < m_indexes.size(); ++i)
                std::memcpy(to + i * static_cast<unsigned>(channels),
                            m_palette.at(m_indexes[i]).data(), 3);
            if (m_alpha.kind == AlphaKind::None)
                return;
            m_alphaRow.resize(std::size_t { m_tags.widthPx } * 2);
            unpackSample(stored, index, m_alpha.index, m_alphaRow.data(), 1);
            for (std::size_t i = 0; i < m_indexes.size(); ++i) {
                std::uint8_t alpha = m_alphaRow[i];
                if (m_unpacker.outputBits() == 16) {
                    std::uint16_t wide = 0;
                    std::memcpy(&wide, m_alphaRow.data() + 2 * i, sizeof wide);
                    alpha = static_cast<std::uint8_t>((wide * 255U + 32767U) / 65535U);
                }
                to[i * static_cast<unsigned>(channels) + 3] = alpha;
            }
        }

        TiffMessages& m_messages;
        TiffPageTags m_tags;
        StoredRows m_stored;
        StoredBand m_band;
        int m_shownRows = 0; ///< of `m_band`
        SampleUnpacker m_unpacker;
        AlphaSample m_alpha;
        SampleRange m_range;
        int m_rowsLookedAt = 0;
        std::vector<RgbColor> m_palette;
        PixelLayout m_layout;
        std::optional<ColorTransform> m_transform;
        Mode m_mode = Mode::Converted;
        std::vector<std::uint8_t> m_samples;
        std::vector<std::uint8_t> m_color;
        std::vector<std::uint8_t> m_rgb;
        std::vector<std::uint8_t> m_alphaRow;
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

std::unique_ptr<RowSource> displayRows(TiffFile& file, int index, const TiffPageTags& tags,
                                       int shownBits)
{
    if (needsRgbaInterface(tags))
        return rgbaRows(file, index, tags);
    checkSupported(tags);
    return std::make_unique<DisplayRows>(file, index, tags, shownBits);
}

} // namespace pagestack
