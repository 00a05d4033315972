#include "engine/image/decode/LzwDecoder.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <memory>

namespace pagestack {

namespace {

    constexpr unsigned clearCode = 256;
    constexpr unsigned endCode = 257;
    constexpr unsigned firstEntry = 258;
    constexpr unsigned entries = 4096;
    constexpr int firstWidth = 9;
    constexpr int lastWidth = 12;

    /// A string of the table. It stands in the decoded bytes already: where the string that it
    /// extends was written, with the byte that came next. Short ones are written in one step.
    struct Entry
    {
        std::uint64_t start; ///< the first eight bytes, the first one lowest
        std::uint32_t offset; ///< in the decoded bytes
        std::uint32_t length;
    };

    struct Table
    {
        Table()
        {
            for (unsigned byte = 0; byte < clearCode; ++byte)
                strings[byte] = { byte, 0, 1 };
        }

        std::array<Entry, entries> strings {};
    };

    /// Codes of 9 to 12 bits, the highest bit first.
    class CodeReader
    {
    public:
        explicit CodeReader(std::span<const std::uint8_t> bytes)
            : m_bytes(bytes)
        {
        }

        /// Returns false at the end of the bytes.
        bool next(int width, unsigned& code)
        {
            if (m_count < width)
                refill();
            code = static_cast<unsigned>(m_bits >> static_cast<unsigned>(64 - width));
            m_bits <<= static_cast<unsigned>(width);
            m_count -= width;
            return m_count >= 0;
        }

    private:
        void refill()
        {
            if (m_bytes.size() >= sizeof(std::uint64_t)) {
                m_bits |= qFromBigEndian<std::uint64_t>(m_bytes.data())
                    >> static_cast<unsigned>(m_count);
                const int taken = (63 - m_count) / 8;
                m_bytes = m_bytes.subspan(static_cast<std::size_t>(taken));
                m_count += taken * 8;
                return;
            }
            for (; m_count <= 56 && !m_bytes.empty(); m_count += 8) {
                m_bits |= std::uint64_t { m_bytes.front() } << static_cast<unsigned>(56 - m_count);
                m_bytes = m_bytes.subspan(1);
            }
        }

        std::span<const std::uint8_t> m_bytes;
        std::uint64_t m_bits = 0; ///< from the highest on
        int m_count = 0; ///< of them that are counted; below there may be more of the same
    };

    /// Writes the string at `at`, or as much of it as `to` takes; returns where the next one goes.
    std::size_t put(const Entry& string, std::span<std::uint8_t> to, std::size_t at)
    {
        constexpr std::size_t word = sizeof(std::uint64_t);
        const std::size_t end = at + string.length;
        if (string.length <= word && to.size() - at >= word) {
            const std::uint64_t start = qToLittleEndian(string.start);
            std::memcpy(to.data() + at, &start, word);
            return end;
        }
        if (string.length <= word) {
            for (std::size_t i = 0; i < string.length && at + i < to.size(); ++i)
                to[at + i] = static_cast<std::uint8_t>(string.start >> (8 * i));
            return std::min(end, to.size());
        }
        // It may reach into itself by a byte, but its length is more than a word.
        std::size_t from = string.offset;
        const std::size_t last = std::min(end, to.size());
        for (; at + word <= last; at += word, from += word)
            std::memcpy(to.data() + at, to.data() + from, word);
        for (; at < last; ++at, ++from)
            to[at] = to[from];
        return last;
    }

} // namespace

bool decodeLzw(std::span<const std::uint8_t> encoded, std::span<std::uint8_t> to)
{
    thread_local const auto table = std::make_unique<Table>();
    auto& strings = table->strings;
    if (to.size() > std::numeric_limits<std::uint32_t>::max())
        return false;
    if (encoded.size() >= 2 && encoded[0] == 0 && (encoded[1] & 1U) != 0)
        return false; // the other bit order
    CodeReader codes(encoded);
    unsigned code = 0;
    if (!codes.next(firstWidth, code) || code != clearCode)
        return false;
    std::size_t at = 0;
    int width = firstWidth;
    Entry before {};
    while (at < to.size()) {
        // The table is empty: the next code is a byte, or another one that empties it.
        if (!codes.next(firstWidth, code))
            return false;
        if (code == clearCode)
            continue;
        if (code > clearCode)
            return false;
        before = { code, static_cast<std::uint32_t>(at), 1 };
        to[at++] = static_cast<std::uint8_t>(code);
        width = firstWidth;
        unsigned next = firstEntry;
        while (at < to.size()) {
            if (!codes.next(width, code) || code == endCode)
                return false;
            if (code == clearCode)
                break;
            if (code > next || next == entries)
                return false;
            // The first byte of a string that is just made is that of the one which it extends.
            const std::uint64_t first = (code == next ? before.start : strings[code].start) & 0xFFU;
            Entry& made = strings[next];
            made.start = before.start;
            if (before.length < sizeof(std::uint64_t))
                made.start |= first << (8 * before.length);
            made.offset = before.offset;
            made.length = before.length + 1;
            const std::size_t here = at;
            at = put(strings[code], to, at);
            before
                = { strings[code].start, static_cast<std::uint32_t>(here), strings[code].length };
            ++next;
            if (next == (1U << static_cast<unsigned>(width)) - 1 && width < lastWidth)
                ++width;
        }
    }
    return before.length <= to.size() - before.offset
        && (!codes.next(width, code) || code == endCode);
}

std::uint64_t decodedLzwBytes(std::span<const std::uint8_t> encoded)
{
    if (encoded.size() >= 2 && encoded[0] == 0 && (encoded[1] & 1U) != 0)
        return 0;
    std::array<std::uint32_t, entries> lengths {};
    lengths.fill(1);
    CodeReader codes(encoded);
    std::uint64_t sum = 0;
    unsigned code = 0;
    unsigned next = firstEntry;
    int width = firstWidth;
    for (std::uint32_t before = 0; codes.next(width, code) && code != endCode;) {
        if (code == clearCode) {
            before = 0;
            next = firstEntry;
            width = firstWidth;
            continue;
        }
        if (before > 0) {
            if (code > next || next == entries)
                break;
            lengths[next++] = before + 1;
        } else if (code > clearCode) {
            break;
        }
        before = lengths[code];
        sum += before;
        if (next == (1U << static_cast<unsigned>(width)) - 1 && width < lastWidth)
            ++width;
    }
    return sum;
}

} // namespace pagestack
