#include "filelist/PlaceRanges.h"

#include <algorithm>

namespace pagestack {

PlaceRanges::PlaceRanges(const QItemSelection& selection)
{
    std::vector<Range> unordered;
    unordered.reserve(static_cast<std::size_t>(selection.size()));
    for (const QItemSelectionRange& range : selection)
        unordered.push_back({ range.top(), range.bottom() });
    if (!std::ranges::is_sorted(unordered, {}, &Range::first))
        std::ranges::sort(unordered, {}, &Range::first);
    for (const Range& range : unordered) {
        if (!m_ranges.empty() && range.first <= m_ranges.back().last + 1)
            m_ranges.back().last = std::max(m_ranges.back().last, range.last);
        else
            m_ranges.push_back(range);
    }
}

bool PlaceRanges::contains(int place) const
{
    const auto behind = std::ranges::upper_bound(m_ranges, place, {}, &Range::first);
    return behind != m_ranges.begin() && std::prev(behind)->last >= place;
}

} // namespace pagestack
