#include "engine/image/JpegTail.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace pagestack {

namespace {

    using Bytes = std::span<const std::uint8_t>;

    constexpr std::uint8_t startOfImage = 0xD8;
    constexpr std::uint8_t endOfImage = 0xD9;
    constexpr std::uint8_t startOfScan = 0xDA;
    constexpr std::uint8_t restartInterval = 0xDD;

    bool isRestart(std::uint8_t marker) { return marker >= 0xD0 && marker <= 0xD7; }

    bool isFrame(std::uint8_t marker)
    {
        return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8
            && marker != 0xCC;
    }

    unsigned number(Bytes bytes, std::size_t at) { return bytes[at] * 256U + bytes[at + 1]; }

    /// Minimum coded units of the only scan of a frame: section A.2 of the standard.
    std::uint64_t unitsOf(Bytes frame)
    {
        if (frame.size() < 6 || frame.size() < 6 + std::size_t { 3 } * frame[5])
            return 0;
        unsigned horizontal = 1;
        unsigned vertical = 1;
        for (std::size_t c = 0; frame[5] > 1 && c < frame[5]; ++c) {
            const unsigned factors = frame[6 + 3 * c + 1];
            horizontal = std::max(horizontal, factors >> 4U);
            vertical = std::max(vertical, factors & 15U);
        }
        const auto across = (number(frame, 3) + 8 * horizontal - 1) / (8 * horizontal);
        const auto down = (number(frame, 1) + 8 * vertical - 1) / (8 * vertical);
        return std::uint64_t { across } * down;
    }

    struct Scan
    {
        std::uint64_t units = 0;
        unsigned interval = 0; ///< units between restart markers; 0: there are none
        std::uint64_t restarts = 0;
        std::size_t end = 0; ///< of the coded data in the stream
        bool isOnly = false;
    };

    /// The first scan; none when the stream cannot be followed to its end.
    std::optional<Scan> firstScan(Bytes stream)
    {
        Scan scan;
        std::size_t at = 0;
        const auto nextMarker = [&] {
            while (at + 1 < stream.size() && (stream[at] != 0xFF || stream[at + 1] == 0xFF))
                ++at;
            at += 2;
            return at <= stream.size() ? stream[at - 1] : endOfImage;
        };
        for (std::uint8_t marker = nextMarker(); marker != startOfScan; marker = nextMarker()) {
            if (marker == startOfImage)
                continue;
            if (marker == endOfImage || at + 2 > stream.size()
                || number(stream, at) > stream.size() - at || number(stream, at) < 2)
                return std::nullopt;
            const Bytes segment = stream.subspan(at + 2, number(stream, at) - 2);
            if (isFrame(marker))
                scan.units = unitsOf(segment);
            else if (marker == restartInterval && segment.size() >= 2)
                scan.interval = number(segment, 0);
            at += number(stream, at);
        }
        for (std::uint8_t marker = nextMarker();; marker = nextMarker()) {
            if (isRestart(marker)) {
                ++scan.restarts;
            } else if (marker != 0) {
                scan.end = std::min(at, stream.size()) - 2;
                scan.isOnly = marker == endOfImage;
                return scan;
            }
        }
    }

} // namespace

JpegTail judgeJpegTail(std::span<const std::uint8_t> stream, std::uint64_t leftBytes)
{
    const std::optional<Scan> scan = stream.size() > 4 ? firstScan(stream) : std::nullopt;
    if (!scan || !scan->isOnly)
        return JpegTail::Unknown;
    if (scan->interval > 0
        && scan->restarts + 1 < (scan->units + scan->interval - 1) / scan->interval)
        return JpegTail::LostRestarts;
    const Bytes tail = stream.first(scan->end).last(
        static_cast<std::size_t>(std::min<std::uint64_t>(leftBytes, scan->end)));
    const auto is
        = [](std::uint8_t value) { return [=](std::uint8_t byte) { return byte == value; }; };
    const bool isFiller = std::all_of(tail.begin(), tail.end(), is(0))
        || std::all_of(tail.begin(), tail.end(), is(0xFF));
    return isFiller ? JpegTail::Filler : JpegTail::Unknown;
}

} // namespace pagestack
