#include "engine/image/decode/NoDataValue.h"

#include "engine/image/tiff/TiffFile.h"
#include "engine/image/tiff/TiffPageTags.h"

#include <QByteArray>

#include <tiffio.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>
#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr unsigned noDataTag = 42113;
    constexpr std::uint64_t longestText = 64;

    QByteArray noDataText(const TiffFile& file, int index)
    try {
        for (const TiffTagValue& value : file.directory(index).values) {
            if (value.tag != noDataTag)
                continue;
            QByteArray text(static_cast<qsizetype>(std::min(value.bytes, longestText)), '\0');
            file.readAt(
                value.offset,
                { reinterpret_cast<std::uint8_t*>(text.data()), static_cast<size_t>(text.size()) });
            return QByteArray(text.constData()).trimmed(); // up to its end mark
        }
        return {};
    } catch (const std::runtime_error&) {
        return {};
    }

    /// A floating-point number of a sign, `exponentBits` and `fractionBits`, as in IEEE 754; none
    /// when it is too large.
    std::optional<std::uint64_t> smallFloatBits(double value, int exponentBits, int fractionBits)
    {
        const std::uint64_t sign = std::signbit(value) ? 1 : 0;
        const std::uint64_t mostExponent
            = (std::uint64_t { 1 } << static_cast<unsigned>(exponentBits)) - 1U;
        const int bias = static_cast<int>(mostExponent >> 1U);
        const auto place = static_cast<unsigned>(fractionBits);
        std::uint64_t bits = mostExponent << place; // infinite
        if (std::isnan(value)) {
            bits |= std::uint64_t { 1 } << (place - 1);
        } else if (!std::isinf(value)) {
            int exponent = 0;
            std::frexp(value, &exponent); // of a number from 0.5 to 1
            exponent = std::max(exponent - 1 + bias, 1);
            const double fraction
                = std::nearbyint(std::ldexp(std::abs(value), fractionBits + bias - exponent));
            // The bit in front of the fraction adds one to the exponent where there is one.
            bits = (static_cast<std::uint64_t>(exponent - 1) << place)
                + static_cast<std::uint64_t>(fraction);
            if (exponent >= static_cast<int>(mostExponent) || bits >= mostExponent << place)
                return std::nullopt;
        }
        return sign << static_cast<unsigned>(exponentBits + fractionBits) | bits;
    }

    std::optional<std::uint64_t> floatBits(const QByteArray& text, int bits)
    {
        bool isNumber = false;
        const double value = text.toDouble(&isNumber);
        if (!isNumber)
            return std::nullopt;
        switch (bits) {
        case 16:
            return smallFloatBits(value, 5, 10);
        case 24: // Adobe's supplement on floating point in TIFF, 2005
            return smallFloatBits(value, 7, 16);
        case 32:
            return std::bit_cast<std::uint32_t>(static_cast<float>(value));
        default:
            return std::bit_cast<std::uint64_t>(value);
        }
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

NoDataValue noDataValue(const TiffFile& file, int index, const TiffPageTags& tags)
{
    const QByteArray text = noDataText(file, index);
    // Qt reads "nan" in small letters alone.
    const std::optional<std::uint64_t> bits = sampleBits(text.toLower(), tags);
    if (!bits)
        return { 0, u"0"_s };
    return { *bits, QString::fromLatin1(text) + u" (GDAL_NODATA)"_s };
}

void fillSamples(std::span<std::uint8_t> rows, std::size_t rowBytes, int bitsPerSample,
                 std::uint64_t value)
{
    if (value == 0) {
        std::fill(rows.begin(), rows.end(), std::uint8_t { 0 });
        return;
    }
    const bool isNumber = bitsPerSample % 8 == 0 && bitsPerSample != 40 && bitsPerSample != 48
        && bitsPerSample != 56;
    const auto sampleBytes = static_cast<std::size_t>(bitsPerSample / 8);
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const std::size_t at = i % rowBytes;
        if (isNumber) {
            const std::size_t byte = at % sampleBytes;
            const std::size_t shift
                = std::endian::native == std::endian::little ? byte : sampleBytes - 1 - byte;
            rows[i] = static_cast<std::uint8_t>(value >> (8 * shift));
            continue;
        }
        unsigned packed = 0;
        for (std::size_t bit = at * 8; bit < at * 8 + 8; ++bit) {
            const std::size_t place = bit % static_cast<std::size_t>(bitsPerSample);
            const std::size_t shift = static_cast<std::size_t>(bitsPerSample) - 1 - place;
            packed = packed << 1U | static_cast<unsigned>(value >> shift & 1U);
        }
        rows[i] = static_cast<std::uint8_t>(packed);
    }
}

} // namespace pagestack
