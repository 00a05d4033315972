#include "engine/image/tiffwriter/ClassicDirectory.h"

#include "engine/image/pixels/ByteOrder.h"

#include <tiff.h>

#include <algorithm>
#include <limits>

namespace pagestack {

namespace {

    constexpr std::size_t inlineBytes = 4;

} // namespace

void ClassicDirectory::add(unsigned tag, unsigned type, std::size_t count,
                           std::span<const std::uint8_t> value)
{
    Entry entry { tag, type, static_cast<std::uint32_t>(count), 0, value.size() > inlineBytes };
    if (entry.isBehind) {
        m_values.resize((m_values.size() + 1) / 2 * 2); // at an even offset
        entry.value = static_cast<std::uint32_t>(m_values.size());
        m_values.insert(m_values.end(), value.begin(), value.end());
    } else {
        entry.value = static_cast<std::uint32_t>(numberIn(value, false));
    }
    m_entries.push_back(entry);
}

void ClassicDirectory::addShorts(unsigned tag, std::span<const int> values)
{
    std::vector<std::uint8_t> bytes(values.size() * 2);
    for (std::size_t i = 0; i < values.size(); ++i)
        putNumber(std::span(bytes).subspan(i * 2, 2), static_cast<std::uint16_t>(values[i]), false);
    add(tag, TIFF_SHORT, values.size(), bytes);
}

void ClassicDirectory::addLongs(unsigned tag, std::span<const std::uint32_t> values)
{
    std::vector<std::uint8_t> bytes(values.size() * 4);
    for (std::size_t i = 0; i < values.size(); ++i)
        putNumber(std::span(bytes).subspan(i * 4, 4), values[i], false);
    add(tag, TIFF_LONG, values.size(), bytes);
}

void ClassicDirectory::addShort(unsigned tag, int value)
{
    m_entries.push_back({ tag, TIFF_SHORT, 1, static_cast<std::uint16_t>(value), false });
}

void ClassicDirectory::addLong(unsigned tag, std::uint32_t value)
{
    m_entries.push_back({ tag, TIFF_LONG, 1, value, false });
}

void ClassicDirectory::addNumber(unsigned tag, std::uint32_t value)
{
    const bool isShort = value <= std::numeric_limits<std::uint16_t>::max();
    m_entries.push_back({ tag, isShort ? TIFF_SHORT : TIFF_LONG, 1, value, false });
}

void ClassicDirectory::addWholeFractions(unsigned tag, std::span<const std::uint32_t> values)
{
    std::vector<std::uint8_t> bytes(values.size() * 8);
    for (std::size_t i = 0; i < values.size(); ++i) {
        putNumber(std::span(bytes).subspan(i * 8, 4), values[i], false);
        bytes[i * 8 + 4] = 1;
    }
    add(tag, TIFF_RATIONAL, values.size(), bytes);
}

void ClassicDirectory::addBytes(unsigned tag, std::span<const std::uint8_t> bytes)
{
    add(tag, TIFF_UNDEFINED, bytes.size(), bytes);
}

void ClassicDirectory::addText(unsigned tag, std::span<const std::uint8_t> bytesWithEndMark)
{
    add(tag, TIFF_ASCII, bytesWithEndMark.size(), bytesWithEndMark);
}

std::vector<std::uint8_t> ClassicDirectory::bytesAt(std::uint32_t offset)
{
    std::ranges::sort(m_entries, {}, &Entry::tag);
    const std::size_t size = linkAt() + 4;
    std::vector<std::uint8_t> bytes;
    bytes.reserve(size + m_values.size());
    const auto append = [&bytes](std::uint32_t number, std::size_t count) {
        for (; count > 0; --count, number >>= 8U)
            bytes.push_back(static_cast<std::uint8_t>(number));
    };
    append(static_cast<std::uint32_t>(m_entries.size()), 2);
    for (const Entry& entry : m_entries) {
        append(entry.tag, 2);
        append(entry.type, 2);
        append(entry.count, 4);
        const auto valuesAt = static_cast<std::uint32_t>(offset + size);
        append(entry.isBehind ? valuesAt + entry.value : entry.value, 4);
    }
    append(0, 4); // the next directory
    bytes.insert(bytes.end(), m_values.begin(), m_values.end());
    return bytes;
}

std::optional<std::size_t> ClassicDirectory::valueAt(unsigned tag) const
{
    const auto entry = std::ranges::find(m_entries, tag, &Entry::tag);
    if (entry == m_entries.end())
        return std::nullopt;
    return 2 + static_cast<std::size_t>(entry - m_entries.begin()) * 12 + 8;
}

} // namespace pagestack
