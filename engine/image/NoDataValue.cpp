#include "engine/image/NoDataValue.h"

#include "engine/image/TiffFile.h"
#include "engine/image/TiffPageTags.h"

#include <QByteArray>

#include <tiffio.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
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

    /// The bits of a sample of that value; none when a sample cannot hold it.
    std::optional<std::uint64_t> sampleBits(double value, const TiffPageTags& tags)
    {
        const int bits = tags.bitsPerSample;
        if (tags.sampleFormat == SAMPLEFORMAT_IEEEFP) {
            if (bits == 32)
                return std::bit_cast<std::uint32_t>(static_cast<float>(value));
            if (bits == 64)
                return std::bit_cast<std::uint64_t>(value);
            return std::nullopt;
        }
        const bool isSigned = tags.sampleFormat == SAMPLEFORMAT_INT;
        const double end = std::ldexp(1.0, isSigned ? bits - 1 : bits);
        if (!(value >= (isSigned ? -end : 0.0)) || value >= end || std::trunc(value) != value)
            return std::nullopt;
        const auto raw = value < 0 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(value))
                                   : static_cast<std::uint64_t>(value);
        return bits == 64 ? raw : raw & ((std::uint64_t { 1 } << static_cast<unsigned>(bits)) - 1U);
    }

} // namespace

NoDataValue noDataValue(const TiffFile& file, int index, const TiffPageTags& tags)
{
    const QByteArray text = noDataText(file, index);
    bool isNumber = false;
    double value = text.toDouble(&isNumber);
    if (text.compare("nan", Qt::CaseInsensitive) == 0) {
        value = std::nan("");
        isNumber = true;
    }
    const std::optional<std::uint64_t> bits
        = isNumber ? sampleBits(value, tags) : std::optional<std::uint64_t>();
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
