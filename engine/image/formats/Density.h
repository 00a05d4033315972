#pragma once

#include "engine/image/pixels/PageSource.h"

namespace pagestack {

/// Pixels a unit as a file has them, in whole numbers.
struct Density
{
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint8_t unit = 0; ///< of JFIF: 0 (a ratio), 1 (inch) or 2 (centimetre)
};

/// A metre, as in PNG and BMP; 0 if the resolution is unknown or only a ratio.
Density metricDensity(const Resolution& resolution);

/// Of a JFIF header: 16-bit values of at least 1.
Density jfifDensity(const Resolution& resolution);

/// A ratio in small numbers, for resolutions without a unit; 1 : 1 for square pixels.
Density pixelRatio(const Resolution& resolution);

} // namespace pagestack
