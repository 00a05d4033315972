#include "engine/image/formats/Encoders.h"

#include "engine/image/pixels/ByteOrder.h"

#include <stdexcept>
#include <string>

namespace pagestack {

void throwTooLarge(const PageProperties& page, QLatin1StringView format)
{
    throw std::runtime_error("a page of " + std::to_string(page.widthPx) + " x "
                             + std::to_string(page.heightPx) + " pixels is too large for "
                             + format.data());
}

std::vector<RgbColor> grayPalette(int bits)
{
    const int last = (1 << bits) - 1;
    std::vector<RgbColor> palette;
    for (int i = 0; i <= last; ++i) {
        const auto level = static_cast<std::uint8_t>(i * 255 / last);
        palette.push_back({ level, level, level });
    }
    return palette;
}

void appendNumber(std::vector<std::uint8_t>& to, std::uint32_t value, int bytes)
{
    const auto added = static_cast<std::size_t>(bytes);
    to.resize(to.size() + added);
    putNumber(std::span(to).last(added), value, false);
}

} // namespace pagestack
