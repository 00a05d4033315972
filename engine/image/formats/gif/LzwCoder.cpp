#include "engine/image/formats/gif/LzwCoder.h"

#include "engine/image/formats/Encoders.h"

#include <algorithm>
#include <bit>

namespace pagestack {

namespace {

    int widthOf(int code) { return static_cast<int>(std::bit_width(static_cast<unsigned>(code))); }

    void putSize(std::vector<std::uint8_t>& to, int widthPx, int heightPx)
    {
        appendNumber(to, static_cast<unsigned>(widthPx), 2);
        appendNumber(to, static_cast<unsigned>(heightPx), 2);
    }

} // namespace

LzwCoder::LzwCoder(StagedFile& file, int widthPx, int indexBits)
    : m_widthPx(widthPx)
    , m_file(file)
    , m_clearCode(1 << std::max(indexBits, 2)) // two colours are coded like four
{
    m_nextCode = firstFreeCode();
    const std::uint8_t start[] = { static_cast<std::uint8_t>(widthOf(m_clearCode) - 1) };
    m_file.write(start);
    putBits(static_cast<unsigned>(m_clearCode), widthOf(m_clearCode));
}

void LzwCoder::putBits(unsigned bits, int count)
{
    m_bits |= std::uint64_t { bits } << m_bitCount;
    m_bitCount += count;
    if (m_bitCount >= 32) // seldom enough to be predicted
        for (int i = 0; i < 4; ++i)
            storeByte();
}

void LzwCoder::storeByte()
{
    m_bytes[m_byteCount++] = static_cast<std::uint8_t>(m_bits);
    m_bits >>= 8;
    m_bitCount -= 8;
}

/// A reader adds a string to its table one code later than we do: the code in hand is as wide as
/// the code below the free one.
void LzwCoder::putCodes()
{
    for (int i = firstFreeCode(); i < m_nextCode; ++i)
        putBits(m_codes[static_cast<std::size_t>(i)], widthOf(i - 1));
}

void LzwCoder::startTable()
{
    putCodes();
    putBits(static_cast<unsigned>(m_clearCode), widthOf(m_nextCode - 1));
    writeBlocks(m_byteCount / blockBytes * blockBytes);
    m_nextCode = firstFreeCode();
}

void LzwCoder::finish()
{
    m_codes[static_cast<std::size_t>(m_nextCode++)] = static_cast<std::uint16_t>(m_current);
    putCodes();
    putBits(static_cast<unsigned>(m_clearCode) + 1, widthOf(m_nextCode - 1));
    while (m_bitCount > 0)
        storeByte(); // the last one is filled with zeros
    writeBlocks(m_byteCount);
    m_file.write(std::array<std::uint8_t, 2> { 0, ';' }); // no more sub-blocks, end of the file
}

/// Writes the first `bytes` of `m_bytes`.
void LzwCoder::writeBlocks(std::size_t bytes)
{
    for (std::size_t at = 0; at < bytes; at += blockBytes) {
        const std::size_t count = std::min(blockBytes, bytes - at);
        m_file.write(std::array { static_cast<std::uint8_t>(count) });
        m_file.write({ m_bytes.data() + at, count });
    }
    std::copy(m_bytes.data() + bytes, m_bytes.data() + m_byteCount, m_bytes.data());
    m_byteCount -= bytes;
}

std::unique_ptr<LzwCoder> startGif(StagedFile& file, int widthPx, int heightPx,
                                   const std::vector<RgbColor>& palette,
                                   std::optional<int> transparentIndex, bool isBilevel)
{
    const int bits = std::max(widthOf(static_cast<int>(palette.size()) - 1), 1); // of the indexes
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
    file.write(header);
    return isBilevel ? bilevelLzw(file, widthPx) : indexLzw(file, widthPx, bits);
}

} // namespace pagestack
