#pragma once

#include "engine/image/pixels/PageSource.h"

namespace pagestack {

/// Whole pixels a metre, as in PNG and BMP; 0 if the resolution is unknown or only a ratio.
struct MetricDensity
{
    std::uint32_t x = 0;
    std::uint32_t y = 0;
};
MetricDensity metricDensity(const Resolution& resolution);

/// Of a JFIF header: unit 0 (a ratio), 1 (inch) or 2 (centimetre), values of at least 1.
struct JfifDensity
{
    std::uint8_t unit = 0;
    std::uint16_t x = 1;
    std::uint16_t y = 1;
};
JfifDensity jfifDensity(const Resolution& resolution);

/// A ratio x : y in small whole numbers, for resolutions without a unit; {1, 1} for square pixels.
struct PixelRatio
{
    std::uint16_t x = 1;
    std::uint16_t y = 1;
};
PixelRatio pixelRatio(const Resolution& resolution);

} // namespace pagestack
