#include "engine/image/formats/gif/LzwCoder.h"

#include <QtEndian>

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

namespace pagestack {

namespace {

    constexpr int windowPx = 57; ///< pixels of 8 bytes that are there at any offset in the first
    constexpr int shortestStride = 16;

    std::size_t rowBytes(int widthPx) { return (static_cast<std::size_t>(widthPx) + 7) / 8; }

    /// Rows of one bit a pixel, packed from the most significant bit on. Strings are not looked up
    /// pixel by pixel but four pixels at once, and whole runs of one colour in strides of up to
    /// 1024.
    class BilevelLzw : public LzwCoder
    {
    public:
        BilevelLzw(StagedFile& file, int widthPx)
            : LzwCoder(file, widthPx, 1)
            , m_row(rowBytes(widthPx) + sizeof(std::uint64_t))
            , m_steps(codeLimit)
            , m_strings(codeLimit)
        {
            startStrings();
        }

        void putRow(const std::uint8_t* row) override
        {
            std::memcpy(m_row.data(), row, rowBytes(m_widthPx));
            int x = 0;
            if (m_current < 0)
                m_current = *row >> 7U, ++x;
            int runEnd = 0; // of the run that was measured last
            while (x < m_widthPx) {
                const std::uint64_t pixels = pixelsFrom(x);
                constexpr std::uint64_t start = ~(~std::uint64_t { 0 } >> shortestStride);
                if ((pixels & start) == 0 || (pixels & start) == start) {
                    if (x >= runEnd)
                        runEnd = runEndFrom(x);
                    if (const int taken = takeStrides(runEnd - x, pixels >> 63U != 0 ? 1 : 0);
                        taken > 0) {
                        x += taken;
                        continue;
                    }
                }
                const int most = std::min(mostStep, m_widthPx - x);
                const int taken = takeStep(pixels, most);
                x += taken;
                if (taken < most) {
                    endString(static_cast<unsigned>(pixels << static_cast<unsigned>(taken) >> 63U));
                    ++x;
                }
            }
        }

    private:
        static constexpr int mostStep = 4; ///< pixels of the longest step
        static constexpr int strides = 4; ///< of 16, 64, 256 and 1024 pixels
        static constexpr std::uint16_t noString = 0xFFFF;

        /// The strings that are longer by 1 to 4 pixels: the one that is longer by the n pixels p
        /// is number 2^n + p; 0: it is not in the table.
        using Steps = std::array<std::uint16_t, 2 << mostStep>;

        struct String
        {
            /// By stride and colour: the string that is longer by so many pixels of this colour; 0:
            /// it is not in the table.
            std::array<std::array<std::uint16_t, 2>, strides> further;
            /// The string without its last 4, 16, ... pixels, or `noString`. Beyond the first it is
            /// known only when these are of one colour.
            std::array<std::uint16_t, strides + 1> shortened;
            std::uint16_t parent; ///< without its last pixel
            std::uint16_t runLength; ///< pixels at its end that are of one colour
            std::uint8_t lastPixel;
        };

        /// The table with nothing but the strings of one pixel.
        void startStrings()
        {
            for (std::uint8_t pixel = 0; pixel < 2; ++pixel) {
                m_steps[pixel] = {};
                m_strings[pixel] = { {}, {}, noString, 1, pixel };
                m_strings[pixel].shortened.fill(noString);
            }
        }

        /// The pixels from `x` on, the first one in the most significant bit; `windowPx` of them
        /// count.
        std::uint64_t pixelsFrom(int x) const
        {
            return qFromBigEndian<quint64>(m_row.data() + x / 8) << static_cast<unsigned>(x % 8);
        }

        /// Where the run of one colour ends that starts at `x`.
        int runEndFrom(int x) const
        {
            const std::uint64_t first = pixelsFrom(x);
            const std::uint64_t flip = first >> 63U != 0 ? ~std::uint64_t { 0 } : 0;
            int length = std::countl_zero(first ^ flip);
            while (length >= windowPx && x + windowPx < m_widthPx) {
                x += windowPx;
                length = std::countl_zero(pixelsFrom(x) ^ flip);
            }
            return std::min(x + std::min(length, windowPx), m_widthPx);
        }

        /// Makes the string longer by as many of `runPx` pixels as strides lead to. Returns how
        /// many.
        int takeStrides(int runPx, unsigned color)
        {
            int taken = 0;
            for (int i = strides - 1; i >= 0; --i) {
                const int length = shortestStride << (2 * i);
                while (runPx - taken >= length) {
                    const std::uint16_t longer = m_strings[static_cast<std::size_t>(m_current)]
                                                     .further[static_cast<std::size_t>(i)][color];
                    if (longer == 0)
                        break;
                    m_current = longer;
                    taken += length;
                }
            }
            return taken;
        }

        /// Makes the string longer by up to `mostPx` of the pixels. Returns by how many; when there
        /// are fewer, no string goes on with the pixel behind them.
        int takeStep(std::uint64_t pixels, int mostPx)
        {
            const Steps& steps = m_steps[static_cast<std::size_t>(m_current)];
            for (int count = mostPx; count > 0; --count) {
                const auto following = static_cast<std::size_t>(pixels >> (64 - count));
                if (const std::uint16_t longer = steps[std::size_t { 1 } << count | following]) {
                    m_current = longer;
                    return count;
                }
            }
            return 0;
        }

        /// Puts out the string so far; the next one starts with `pixel`.
        void endString(unsigned pixel)
        {
            m_codes[static_cast<std::size_t>(m_nextCode)] = static_cast<std::uint16_t>(m_current);
            addString(pixel);
            m_current = static_cast<int>(pixel);
            if (++m_nextCode == codeLimit) {
                startTable();
                startStrings();
            }
        }

        /// Enters the string so far and `pixel` as the next code.
        void addString(unsigned pixel)
        {
            const String& before = m_strings[static_cast<std::size_t>(m_current)];
            const auto code = static_cast<std::uint16_t>(m_nextCode);
            m_steps[code] = {};
            String& string = m_strings[code];
            string.further = {};
            string.parent = static_cast<std::uint16_t>(m_current);
            string.runLength
                = before.lastPixel == pixel ? static_cast<std::uint16_t>(before.runLength + 1) : 1;
            string.lastPixel = static_cast<std::uint8_t>(pixel);
            linkSteps(code);
            linkStrides(code);
        }

        /// Makes the string known to those that are shorter by 1 to 4 pixels.
        void linkSteps(std::uint16_t code)
        {
            unsigned following = 0;
            std::uint16_t shorter = code;
            for (unsigned count = 0; count < mostStep; ++count) {
                following |= static_cast<unsigned>(m_strings[shorter].lastPixel) << count;
                shorter = m_strings[shorter].parent;
                if (shorter == noString)
                    break;
                m_steps[shorter][2U << count | following] = code;
            }
            m_strings[code].shortened[0] = shorter;
        }

        /// Makes the string known to those that are shorter by a stride of one colour.
        void linkStrides(std::uint16_t code)
        {
            String& string = m_strings[code];
            for (std::size_t i = 0; i < strides && string.runLength >= shortestStride << (2 * i);
                 ++i) {
                std::uint16_t shorter = code;
                for (int quarter = 0; quarter < 4 && shorter != noString; ++quarter)
                    shorter = m_strings[shorter].shortened[i];
                string.shortened[i + 1] = shorter;
                if (shorter == noString)
                    break;
                m_strings[shorter].further[i][string.lastPixel] = code;
            }
        }

        std::vector<std::uint8_t> m_row; ///< the row in hand and a margin, for reads of 8 bytes
        std::vector<Steps> m_steps; ///< by code, as are the strings
        std::vector<String> m_strings;
    };

} // namespace

std::unique_ptr<LzwCoder> bilevelLzw(StagedFile& file, int widthPx)
{
    return std::make_unique<BilevelLzw>(file, widthPx);
}

} // namespace pagestack
