#pragma once

#include <QItemSelection>

#include <vector>

namespace pagestack {

/// The rows of a selection in ascending order, so that one of very many ranges is searched in no
/// time. A snapshot: it does not follow what becomes of the rows.
class PlaceRanges
{
public:
    struct Range
    {
        int first;
        int last;
    };

    PlaceRanges() = default;
    explicit PlaceRanges(const QItemSelection& selection);

    const std::vector<Range>& ranges() const { return m_ranges; } ///< apart from each other
    int first() const { return m_ranges.empty() ? -1 : m_ranges.front().first; }
    int last() const { return m_ranges.empty() ? -1 : m_ranges.back().last; }
    bool contains(int place) const;

private:
    std::vector<Range> m_ranges;
};

} // namespace pagestack
