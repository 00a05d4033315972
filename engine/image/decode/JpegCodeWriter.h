#pragma once

#include "engine/image/formats/JpegBlocks.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace pagestack {

/// Joins bits of JPEG data to coded data as they stand in a file (ITU-T T.81, section F.1.2.3):
/// each byte FF is followed by a 0, and ones fill the last byte up. One thread at a time.
class JpegCodeWriter
{
public:
    using Take = std::function<void(std::span<const std::uint8_t>)>;

    /// `take`, which is borrowed, gets the data.
    explicit JpegCodeWriter(const Take& take);

    /// Appends the last `count` of `bits`, which has no others set: 0 to 32.
    void put(std::uint64_t bits, int count);

    /// Appends the bits of `bytes` from `begin` on and up to `end`. 8 bytes behind them have to be
    /// readable.
    void copy(const std::uint8_t* bytes, std::uint64_t begin, std::uint64_t end);

    void finish();

    /// The last DC coefficients that were written, by component.
    std::array<int, mostJpegComponents>& corners() { return m_corners; }

private:
    void flush();

    const Take& m_take;
    std::array<int, mostJpegComponents> m_corners {};
    std::uint64_t m_bits = 0; ///< the last m_count, less than 32, are to be written
    int m_count = 0;
    std::vector<std::uint8_t> m_plain; ///< without the zeros
    std::size_t m_plainBytes = 0;
    std::vector<std::uint8_t> m_escaped;
};

} // namespace pagestack
