#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace pagestack {

/// A little-endian directory of a classic TIFF file with its values behind it, as libtiff lays it
/// out.
class ClassicDirectory
{
public:
    void addShort(unsigned tag, int value);
    void addShorts(unsigned tag, std::span<const int> values);
    void addLong(unsigned tag, std::uint32_t value);
    /// SHORT where that holds it, else LONG.
    void addNumber(unsigned tag, std::uint32_t value);
    void addLongs(unsigned tag, std::span<const std::uint32_t> values);
    void addWholeFractions(unsigned tag, std::span<const std::uint32_t> values);
    void addBytes(unsigned tag, std::span<const std::uint8_t> bytes); ///< UNDEFINED
    void addText(unsigned tag, std::span<const std::uint8_t> bytesWithEndMark);

    /// The bytes for `offset` of the file, an even one. Long values lie in the order in which they
    /// were added.
    std::vector<std::uint8_t> bytesAt(std::uint32_t offset);

    // Counted from the begin of those bytes.
    std::size_t linkAt() const { return 2 + m_entries.size() * 12; }
    /// Where the value of a tag lies that has up to four bytes of them; none without the tag.
    std::optional<std::size_t> valueAt(unsigned tag) const;

private:
    struct Entry
    {
        unsigned tag;
        unsigned type;
        std::uint32_t count;
        std::uint32_t value; ///< the little-endian number in its place, or an offset in `m_values`
        bool isBehind; ///< it is an offset
    };
    void add(unsigned tag, unsigned type, std::size_t count, std::span<const std::uint8_t> value);

    std::vector<Entry> m_entries;
    std::vector<std::uint8_t> m_values;
};

} // namespace pagestack
