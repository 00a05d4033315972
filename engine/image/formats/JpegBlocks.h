#pragma once

#include "engine/image/pixels/PixelLayout.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace pagestack {

constexpr int jpegBlockSidePx = 8;
constexpr std::size_t jpegBlockSamples = 64;
constexpr std::size_t mostJpegComponents = 3;

/// The quantized coefficients of a block (ITU-T T.81, section A.3), row by row: across from left to
/// right, down from top to bottom.
using JpegBlock = std::array<std::int16_t, jpegBlockSamples>;

enum class JpegColors { Gray, YCbCr, Rgb };

struct JpegComponent
{
    int horizontal = 1; ///< sampling factors
    int vertical = 1;
    std::array<std::uint16_t, jpegBlockSamples> quantization = {}; ///< as a block
    int standardCodes = -1; ///< coded by the standard tables for luminance (0) or colour (1)

    friend bool operator==(const JpegComponent&, const JpegComponent&) = default;
};

/// What a JPEG image is apart from its coefficients. Its minimum coded units, MCU, have blocks of
/// all components; those at the right and at the bottom may have some that lie outside.
struct JpegFrame
{
    int widthPx = 0;
    int heightPx = 0;
    JpegColors colors = JpegColors::Gray;
    std::vector<JpegComponent> components;

    int unitWidthPx() const; ///< of an MCU
    int unitHeightPx() const;
    int unitsAcross() const { return (widthPx - 1) / unitWidthPx() + 1; }
    int unitsDown() const { return (heightPx - 1) / unitHeightPx() + 1; }
    /// Blocks of a component that show something of the image.
    int blocksAcross(const JpegComponent& component) const;
    int blocksDown(const JpegComponent& component) const;
    ColorModel model() const
    {
        return colors == JpegColors::Gray ? ColorModel::Gray : ColorModel::Rgb;
    }
};

/// A row of MCUs: of each component as many rows of blocks as it has in one.
class JpegUnitRow
{
public:
    JpegUnitRow() = default;
    JpegUnitRow(const JpegFrame& frame, int units);

    JpegBlock* row(std::size_t component, int index)
    {
        Plane& plane = m_planes[component];
        return plane.blocks.data() + plane.across * static_cast<std::size_t>(index);
    }
    const JpegBlock* row(std::size_t component, int index) const
    {
        return const_cast<JpegUnitRow*>(this)->row(component, index);
    }
    void clear(); ///< all coefficients are 0

private:
    struct Plane
    {
        std::size_t across = 0;
        std::vector<JpegBlock> blocks;
    };
    std::vector<Plane> m_planes;
};

/// The coefficients cannot be taken over: the data are damaged or of an unusual kind. Who decodes
/// the page finds out what there is to say of it.
class UnfitBlocks : public std::runtime_error
{
public:
    explicit UnfitBlocks(const std::string& reason)
        : std::runtime_error(reason)
    {
    }
};

/// The codes cannot be taken over; the coefficients may.
class UnfitCodes : public UnfitBlocks
{
public:
    using UnfitBlocks::UnfitBlocks;
};

/// The coefficients of an image, a row of MCUs after the other, as often as they are wanted. One
/// thread at a time.
class JpegBlocks
{
public:
    virtual ~JpegBlocks() = default;

    const JpegFrame& frame() const { return m_frame; }

    /// Begins at the top, which is to be done first. Throws as `next`.
    virtual void restart() = 0;

    /// The next of the frame's unitsDown() rows, valid until the next call. Throws UnfitBlocks.
    virtual const JpegUnitRow& next() = 0;

    /// After the last row: throws UnfitBlocks unless the data end as they should.
    virtual void finish() = 0;

    /// Whether their codes may serve as they are: those of the standard, by the components' tables.
    virtual bool hasCodes() const { return false; }

    /// Hands out the codes of all rows, as they stand in a file without restart markers, instead of
    /// the coefficients; to be called at any time. Throws UnfitCodes and, where reading fails,
    /// std::runtime_error, after some may have been handed out.
    virtual void readCodes(const std::function<void(std::span<const std::uint8_t>)>& take)
    {
        take({});
    }

protected:
    explicit JpegBlocks(JpegFrame frame)
        : m_frame(std::move(frame))
    {
    }
    JpegFrame m_frame;
};

} // namespace pagestack
