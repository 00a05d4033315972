#pragma once

#include "engine/image/decode/SampleUnpacker.h"

#include <QString>

#include <array>
#include <cstdint>

namespace pagestack {

/// Notices pages of whose samples hardly anything is left in the range that is shown: floating
/// point of 0 to 255 where 0 to 1 is shown, numbers below 4096 in 32 bits. One page, one thread.
class SampleRange
{
public:
    /// The first two as of the tags; `shownBits` (8 or 16) is the depth of samples in the end.
    SampleRange(int bitsPerSample, int sampleFormat, int shownBits);

    /// Costs nothing once there are levels enough, but for floating point.
    void look(const SampleUnpacker& unpacker, const SampleRun& samples);

    /// Of the page, once all samples were looked at; null if there is none.
    QString warning() const;

private:
    static constexpr std::size_t enoughLevels = 16;
    struct Level
    {
        std::uint16_t shown;
        std::uint64_t raw; ///< the sample that it was seen with first
    };

    void add(const SampleUnpacker& unpacker, std::uint64_t raw);
    bool isSmallPart() const;

    double m_lowest; ///< of the range that is shown
    double m_highest;
    bool m_isFloat;
    bool m_isSigned;
    bool m_isDeep; ///< more bits than are ever shown: a page that is blank has no different samples
    bool m_isShownIn8Bits;
    bool m_isFine; ///< nothing more is looked at
    std::uint64_t m_seen = 0; ///< floating-point samples
    std::uint64_t m_outside = 0; ///< of these, of the range
    double m_least = 0; ///< sample that was found
    double m_most = 0;
    std::uint64_t m_last = 0;
    std::array<Level, enoughLevels> m_levels {};
    std::size_t m_count = 0; ///< of levels
    bool m_isMerged = false; ///< different samples came to one level
};

} // namespace pagestack
