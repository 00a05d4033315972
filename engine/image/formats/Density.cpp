#include "engine/image/formats/Density.h"

#include <algorithm>
#include <cmath>

namespace pagestack {

namespace {

    constexpr double centimetersPerInch = 2.54;

    double perMeter(double value, ResolutionUnit unit)
    {
        return unit == ResolutionUnit::Inch ? value / 0.0254 : value * 100.0;
    }

    bool isWhole(double value)
    {
        return value >= 0.5 && value < 65535.5 && std::abs(value - std::round(value)) < 1e-4;
    }

    std::uint16_t rounded16(double value)
    {
        return static_cast<std::uint16_t>(std::clamp(std::round(value), 1.0, 65535.0));
    }

} // namespace

Density metricDensity(const Resolution& resolution)
{
    constexpr double most = 2147483647.0; // PNG and BMP: below 2^31
    if (resolution.x <= 0 || resolution.y <= 0 || resolution.unit == ResolutionUnit::None)
        return {};
    const auto whole = [&](double value) {
        return static_cast<std::uint32_t>(
            std::clamp(std::round(perMeter(value, resolution.unit)), 1.0, most));
    };
    return { whole(resolution.x), whole(resolution.y) };
}

Density jfifDensity(const Resolution& resolution)
{
    if (resolution.x <= 0 || resolution.y <= 0 || resolution.unit == ResolutionUnit::None)
        return pixelRatio(resolution);
    const double toInch = resolution.unit == ResolutionUnit::Inch ? 1.0 : centimetersPerInch;
    const double xInch = resolution.x * toInch;
    const double yInch = resolution.y * toInch;
    const double xCentimeter = xInch / centimetersPerInch;
    const double yCentimeter = yInch / centimetersPerInch;
    const bool inchIsExact = isWhole(xInch) && isWhole(yInch);
    if (!inchIsExact && isWhole(xCentimeter) && isWhole(yCentimeter))
        return { rounded16(xCentimeter), rounded16(yCentimeter), 2 };
    return { rounded16(xInch), rounded16(yInch), 1 };
}

Density pixelRatio(const Resolution& resolution)
{
    if (resolution.x <= 0 || resolution.y <= 0
        || std::abs(resolution.x - resolution.y) < 1e-6 * resolution.x)
        return { 1, 1 };
    if (isWhole(resolution.x) && isWhole(resolution.y))
        return { rounded16(resolution.x), rounded16(resolution.y) };
    const double scale = 10000.0 / std::max(resolution.x, resolution.y);
    return { rounded16(resolution.x * scale), rounded16(resolution.y * scale) };
}

} // namespace pagestack
