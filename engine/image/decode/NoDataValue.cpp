#include "engine/image/decode/NoDataValue.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/SampleMath.h"

#include <QByteArray>

#include <tiffio.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <vector>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr unsigned noDataTag = 42113;
    constexpr std::uint64_t longestText = 64;

    QByteArray noDataText(const TiffPage& page)
    try {
        const TiffTagValue* value = page.directory().find(noDataTag);
        if (value == nullptr)
            return {};
        QByteArray text(static_cast<qsizetype>(std::min(value->bytes, longestText)), '\0');
        page.document().readAt(
            value->offset,
            { reinterpret_cast<std::uint8_t*>(text.data()), static_cast<size_t>(text.size()) });
        return QByteArray(text.constData()).trimmed(); // up to its end mark
    } catch (const std::runtime_error&) {
        return {};
    }

    /// The bits of the number of 5 + 10 or 7 + 16 bits that is nearest to `value`, which is not
    /// below 0; none when it is too large.
    std::optional<std::uint64_t> nearestFloat(double value, int bits)
    {
        const int fractionBits = bits == 16 ? 10 : 16;
        const int bias = (1 << (bits - fractionBits - 2)) - 1;
        const int exponent = value == 0 ? 1 - bias : std::max(std::ilogb(value), 1 - bias);
        // With the highest bit of the fraction, which the stored exponent is less by.
        const double fraction = std::nearbyint(std::ldexp(value, fractionBits - exponent));
        if (value > std::ldexp(2.0 - std::ldexp(1.0, -fractionBits), bias))
            return std::nullopt;
        return static_cast<std::uint64_t>(fraction)
            + (static_cast<std::uint64_t>(exponent + bias - 1) << fractionBits);
    }

    std::optional<std::uint64_t> floatBits(const QByteArray& text, int bits)
    {
        bool isNumber = false;
        const double value = text.toDouble(&isNumber);
        if (!isNumber)
            return std::nullopt;
        if (bits == 64)
            return std::bit_cast<std::uint64_t>(value);
        if (bits == 32)
            return std::bit_cast<std::uint32_t>(static_cast<float>(value));
        const std::uint64_t lowestOfExponent = bits == 16 ? 0x400 : 0x10000;
        const std::uint64_t signBit = std::uint64_t { 1 } << static_cast<unsigned>(bits - 1);
        const std::uint64_t infinity = signBit - lowestOfExponent;
        const std::uint64_t sign = std::signbit(value) ? signBit : 0;
        if (std::isnan(value))
            return sign | infinity | lowestOfExponent / 2;
        if (std::isinf(value))
            return sign | infinity;
        const auto raw = nearestFloat(std::abs(value), bits);
        return raw ? std::optional(sign | *raw) : std::nullopt;
    }

    /// A whole number may be written as "-9999" or as "255.0".
    std::optional<std::uint64_t> wholeBits(const QByteArray& text, int bits, bool isSigned)
    {
        const auto unused = static_cast<unsigned>(64 - bits);
        bool isNumber = false;
        if (const std::uint64_t number = text.toULongLong(&isNumber); isNumber) {
            const unsigned valueBits = static_cast<unsigned>(bits) - (isSigned ? 1U : 0U);
            const bool fits = valueBits == 64 || number >> valueBits == 0;
            return fits ? std::optional(number) : std::nullopt;
        }
        if (const std::int64_t number = text.toLongLong(&isNumber); isNumber) {
            const std::uint64_t raw = static_cast<std::uint64_t>(number) << unused;
            const bool fits = isSigned && static_cast<std::int64_t>(raw) >> unused == number;
            return fits ? std::optional(raw >> unused) : std::nullopt;
        }
        const double number = text.toDouble(&isNumber);
        if (!isNumber || std::trunc(number) != number || std::abs(number) > 1e15)
            return std::nullopt;
        return wholeBits(QByteArray::number(static_cast<qint64>(number)), bits, isSigned);
    }

    /// The bits of a sample of that value; none when a sample cannot hold it.
    std::optional<std::uint64_t> sampleBits(const QByteArray& text, const TiffPageTags& tags)
    {
        if (tags.sampleFormat == SAMPLEFORMAT_IEEEFP)
            return floatBits(text, tags.bitsPerSample);
        return wholeBits(text, tags.bitsPerSample, tags.sampleFormat == SAMPLEFORMAT_INT);
    }

} // namespace

NoDataValue noDataValue(const TiffPage& page)
{
    const QByteArray text = noDataText(page);
    // Qt reads "nan" in small letters alone.
    const std::optional<std::uint64_t> bits = sampleBits(text.toLower(), page.tags());
    if (!bits)
        return { 0, u"0"_s };
    return { *bits, QString::fromLatin1(text) + u" (GDAL_NODATA)"_s };
}

void fillSamples(std::span<std::uint8_t> rows, std::size_t rowBytes, int bitsPerSample,
                 std::uint64_t value)
{
    const auto bits = static_cast<std::size_t>(bitsPerSample);
    std::vector<std::uint8_t> pattern(bits); // eight samples
    for (std::size_t i = 0; i < 8 * bits; ++i)
        pattern[i / 8] = static_cast<std::uint8_t>(pattern[i / 8] << 1U
                                                   | (value >> (bits - 1 - i % bits) & 1U));
    if (hasByteOrder(bitsPerSample) && std::endian::native == std::endian::little)
        for (auto at = pattern.begin(); at != pattern.end(); at += bitsPerSample / 8)
            std::reverse(at, at + bitsPerSample / 8);
    std::vector<std::uint8_t> row(rowBytes);
    for (std::size_t i = 0; i < rowBytes; ++i)
        row[i] = pattern[i % bits];
    for (; !rows.empty(); rows = rows.subspan(std::min(rowBytes, rows.size())))
        std::copy_n(row.begin(), std::min(rowBytes, rows.size()), rows.begin());
}

} // namespace pagestack
