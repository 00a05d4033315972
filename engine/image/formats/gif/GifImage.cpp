#include "engine/image/formats/gif/GifImage.h"

#include "engine/image/formats/Encoders.h"
#include "engine/image/formats/gif/BilevelLzw.h"
#include "engine/image/formats/gif/IndexLzw.h"

#include <algorithm>
#include <bit>

namespace pagestack {

namespace {

    void putSize(std::vector<std::uint8_t>& to, int widthPx, int heightPx)
    {
        appendNumber(to, static_cast<unsigned>(widthPx), 2);
        appendNumber(to, static_cast<unsigned>(heightPx), 2);
    }

    /// Bits of the indexes into `palette`.
    int indexBits(const std::vector<RgbColor>& palette)
    {
        return std::max(static_cast<int>(std::bit_width(palette.size() - 1)), 1);
    }

} // namespace

GifImage::GifImage(StagedFile& file, int widthPx, int heightPx,
                   const std::vector<RgbColor>& palette, std::optional<int> transparentIndex,
                   Rows rows)
    : m_file(file)
{
    const int bits = indexBits(palette);
    std::vector<std::uint8_t> header { 'G', 'I', 'F', '8', '9', 'a' };
    putSize(header, widthPx, heightPx);
    // A palette follows, of 2^bits colours; the source had 8 bits a channel.
    header.push_back(static_cast<std::uint8_t>(0xF0 | (bits - 1)));
    header.insert(header.end(), { 0, 0 }); // background; no statement on the shape of the pixels
    for (const RgbColor& color : palette)
        header.insert(header.end(), color.begin(), color.end());
    header.resize(header.size() + 3 * ((std::size_t { 1 } << bits) - palette.size()));
    if (transparentIndex) // a graphic control extension
        header.insert(header.end(),
                      { '!', 0xF9, 4, 1, 0, 0, static_cast<std::uint8_t>(*transparentIndex), 0 });
    header.insert(header.end(), { ',', 0, 0, 0, 0 }); // the image starts in the upper left corner
    putSize(header, widthPx, heightPx);
    header.push_back(0); // rows in their order, no palette of its own
    m_file.write(header);
    if (rows == Rows::Bits)
        m_coder = std::make_unique<BilevelLzw>(file, widthPx);
    else if (bits <= SmallIndexLzw::mostBits)
        m_coder = std::make_unique<SmallIndexLzw>(file, widthPx, bits);
    else
        m_coder = std::make_unique<IndexLzw>(file, widthPx, bits);
}

void GifImage::finish()
{
    m_coder->finish();
    m_file.write(std::array { std::uint8_t { ';' } });
}

} // namespace pagestack
