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

/// What the tag GDAL_NODATA (42113, a number as text) of `page` says; 0 where there
/// is none, or none that the samples of the page can hold.
NoDataValue noDataValue(const TiffPage& page);

/// Fills rows of `rowBytes` bytes with samples of `bitsPerSample` bits that are `value`, packed as
/// in a TIFF file, those of 16, 24, 32 and 64 bits in the machine's byte order.
void fillSamples(std::span<std::uint8_t> rows, std::size_t rowBytes, int bitsPerSample,
                 std::uint64_t value);

} // namespace pagestack
