#include "engine/image/tiffwriter/LzwEncoder.h"

#include <QtEndian>

#include <algorithm>

namespace pagestack {

namespace {

    constexpr unsigned clearCode = 256;
    constexpr unsigned endCode = 257;
    constexpr unsigned firstString = 258;
    constexpr unsigned fullTable = 4094;
    constexpr int entryCodeBits = 12;
    constexpr int leastWidth = 9;
    constexpr std::uint32_t spread = 0x9E3779B1; ///< 2^32 by the golden ratio
    constexpr std::size_t spareBytes = 64; ///< more than clear code, end and what fills a word

    /// Packs codes from the highest bit of a byte on.
    class CodeBits
    {
    public:
        explicit CodeBits(std::uint8_t* to)
            : m_begin(to)
            , m_to(to)
        {
        }

        void put(unsigned code, int width)
        {
            constexpr int wordBits = 32;
            m_bits = m_bits << width | code;
            m_count += width;
            if (m_count < wordBits)
                return;
            m_count -= wordBits;
            qToBigEndian(static_cast<std::uint32_t>(m_bits >> m_count), m_to);
            m_to += sizeof(std::uint32_t);
        }

        /// Fills the last byte up with zeros. The number of bytes.
        std::size_t finish()
        {
            constexpr int byteBits = 8;
            if (const int missing = (byteBits - m_count % byteBits) % byteBits; missing > 0)
                put(0, missing);
            for (; m_count > 0; m_count -= byteBits)
                *m_to++ = static_cast<std::uint8_t>(m_bits >> (m_count - byteBits));
            return static_cast<std::size_t>(m_to - m_begin);
        }

    private:
        std::uint8_t* m_begin;
        std::uint8_t* m_to;
        std::uint64_t m_bits = 0; ///< the last m_count, less than 32, are to be written
        int m_count = 0;
    };

    /// Tells when to begin a table anew that is not full: when a look at the data, every 10,000
    /// bytes, finds them packed no tighter than the look before.
    class Tightness
    {
    public:
        void begin() { m_samples = m_bits = m_before = 0; }
        void addSample() { ++m_samples; }
        void addCode(int width) { m_bits += static_cast<unsigned>(width); }

        bool isLost()
        {
            constexpr std::uint64_t lookSamples = 10'000;
            if (m_samples < m_nextLook)
                return false;
            m_nextLook = m_samples + lookSamples;
            const std::uint64_t now = 256 * m_samples / m_bits;
            const bool isLost = now <= m_before;
            m_before = now;
            return isLost;
        }

    private:
        std::uint64_t m_samples = 0; ///< bytes since the table was begun
        std::uint64_t m_bits = 0; ///< that they have taken
        std::uint64_t m_before = 0; ///< samples a bit, in 256ths
        std::uint64_t m_nextLook = 10'000;
    };

} // namespace

std::span<const std::uint8_t> LzwEncoder::encode(std::span<const std::uint8_t> samples)
{
    // A code takes 12 bits at the most and stands for a byte at least, or for a full table.
    m_bytes.resize(samples.size() / 2 * 3 + samples.size() / 1024 + spareBytes);
    CodeBits bits(m_bytes.data());
    Tightness tightness;
    unsigned next = firstString;
    int width = leastWidth;
    const auto put = [&](unsigned code) {
        bits.put(code, width);
        tightness.addCode(width);
    };
    const auto beginTable = [&] {
        m_strings.fill(0);
        tightness.begin();
        put(clearCode);
        next = firstString;
        width = leastWidth;
    };
    m_strings.fill(0);
    put(clearCode);
    tightness.addSample();
    unsigned string = samples.front();
    for (const std::uint8_t sample : samples.subspan(1)) {
        tightness.addSample();
        const std::uint32_t key = string << 8 | sample;
        std::size_t place = (sample * spread >> (32 - placeBits)) ^ string * 2;
        while (m_strings[place] != 0 && m_strings[place] >> entryCodeBits != key)
            place = (place + 1) % places;
        if (m_strings[place] != 0) {
            string = m_strings[place] % (1U << entryCodeBits);
            continue;
        }
        put(string);
        string = sample;
        m_strings[place] = key << entryCodeBits | next++;
        if (next == 1U << width)
            ++width;
        else if (next == fullTable || tightness.isLost())
            beginTable();
    }
    put(string);
    if (++next == fullTable) {
        put(clearCode);
        width = leastWidth;
    } else if (next == 1U << width) {
        ++width;
    }
    put(endCode);
    return { m_bytes.data(), bits.finish() };
}

} // namespace pagestack
