#include "engine/image/formats/JpegBlocks.h"

#include <algorithm>

namespace pagestack {

namespace {

    int mostFactor(const JpegFrame& frame, int JpegComponent::*factor)
    {
        int most = 1;
        for (const JpegComponent& component : frame.components)
            most = std::max(most, component.*factor);
        return most;
    }

} // namespace

int JpegFrame::unitWidthPx() const
{
    return mostFactor(*this, &JpegComponent::horizontal) * jpegBlockSidePx;
}

int JpegFrame::unitHeightPx() const
{
    return mostFactor(*this, &JpegComponent::vertical) * jpegBlockSidePx;
}

int JpegFrame::blocksAcross(const JpegComponent& component) const
{
    return (widthPx * component.horizontal - 1) / unitWidthPx() + 1;
}

int JpegFrame::blocksDown(const JpegComponent& component) const
{
    return (heightPx * component.vertical - 1) / unitHeightPx() + 1;
}

JpegUnitRow::JpegUnitRow(const JpegFrame& frame, int units)
{
    for (const JpegComponent& component : frame.components) {
        const auto across
            = static_cast<std::size_t>(units) * static_cast<unsigned>(component.horizontal);
        m_planes.push_back(
            { across, std::vector<JpegBlock>(across * static_cast<unsigned>(component.vertical)) });
    }
}

void JpegUnitRow::clear()
{
    for (Plane& plane : m_planes)
        std::ranges::fill(plane.blocks, JpegBlock {});
}

} // namespace pagestack
