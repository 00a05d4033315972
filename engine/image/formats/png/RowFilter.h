#pragma once

#include <cstdint>
#include <vector>

namespace pagestack {

/// The filters of PNG rows (ISO/IEC 15948, clause 9). One thread at a time.
class RowFilter
{
public:
    enum class Kind : std::uint8_t {
        None,
        Sub,
        Up,
        Average,
        Paeth,
        Best, ///< the one whose differences, as signed numbers, have the least absolute sum
    };

    /// `pixelBytes` is the distance of a byte to that of the pixel on its left: 1 below 8 bits.
    RowFilter(std::size_t rowBytes, int pixelBytes);

    /// Stores at `out` the kind of filter, one byte, and `row` filtered by it. `above` is the row
    /// before, zeros for the first one.
    void apply(Kind kind, const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* out);

private:
    void applyBest(const std::uint8_t* row, const std::uint8_t* above, std::uint8_t* out);
    std::uint64_t filter(Kind kind, const std::uint8_t* row, const std::uint8_t* above,
                         std::uint8_t* out) const;

    std::size_t m_rowBytes;
    std::size_t m_pixelBytes;
    std::vector<std::uint8_t> m_best;
    std::vector<std::uint8_t> m_tried;
};

} // namespace pagestack
