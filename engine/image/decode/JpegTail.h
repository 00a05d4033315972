#pragma once

#include <cstdint>
#include <span>

namespace pagestack {

/// What the bytes mean that a JPEG decoder did not need before the end of a stream.
enum class JpegTail {
    Filler, ///< nothing but 0 or 0xFF
    Unknown, ///< the data may have been damaged
    LostRestarts, ///< restart markers are missing, and the pixels behind them with them
};

/// Judges the JPEG stream of a strip or tile, of which a decoder left `leftBytes` before the end
/// marker. ITU-T T.81, annex B, and section E.2 on restart markers.
JpegTail judgeJpegTail(std::span<const std::uint8_t> stream, std::uint64_t leftBytes);

/// Whether the scans of a progressive stream bring every coefficient of every component to its last
/// bit. A decoder is content with any number of them. ITU-T T.81, section G.1.
bool hasAllScans(std::span<const std::uint8_t> stream);

} // namespace pagestack
