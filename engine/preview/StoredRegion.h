#pragma once

#include <QRect>

namespace pagestack {

/// Whether rows and columns change places when a page of `orientation` (tag Orientation, 1..8)
/// becomes upright.
constexpr bool isTurned(int orientation) { return orientation >= 5; }

/// Where `region` of the upright page, which has the size `upright`, lies among the stored rows and
/// columns.
QRect storedRegion(const QRect& region, const QSize& upright, int orientation);

/// The other way round.
QRect uprightRegion(const QRect& region, const QSize& upright, int orientation);

} // namespace pagestack
