#include "engine/image/formats/Density.h"
#include "engine/image/formats/Encoders.h"
#include "engine/image/formats/png/PixelStream.h"
#include "engine/image/formats/png/PngMetadata.h"
#include "engine/image/formats/png/ZlibBlock.h"

#include <QtEndian>

#include <array>

namespace pagestack {

namespace {

    constexpr std::array<std::uint8_t, 8> signature
        = { 0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n' };
    constexpr std::uint8_t grayType = 0;
    constexpr std::uint8_t paletteFlag = 1;
    constexpr std::uint8_t colorFlag = 2;
    constexpr std::uint8_t alphaFlag = 4;

    std::uint8_t colorType(const PixelLayout& layout)
    {
        if (layout.model == ColorModel::Palette)
            return colorFlag | paletteFlag;
        const std::uint8_t alpha = layout.alpha == AlphaKind::None ? 0 : alphaFlag;
        return static_cast<std::uint8_t>((layout.model == ColorModel::Rgb ? colorFlag : grayType)
                                         | alpha);
    }

    void writeHeader(const PageProperties& page, const PixelLayout& layout, StagedFile& file)
    {
        std::array<std::uint8_t, 13> header {}; // ends with deflate, the five filters, no interlace
        qToBigEndian(static_cast<std::uint32_t>(page.widthPx), header.data());
        qToBigEndian(static_cast<std::uint32_t>(page.heightPx), header.data() + 4);
        header[8] = static_cast<std::uint8_t>(layout.bitsPerSample);
        header[9] = colorType(layout);
        writePngChunk(file, "IHDR", header);
    }

    /// Compresses the profile as a whole; the chunk names it "icc".
    void writeProfile(const QByteArray& profile, StagedFile& file)
    {
        if (profile.isEmpty())
            return;
        const QByteArray block = QByteArray("icc\0\0", 5) + zlibBlock(profile);
        writePngChunk(file, "iCCP",
                      { reinterpret_cast<const std::uint8_t*>(block.constData()),
                        static_cast<std::size_t>(block.size()) });
    }

    /// Pixels that were brought to sRGB, relative to its white.
    void writeSrgb(const PageProperties& page, StagedFile& file)
    {
        constexpr std::array<std::uint8_t, 1> relativeColorimetric = { 1 };
        if (page.isSrgb)
            writePngChunk(file, "sRGB", relativeColorimetric);
    }

    void writePalette(const std::vector<RgbColor>& palette, StagedFile& file)
    {
        if (palette.empty())
            return;
        std::vector<std::uint8_t> bytes;
        for (const RgbColor& color : palette)
            bytes.insert(bytes.end(), color.begin(), color.end());
        writePngChunk(file, "PLTE", bytes);
    }

    void writeDensity(const Resolution& resolution, StagedFile& file)
    {
        Density density = metricDensity(resolution);
        const bool isMetric = density.x != 0;
        const Density ratio = pixelRatio(resolution);
        if (!isMetric && (resolution.unit != ResolutionUnit::None || ratio.x == ratio.y))
            return;
        if (!isMetric)
            density = ratio;
        std::array<std::uint8_t, 9> bytes {};
        qToBigEndian(density.x, bytes.data());
        qToBigEndian(density.y, bytes.data() + 4);
        bytes[8] = isMetric ? 1 : 0;
        writePngChunk(file, "pHYs", bytes);
    }

} // namespace

void encodePng(UprightPage& upright, StagedFile& file)
{
    RowSource& rows = *upright.rows;
    const PageProperties& page = upright.properties;
    const PixelLayout& layout = rows.layout();
    file.write(signature);
    writeHeader(page, layout, file);
    writeProfile(page.iccProfile, file);
    writeSrgb(page, file);
    writePalette(layout.palette, file);
    writeDensity(page.resolution, file);
    if (upright.metadata)
        writePngMetadata(*upright.metadata, page, file, upright.leftOut);
    PixelStream data(layout, page.widthPx, page.heightPx, file, upright.threads);
    for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
        for (int i = 0; i < band.rows; ++i)
            data.addRow(band.row(i));
    writePngChunk(file, "IEND", {});
}

} // namespace pagestack
