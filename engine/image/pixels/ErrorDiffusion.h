#pragma once

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace pagestack {

/// Finds colours out of a few for the pixels of one row after the other and spreads the error of
/// each pixel over its neighbours (Floyd and Steinberg, 1976), every other row from right to left.
template <std::size_t channels>
class ErrorDiffusion
{
public:
    using Color = std::array<int, channels>;

    explicit ErrorDiffusion(int widthPx)
        : m_widthPx(widthPx)
        , m_errors((static_cast<std::size_t>(widthPx) + 2) * channels)
        , m_nextErrors(m_errors.size())
    {
    }

    /// Puts at `to`, a byte a pixel of `row`, the index that `choose(wanted, chosen)` returns; it
    /// sets `chosen` to the colour of the index.
    template <typename Choose>
    void mapRow(const std::uint8_t* row, std::uint8_t* to, Choose choose)
    {
        if (m_fromRight)
            mapInDirection<-1>(row, to, choose);
        else
            mapInDirection<1>(row, to, choose);
        m_errors.swap(m_nextErrors);
        m_fromRight = !m_fromRight;
    }

private:
    static constexpr qsizetype step = channels;

    template <int direction, typename Choose>
    void mapInDirection(const std::uint8_t* row, std::uint8_t* to, Choose& choose)
    {
        // What is spread goes from pixel to pixel in variables; the next row gets each sum once.
        Color ahead {}; // for the next pixel
        Color behind {}; // for the pixel behind, in the next row
        Color below {};
        for (int i = 0, x = direction > 0 ? 0 : m_widthPx - 1; i < m_widthPx; ++i, x += direction) {
            const std::uint8_t* const pixel = row + step * x;
            const int* const errors = m_errors.data() + step * (x + 1);
            int* const nextBehind = m_nextErrors.data() + step * (x + 1 - direction);
            Color wanted {};
            for (std::size_t c = 0; c < channels; ++c)
                wanted[c] = std::clamp(pixel[c] + (errors[c] + ahead[c] + 8) / 16, 0, 255);
            Color chosen {};
            to[x] = static_cast<std::uint8_t>(choose(wanted, chosen));
            for (std::size_t c = 0; c < channels; ++c) {
                const int error = wanted[c] - chosen[c];
                ahead[c] = error * 7;
                nextBehind[c] = behind[c] + error * 3;
                behind[c] = below[c] + error * 5;
                below[c] = error;
            }
        }
        const qsizetype last = direction > 0 ? m_widthPx - 1 : 0;
        std::copy(behind.begin(), behind.end(), m_nextErrors.begin() + step * (last + 1));
    }

    int m_widthPx;
    bool m_fromRight = false;
    /// Of this row, in sixteenths, with a pixel's margin on each side.
    std::vector<int> m_errors;
    std::vector<int> m_nextErrors;
};

} // namespace pagestack
