#include "engine/image/tiff/JpegSampling.h"

#include "engine/image/pixels/ByteOrder.h"

namespace pagestack {

namespace {

    // ITU-T T.81, table B.1.
    constexpr std::uint8_t startOfImage = 0xD8;
    constexpr std::uint8_t baselineFrame = 0xC0;
    constexpr std::uint8_t progressiveFrame = 0xC2;
    constexpr std::uint8_t startOfScan = 0xDA;
    constexpr std::uint8_t huffmanTables = 0xC4;
    constexpr std::uint8_t quantizationTables = 0xDB;
    constexpr std::uint8_t restartInterval = 0xDD;
    constexpr std::uint8_t firstApplicationData = 0xE0;
    constexpr std::uint8_t lastApplicationData = 0xEF;
    constexpr std::uint8_t comment = 0xFE;

    bool isPassedOver(std::uint8_t marker)
    {
        return marker == huffmanTables || marker == quantizationTables || marker == restartInterval
            || marker == comment
            || (marker >= firstApplicationData && marker <= lastApplicationData);
    }

    /// Section B.2.2; `frame` is all of it behind the marker.
    std::optional<std::pair<int, int>> samplingOfFrame(std::span<const std::uint8_t> frame)
    {
        constexpr std::size_t size = 17; // of three channels
        constexpr std::uint8_t once = 0x11;
        if (frame.size() != size || frame[7] != 3 || frame[12] != once || frame[15] != once)
            return std::nullopt;
        return std::pair { frame[9] >> 4, frame[9] & 15 };
    }

} // namespace

std::optional<std::pair<int, int>> jpegSampling(std::span<const std::uint8_t> start)
{
    if (start.size() < 2 || start[0] != 0xFF || start[1] != startOfImage)
        return std::nullopt;
    start = start.subspan(2);
    while (start.size() >= 4 && start[0] == 0xFF && start[1] != startOfScan) {
        const std::uint8_t marker = start[1];
        const std::uint64_t size = numberIn(start.subspan(2, 2), true);
        if (size < 2 || size > start.size() - 2)
            return std::nullopt;
        if (marker >= baselineFrame && marker <= progressiveFrame)
            return samplingOfFrame(start.subspan(2, size));
        if (!isPassedOver(marker))
            return std::nullopt;
        start = start.subspan(2 + size);
    }
    return std::nullopt;
}

} // namespace pagestack
