#include "engine/image/formats/Density.h"
#include "engine/image/formats/Encoders.h"

#include <cstring>
#include <limits>
#include <vector>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr std::uint32_t fileHeaderBytes = 14;
    constexpr std::uint32_t infoHeaderBytes = 40;

    /// One row as the file has it: blue first, padded with zeros to a multiple of four bytes.
    void packRow(const std::uint8_t* row, int widthPx, const PixelLayout& layout, std::uint8_t* to)
    {
        if (layout.model != ColorModel::Rgb) {
            std::memcpy(to, row, static_cast<std::size_t>(layout.rowBytes(widthPx)));
            if (const int rest = widthPx % 8; layout.bitsPerSample == 1 && rest != 0)
                to[widthPx / 8] = static_cast<std::uint8_t>(to[widthPx / 8] & (0xFF00 >> rest));
            return;
        }
        for (qsizetype i = 0; i < widthPx; ++i) {
            to[3 * i] = row[3 * i + 2];
            to[3 * i + 1] = row[3 * i + 1];
            to[3 * i + 2] = row[3 * i];
        }
    }

} // namespace

void encodeBmp(UprightPage& upright, StagedFile& file)
{
    RowSource& rows = *upright.rows;
    const PageProperties& page = upright.properties;
    const PixelLayout& layout = rows.layout();
    const std::vector<RgbColor> table = layout.model == ColorModel::Gray
        ? grayPalette(layout.bitsPerSample)
        : layout.palette; // empty for RGB
    const auto rowBytes = (static_cast<std::uint64_t>(layout.rowBytes(page.widthPx)) + 3) / 4 * 4;
    const std::uint64_t pixelsAt = fileHeaderBytes + infoHeaderBytes + 4 * table.size();
    const std::uint64_t fileBytes = pixelsAt + rowBytes * static_cast<std::uint64_t>(page.heightPx);
    if (fileBytes > std::numeric_limits<std::uint32_t>::max())
        throwTooLarge(page, "BMP"_L1);
    const Density density = metricDensity(page.resolution);
    const auto bitsPerPixel = static_cast<std::uint32_t>(layout.channels() * layout.bitsPerSample);
    std::vector<std::uint8_t> header { 'B', 'M' };
    const auto put = [&](std::uint64_t value, int bytes = 4) {
        appendNumber(header, static_cast<std::uint32_t>(value), bytes);
    };
    put(fileBytes);
    put(0); // reserved
    put(pixelsAt);
    put(infoHeaderBytes);
    put(static_cast<std::uint32_t>(page.widthPx));
    put(static_cast<std::uint32_t>(page.heightPx));
    put(1, 2); // planes
    put(bitsPerPixel, 2);
    put(0); // not compressed
    put(fileBytes - pixelsAt);
    put(density.x);
    put(density.y);
    put(table.size());
    put(0); // all colours matter
    for (const RgbColor& color : table)
        header.insert(header.end(), { color[2], color[1], color[0], 0 });
    file.write(header);

    // The file has the bottom row first, so a band goes before the one above it.
    std::vector<std::uint8_t> block;
    std::uint64_t rowsLeft = static_cast<std::uint64_t>(page.heightPx);
    for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand()) {
        block.assign(rowBytes * static_cast<unsigned>(band.rows), 0);
        for (int i = 0; i < band.rows; ++i)
            packRow(band.row(i), page.widthPx, layout,
                    block.data() + static_cast<std::uint64_t>(band.rows - 1 - i) * rowBytes);
        rowsLeft -= static_cast<unsigned>(band.rows);
        file.writeAt(pixelsAt + rowsLeft * rowBytes, block);
    }
}

} // namespace pagestack
