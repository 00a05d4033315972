#include "engine/image/decode/SampleOrder.h"

#include "engine/image/pixels/SampleMath.h"
#include "engine/image/tiff/TiffPageTags.h"

#include <tiffio.h>

#include <algorithm>
#include <bit>
#include <stdexcept>
#include <string>
#include <vector>

namespace pagestack {

namespace {

    /// Adds to each sample the one a pixel before it.
    template <typename Sample>
    void accumulate(std::span<std::uint8_t> row, std::size_t stride)
    {
        const std::size_t count = row.size() / sizeof(Sample);
        for (std::size_t i = stride; i < count; ++i) {
            std::uint8_t* at = row.data() + i * sizeof(Sample);
            const auto before = loadSample<Sample>(at - stride * sizeof(Sample));
            storeSample(at, static_cast<Sample>(loadSample<Sample>(at) + before));
        }
    }

    /// The same for bytes of `stride` interleaved channels, held in registers.
    template <std::size_t stride>
    void accumulateBytes(std::span<std::uint8_t> row)
    {
        std::uint8_t sums[stride] = {};
        for (std::size_t i = 0; i + stride <= row.size(); i += stride)
            for (std::size_t c = 0; c < stride; ++c)
                row[i + c] = sums[c] = static_cast<std::uint8_t>(sums[c] + row[i + c]);
    }

    void accumulateBytes(std::span<std::uint8_t> row, std::size_t stride)
    {
        switch (stride) {
        case 1:
            return accumulateBytes<1>(row);
        case 3:
            return accumulateBytes<3>(row);
        case 4:
            return accumulateBytes<4>(row);
        default:
            return accumulate<std::uint8_t>(row, stride);
        }
    }

} // namespace

bool SampleOrder::knows(const TiffPageTags& tags)
{
    const int bits = tags.bitsPerSample;
    return tags.predictor == PREDICTOR_NONE
        || (tags.predictor == PREDICTOR_HORIZONTAL
            && (bits == 8 || bits == 16 || bits == 32 || bits == 64))
        || (tags.predictor == PREDICTOR_FLOATINGPOINT && tags.sampleFormat == SAMPLEFORMAT_IEEEFP
            && hasByteOrder(bits));
}

SampleOrder::SampleOrder(const TiffPageTags& tags, bool isSwapped)
    : m_bits(tags.bitsPerSample)
    , m_predictor(tags.predictor)
    , m_stride(static_cast<std::size_t>(tags.samplesInPlane()))
    , m_isSwapped(isSwapped && hasByteOrder(tags.bitsPerSample))
{
    if (!knows(tags))
        throw std::runtime_error("predictor " + std::to_string(m_predictor)
                                 + " is not supported for its samples");
}

void SampleOrder::restore(std::span<std::uint8_t> rows, std::size_t rowBytes) const
{
    if (m_predictor == PREDICTOR_FLOATINGPOINT) {
        std::vector<std::uint8_t> bytePlanes(rowBytes);
        for (; rows.size() >= rowBytes; rows = rows.subspan(rowBytes))
            restoreFloats(rows.first(rowBytes), bytePlanes);
        return; // which gives the machine's order
    }
    if (m_isSwapped)
        swapBytes(rows);
    if (m_predictor == PREDICTOR_HORIZONTAL)
        for (; rows.size() >= rowBytes; rows = rows.subspan(rowBytes))
            restoreRow(rows.first(rowBytes));
}

void SampleOrder::restoreRow(std::span<std::uint8_t> row) const
{
    switch (m_bits) {
    case 8:
        return accumulateBytes(row, m_stride);
    case 16:
        return accumulate<std::uint16_t>(row, m_stride);
    case 32:
        return accumulate<std::uint32_t>(row, m_stride);
    default:
        return accumulate<std::uint64_t>(row, m_stride);
    }
}

/// The row has the highest bytes of all its samples, then the next lower ones, each byte as the
/// difference to the one of the pixel before.
void SampleOrder::restoreFloats(std::span<std::uint8_t> row,
                                std::span<std::uint8_t> bytePlanes) const
{
    accumulateBytes(row, m_stride);
    std::ranges::copy(row, bytePlanes.begin());
    const auto bytes = static_cast<std::size_t>(m_bits / 8);
    const std::size_t samples = row.size() / bytes;
    for (std::size_t i = 0; i < samples; ++i)
        for (std::size_t b = 0; b < bytes; ++b) {
            const std::size_t plane
                = std::endian::native == std::endian::little ? bytes - 1 - b : b;
            row[i * bytes + b] = bytePlanes[plane * samples + i];
        }
}

void SampleOrder::swapBytes(std::span<std::uint8_t> bytes) const
{
    const auto count = static_cast<tmsize_t>(bytes.size() / static_cast<std::size_t>(m_bits / 8));
    void* samples = bytes.data(); // libtiff takes them byte by byte
    switch (m_bits) {
    case 16:
        return TIFFSwabArrayOfShort(static_cast<std::uint16_t*>(samples), count);
    case 24:
        return TIFFSwabArrayOfTriples(bytes.data(), count);
    case 32:
        return TIFFSwabArrayOfLong(static_cast<std::uint32_t*>(samples), count);
    default:
        return TIFFSwabArrayOfLong8(static_cast<std::uint64_t*>(samples), count);
    }
}

} // namespace pagestack
