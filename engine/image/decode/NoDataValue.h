#pragma once

#include <QString>

#include <cstdint>
#include <span>

namespace pagestack {

class TiffPage;

/// The sample value of places without data.
struct NoDataValue
{
    std::uint64_t bits = 0; ///< of a sample
    QString text; ///< for people: "0", or "-9999 (GDAL_NODATA)"
};

/// The value of the tag GDAL_NODATA (42113, a number as text), or 0 if `page` has none that its
/// samples can hold.
NoDataValue noDataValue(const TiffPage& page);

/// Fills rows of `rowBytes` bytes with samples of `bitsPerSample` bits that are `value`, packed as
/// in a TIFF file, those of 16, 24, 32 and 64 bits in the machine's byte order.
void fillSamples(std::span<std::uint8_t> rows, std::size_t rowBytes, int bitsPerSample,
                 std::uint64_t value);

} // namespace pagestack
