#include "engine/image/decode/SampleUnpacker.h"

#include "engine/image/pixels/SampleMath.h"

#include <bit>
#include <cmath>
#include <stdexcept>
#include <string>

namespace pagestack {

namespace {

    std::uint32_t load24(const std::uint8_t* from)
    {
        if constexpr (std::endian::native == std::endian::little)
            return from[0] | std::uint32_t { from[1] } << 8U | std::uint32_t { from[2] } << 16U;
        else
            return std::uint32_t { from[0] } << 16U | std::uint32_t { from[1] } << 8U | from[2];
    }

    /// A binary floating-point number with a sign, `exponentBits` and `fractionBits`, as in IEEE
    /// 754.
    double smallFloat(std::uint32_t raw, int exponentBits, int fractionBits)
    {
        const std::uint32_t fractionMask = (1U << static_cast<unsigned>(fractionBits)) - 1U;
        const std::uint32_t exponentMask = (1U << static_cast<unsigned>(exponentBits)) - 1U;
        const auto fraction = static_cast<double>(raw & fractionMask);
        const auto exponent
            = static_cast<int>((raw >> static_cast<unsigned>(fractionBits)) & exponentMask);
        const int bias = static_cast<int>(exponentMask >> 1U);
        const bool isNegative
            = ((raw >> static_cast<unsigned>(fractionBits + exponentBits)) & 1U) != 0;
        double value = 0;
        if (exponent == static_cast<int>(exponentMask))
            value = fraction == 0 ? HUGE_VAL : std::nan("");
        else if (exponent == 0)
            value = std::ldexp(fraction, 1 - bias - fractionBits);
        else
            value = std::ldexp(fraction + fractionMask + 1.0, exponent - bias - fractionBits);
        return isNegative ? -value : value;
    }

    double floatSample(std::uint64_t raw, int bits)
    {
        switch (bits) {
        case 16:
            return smallFloat(static_cast<std::uint32_t>(raw), 5, 10);
        case 24: // Adobe's supplement on floating point in TIFF, 2005
            return smallFloat(static_cast<std::uint32_t>(raw), 7, 16);
        case 32:
            return static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(raw)));
        default:
            return std::bit_cast<double>(raw);
        }
    }

    constexpr std::uint64_t highest64 = ~std::uint64_t { 0 };

    std::uint64_t highest(int bits)
    {
        return bits == 64 ? highest64 : (std::uint64_t { 1 } << static_cast<unsigned>(bits)) - 1;
    }

} // namespace

SampleUnpacker::SampleUnpacker(int bitsPerSample, int sampleFormat)
    : m_bits(bitsPerSample)
    , m_isSigned(sampleFormat == 2)
    , m_isFloat(sampleFormat == 3)
    , m_outputBits(bitsPerSample <= 8 && sampleFormat != 3 ? 8 : 16)
{
    const bool isFloatDepth
        = bitsPerSample == 16 || bitsPerSample == 24 || bitsPerSample == 32 || bitsPerSample == 64;
    if (sampleFormat < 1 || sampleFormat > 4 || bitsPerSample < 1 || bitsPerSample > 64
        || (m_isFloat && !isFloatDepth))
        throw std::runtime_error("samples of format " + std::to_string(sampleFormat) + " and "
                                 + std::to_string(bitsPerSample) + " bits are not supported");
}

std::uint64_t SampleUnpacker::rawSample(const std::uint8_t* row, qsizetype index) const
{
    switch (m_bits) {
    case 8:
        return row[index];
    case 16:
        return loadSample<std::uint16_t>(row + 2 * index);
    case 24:
        return load24(row + 3 * index);
    case 32:
        return loadSample<std::uint32_t>(row + 4 * index);
    case 64:
        return loadSample<std::uint64_t>(row + 8 * index);
    default:
        break;
    }
    qsizetype bit = index * m_bits;
    std::uint64_t value = 0;
    for (int left = m_bits; left > 0;) {
        const int offset = static_cast<int>(bit % 8);
        const int count = std::min(left, 8 - offset);
        const unsigned part
            = (static_cast<unsigned>(row[bit / 8]) >> static_cast<unsigned>(8 - offset - count))
            & ((1U << static_cast<unsigned>(count)) - 1U);
        value = value << static_cast<unsigned>(count) | part;
        bit += count;
        left -= count;
    }
    return value;
}

double SampleUnpacker::number(std::uint64_t raw) const
{
    if (m_isFloat)
        return floatSample(raw, m_bits);
    const auto unused = static_cast<unsigned>(64 - m_bits);
    if (m_isSigned)
        return static_cast<double>(static_cast<std::int64_t>(raw << unused) >> unused);
    return static_cast<double>(raw);
}

std::uint16_t SampleUnpacker::scaled(std::uint64_t raw) const
{
    if (m_isFloat) {
        const double value = floatSample(raw, m_bits);
        if (!(value > 0))
            return 0; // also what is no number
        return value >= 1 ? 65535 : static_cast<std::uint16_t>(std::lround(value * 65535));
    }
    if (m_isSigned)
        raw = (raw ^ (std::uint64_t { 1 } << static_cast<unsigned>(m_bits - 1))) & highest(m_bits);
    if (m_bits > 32) { // to the full range of 64 bits first, so that nothing overflows
        std::uint64_t wide = raw << static_cast<unsigned>(64 - m_bits);
        if (m_bits < 64)
            wide |= wide >> static_cast<unsigned>(m_bits);
        constexpr std::uint64_t unit = highest64 / 65535;
        return static_cast<std::uint16_t>(wide / unit + (wide % unit > unit / 2 ? 1 : 0));
    }
    const std::uint64_t top = highest(m_bits);
    const std::uint64_t full = m_outputBits == 8 ? 255 : 65535;
    return static_cast<std::uint16_t>((raw * full + top / 2) / top);
}

void SampleUnpacker::unpack(const SampleRun& samples, std::uint8_t* to, int step) const
{
    const bool isExact = !m_isSigned && !m_isFloat;
    if (m_bits == 8 && isExact) {
        const std::uint8_t* from = samples.row + samples.first;
        for (qsizetype i = 0; i < samples.pixels; ++i)
            to[i * step] = from[i * samples.step];
    } else if (m_outputBits == 8) {
        for (qsizetype i = 0; i < samples.pixels; ++i)
            to[i * step] = static_cast<std::uint8_t>(scaled(rawSample(samples, i)));
    } else if (m_bits == 16 && isExact) {
        for (qsizetype i = 0; i < samples.pixels; ++i)
            storeSample(to + i * step * 2, static_cast<std::uint16_t>(rawSample(samples, i)));
    } else {
        for (qsizetype i = 0; i < samples.pixels; ++i)
            storeSample(to + i * step * 2, scaled(rawSample(samples, i)));
    }
}

void SampleUnpacker::unpackIndexes(const SampleRun& samples, std::uint16_t* to) const
{
    for (qsizetype i = 0; i < samples.pixels; ++i)
        to[i] = static_cast<std::uint16_t>(rawSample(samples, i));
}

} // namespace pagestack
