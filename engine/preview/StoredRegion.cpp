#include "engine/preview/StoredRegion.h"

namespace pagestack {

QRect storedRegion(const QRect& region, const QSize& upright, int orientation)
{
    const int right = upright.width() - region.x() - region.width();
    const int bottom = upright.height() - region.y() - region.height();
    const int w = region.width();
    const int h = region.height();
    switch (orientation) { // TIFF 6.0: which sides the first row and the first column are
    case 2:
        return { right, region.y(), w, h };
    case 3:
        return { right, bottom, w, h };
    case 4:
        return { region.x(), bottom, w, h };
    case 5:
        return { region.y(), region.x(), h, w };
    case 6:
        return { region.y(), right, h, w };
    case 7:
        return { bottom, right, h, w };
    case 8:
        return { bottom, region.x(), h, w };
    default:
        return region;
    }
}

QRect uprightRegion(const QRect& region, const QSize& upright, int orientation)
{
    // To turn left is the way back from turning right; all else is its own.
    constexpr int turnedRight = 6;
    constexpr int turnedLeft = 8;
    const int back = orientation == turnedRight ? turnedLeft
        : orientation == turnedLeft             ? turnedRight
                                                : orientation;
    return storedRegion(region, isTurned(orientation) ? upright.transposed() : upright, back);
}

} // namespace pagestack
