#include "engine/image/tiffwriter/PieceWriter.h"

#include <tiffio.h>

#include <cstring>
#include <stdexcept>
#include <vector>

namespace pagestack {

namespace {

    /// The data of larger ones are not held as a whole.
    constexpr std::size_t mostBytes = std::size_t { 16 } * 1024 * 1024;

    int numberOf(TIFF* handle, ttag_t tag)
    {
        std::uint16_t value = 0;
        return TIFFGetFieldDefaulted(handle, tag, &value) == 1 ? value : 0;
    }

    /// TIFF 6.0, section 14: of each sample of a row the one before it of the same kind, which is
    /// `step` samples back, is taken away.
    template <typename Sample>
    void subtractInRow(std::span<std::uint8_t> row, std::size_t step)
    {
        const std::size_t count = row.size() / sizeof(Sample);
        // Both kept, for the next of many rows.
        thread_local std::vector<Sample> samples;
        thread_local std::vector<Sample> differences;
        samples.resize(count);
        std::memcpy(samples.data(), row.data(), row.size());
        differences = samples;
        for (std::size_t i = step; i < count; ++i)
            differences[i] = static_cast<Sample>(samples[i] - samples[i - step]);
        std::memcpy(row.data(), differences.data(), row.size());
    }

} // namespace

PieceWriter::PieceWriter(tiff* to)
    : m_to(to)
    , m_isTiled(TIFFIsTiled(to) != 0)
{
    if (isLzwEncodedHere())
        m_lzw = std::make_unique<LzwEncoder>();
}

/// libtiff's encoder makes the same data, but in more time.
bool PieceWriter::isLzwEncodedHere() const
{
    const int bits = numberOf(m_to, TIFFTAG_BITSPERSAMPLE);
    return numberOf(m_to, TIFFTAG_COMPRESSION) == COMPRESSION_LZW
        && numberOf(m_to, TIFFTAG_FILLORDER) == FILLORDER_MSB2LSB && TIFFIsByteSwapped(m_to) == 0
        && (numberOf(m_to, TIFFTAG_PREDICTOR) == PREDICTOR_NONE || bits == 8 || bits == 16);
}

void PieceWriter::write(std::uint32_t number, std::span<std::uint8_t> samples)
{
    auto write = m_isTiled ? TIFFWriteEncodedTile : TIFFWriteEncodedStrip;
    std::span<const std::uint8_t> bytes = samples;
    if (m_lzw && !samples.empty() && samples.size() <= mostBytes) {
        if (numberOf(m_to, TIFFTAG_PREDICTOR) == PREDICTOR_HORIZONTAL)
            subtractNeighbours(samples);
        bytes = m_lzw->encode(samples);
        write = m_isTiled ? TIFFWriteRawTile : TIFFWriteRawStrip;
    }
    const auto size = static_cast<tmsize_t>(bytes.size());
    // libtiff only reads them.
    if (write(m_to, number, const_cast<std::uint8_t*>(bytes.data()), size) != size)
        throw std::runtime_error("the page cannot be encoded");
}

void PieceWriter::subtractNeighbours(std::span<std::uint8_t> samples) const
{
    const auto rowBytes
        = static_cast<std::size_t>(m_isTiled ? TIFFTileRowSize(m_to) : TIFFScanlineSize(m_to));
    if (rowBytes == 0 || samples.size() % rowBytes != 0)
        throw std::runtime_error("the page cannot be encoded");
    const bool isTogether = numberOf(m_to, TIFFTAG_PLANARCONFIG) == PLANARCONFIG_CONTIG;
    const auto step
        = static_cast<std::size_t>(isTogether ? numberOf(m_to, TIFFTAG_SAMPLESPERPIXEL) : 1);
    for (; !samples.empty(); samples = samples.subspan(rowBytes))
        if (numberOf(m_to, TIFFTAG_BITSPERSAMPLE) == 8)
            subtractInRow<std::uint8_t>(samples.first(rowBytes), step);
        else
            subtractInRow<std::uint16_t>(samples.first(rowBytes), step);
}

} // namespace pagestack
