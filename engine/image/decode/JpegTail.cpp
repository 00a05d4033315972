#include "engine/image/decode/JpegTail.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
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

    /// A marker with the segment behind it. Section B.1.1.
    struct Segment
    {
        std::uint8_t marker = endOfImage;
        std::size_t at = 0; ///< of the marker
        std::optional<Bytes> bytes; ///< none where they do not fit into the stream
    };

    /// Follows the markers of a stream but those that have a meaning to the decoder alone.
    class Segments
    {
    public:
        explicit Segments(Bytes stream)
            : m_stream(stream)
        {
        }

        std::uint64_t restarts() const { return m_restarts; } ///< markers so far

        /// The next segment, after coded data too; an end of the image at the end of the stream.
        Segment next()
        {
            for (; m_at + 1 < m_stream.size(); ++m_at) {
                const std::uint8_t marker = m_stream[m_at + 1];
                if (m_stream[m_at] != 0xFF || marker == 0xFF)
                    continue;
                m_restarts += isRestart(marker) ? 1 : 0;
                if (marker != 0 && marker != startOfImage && !isRestart(marker))
                    return segment(marker);
                ++m_at; // over the marker
            }
            return { endOfImage, m_stream.size(), {} };
        }

    private:
        Segment segment(std::uint8_t marker)
        {
            Segment found { marker, m_at, {} };
            m_at += 2;
            const Bytes rest = m_stream.subspan(m_at);
            const std::size_t length = rest.size() < 2 ? 0 : number(rest, 0);
            if (marker == endOfImage || length < 2 || length > rest.size())
                return found;
            found.bytes = rest.subspan(2, length - 2);
            m_at += length;
            return found;
        }

        Bytes m_stream;
        std::size_t m_at = 0;
        std::uint64_t m_restarts = 0;
    };

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
        Segments segments(stream);
        for (Segment segment = segments.next(); segment.marker != startOfScan;
             segment = segments.next()) {
            if (!segment.bytes)
                return std::nullopt;
            if (isFrame(segment.marker))
                scan.units = unitsOf(*segment.bytes);
            else if (segment.marker == restartInterval && segment.bytes->size() >= 2)
                scan.interval = number(*segment.bytes, 0);
        }
        const std::uint64_t before = segments.restarts();
        const Segment behind = segments.next();
        scan.restarts = segments.restarts() - before;
        scan.end = behind.at;
        scan.isOnly = behind.marker == endOfImage;
        return scan;
    }

    /// How many low bits of each coefficient are still to come, by the identifier of the component.
    using BitsToCome = std::map<std::uint8_t, std::array<std::uint8_t, 64>>;

    /// Takes the header of a scan, section B.2.3, without its length. False when it makes no sense.
    bool takeScan(Bytes header, BitsToCome& bits)
    {
        constexpr std::uint8_t unknown = 255;
        const std::size_t count = header.empty() ? 0 : header[0];
        if (header.size() < 4 + 2 * count || count == 0)
            return false;
        const std::size_t first = header[1 + 2 * count];
        const std::size_t last = header[2 + 2 * count];
        for (std::size_t c = 0; c < count; ++c) {
            const auto [component, isNew] = bits.try_emplace(header[1 + 2 * c]);
            if (isNew)
                component->second.fill(unknown);
            for (std::size_t k = first; k <= last && k < component->second.size(); ++k)
                component->second[k] = header[3 + 2 * count] & 15U;
        }
        return true;
    }

} // namespace

bool hasAllScans(std::span<const std::uint8_t> stream)
{
    BitsToCome bits;
    std::size_t components = 0;
    Segments segments(stream);
    for (Segment segment = segments.next(); segment.bytes; segment = segments.next()) {
        if (isFrame(segment.marker) && segment.bytes->size() > 5)
            components = (*segment.bytes)[5];
        if (segment.marker == startOfScan && !takeScan(*segment.bytes, bits))
            return false;
    }
    return components > 0 && bits.size() == components
        && std::ranges::all_of(bits, [](const auto& component) {
               return component.second == std::array<std::uint8_t, 64> {};
           });
}

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
    const auto isAll = [tail](std::uint8_t value) {
        return std::ranges::all_of(tail, [value](std::uint8_t byte) { return byte == value; });
    };
    return isAll(0) || isAll(0xFF) ? JpegTail::Filler : JpegTail::Unknown;
}

} // namespace pagestack
