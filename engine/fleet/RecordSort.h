#pragma once

#include "engine/files/ByteSpool.h"

#include <queue>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

namespace pagestack {

/// Sorts more records than memory is to hold: sorted parts go to a temporary file and are merged
/// when they are read. Records that are equal keep no order. One thread. Throws std::runtime_error
/// when the temporary file cannot be written or read.
template <typename Record>
class RecordSort
{
    static_assert(std::is_trivially_copyable_v<Record>);

public:
    /// Up to `mostInMemory` records are held, at least one.
    explicit RecordSort(std::size_t mostInMemory = (std::size_t { 32 } << 20) / sizeof(Record))
        : m_most(std::max<std::size_t>(mostInMemory, 1))
    {
    }

    void add(const Record& record)
    {
        if (m_held.size() == m_most)
            spill();
        m_held.push_back(record);
    }

    /// Calls `use` with each record, in order. Once, when all are added.
    template <typename Use>
    void forEach(Use use)
    {
        if (m_parts.empty()) {
            std::ranges::sort(m_held);
            for (const Record& record : m_held)
                use(record);
            return;
        }
        spill();
        const auto isLater = [](const Part* a, const Part* b) { return b->first() < a->first(); };
        std::priority_queue<Part*, std::vector<Part*>, decltype(isLater)> parts(isLater);
        for (Part& part : m_parts)
            if (part.load(m_spool))
                parts.push(&part);
        while (!parts.empty()) {
            Part* part = parts.top();
            parts.pop();
            use(part->first());
            if (part->next(m_spool))
                parts.push(part);
        }
    }

private:
    /// Sorted records in the temporary file, of which some are at hand.
    struct Part
    {
        std::uint64_t offset = 0; ///< of what is not loaded yet, in bytes
        std::uint64_t end = 0;
        std::vector<Record> loaded {};
        std::size_t place = 0;

        const Record& first() const { return loaded[place]; }
        bool next(ByteSpool& spool) { return ++place < loaded.size() || load(spool); }
        bool load(ByteSpool& spool)
        {
            constexpr std::uint64_t most = std::max<std::uint64_t>(65536 / sizeof(Record), 1);
            const std::uint64_t count = std::min(most, (end - offset) / sizeof(Record));
            loaded.resize(count);
            place = 0;
            spool.readAt(offset, bytesOf(loaded));
            offset += count * sizeof(Record);
            return count > 0;
        }
    };

    static std::span<std::uint8_t> bytesOf(std::vector<Record>& records)
    {
        return { reinterpret_cast<std::uint8_t*>(records.data()), records.size() * sizeof(Record) };
    }

    void spill()
    {
        std::ranges::sort(m_held);
        const std::uint64_t start = m_spool.size();
        m_spool.writeAt(start, bytesOf(m_held));
        m_parts.push_back({ .offset = start, .end = m_spool.size() });
        m_held.clear();
    }

    const std::size_t m_most;
    std::vector<Record> m_held;
    std::vector<Part> m_parts;
    ByteSpool m_spool { 0 };
};

} // namespace pagestack
