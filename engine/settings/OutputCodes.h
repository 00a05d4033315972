#pragma once

#include <QString>

#include <cstdint>

namespace pagestack {

/// The output formats by the codes that Settings::outputType holds.
enum class OutputType : int {
    Jpeg = 0,
    Png = 1,
    Tiff = 2,
    Bmp = 3,
    Gif = 4,
};

/// The TIFF compressions by the codes that Settings::tiffCompressionIndex holds.
enum class TiffCompression : int {
    None = 0,
    CcittGroup3 = 1,
    CcittGroup4 = 2,
    Lzw = 3,
    PackBits = 4,
};

/// The extension of output names of the format, dot included (".tiff"); "" for a code outside 0..4.
QString fileExtension(int outputType);

/// Value of the tag Compression of TIFF 6.0 for a compression code; 1, no compression, for a code
/// outside 0..4.
std::uint16_t tiffCompressionTag(int index);

} // namespace pagestack
