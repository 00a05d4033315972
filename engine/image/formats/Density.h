#pragma once

#include "engine/image/pixels/PageSource.h"

namespace pagestack {

/// Pixels a metre, rounded to whole numbers, as PNG and BMP store them; 0 where the page's
/// resolution is not known or only a ratio.
struct MetricDensity
{
    std::uint32_t x = 0;
    std::uint32_t y = 0;
};
MetricDensity metricDensity(const Resolution& resolution);

/// The density fields of a JFIF header: unit 0 (a ratio), 1 (inch) or 2 (centimetre) and 16-bit
/// values of at least 1.
struct JfifDensity
{
    std::uint8_t unit = 0;
    std::uint16_t x = 1;
    std::uint16_t y = 1;
};
JfifDensity jfifDensity(const Resolution& resolution);

/// A ratio x : y in small whole numbers, for pages whose pixels are not square but whose resolution
/// has no unit; {1, 1} for square ones.
struct PixelRatio
{
    std::uint16_t x = 1;
    std::uint16_t y = 1;
};
PixelRatio pixelRatio(const Resolution& resolution);

} // namespace pagestack
