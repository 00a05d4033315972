#pragma once

#include "engine/image/pixels/RowSource.h"

#include <QByteArray>
#include <QString>

#include <memory>

namespace pagestack {

enum class ResolutionUnit {
    None, ///< only the ratio of x and y means something
    Inch,
    Centimeter,
};

struct Resolution
{
    double x = 0; ///< pixels a unit; 0: not known
    double y = 0;
    ResolutionUnit unit = ResolutionUnit::Inch;
};

/// What a page is, apart from its pixels.
struct PageProperties
{
    int widthPx = 0; ///< as stored
    int heightPx = 0;
    Resolution resolution; ///< of the stored rows and columns
    QByteArray iccProfile; ///< of the pixels as `PageSource::rows` gives them; empty: none
    bool isSrgb = false; ///< the pixels were brought to sRGB
    int orientation = 1; ///< TIFF 6.0, tag Orientation: 1..8
};

class JpegBlocks;
class SharedWork;
class TiffPage;
struct PageMetadata;

/// Where the pixels of a page come from: a page of a TIFF file or a bitmap in memory.
class PageSource
{
public:
    virtual ~PageSource() = default;

    /// Throws std::runtime_error when the page's description cannot be read.
    virtual const PageProperties& properties() const = 0;

    /// Starts a pass over the pixels in stored order. The source must outlive it, and passes over
    /// pages of the same file cannot overlap. Throws std::runtime_error with the reason.
    std::unique_ptr<RowSource> rows() const { return rowsShownIn(16, nullptr); }

    /// The same for samples that are brought to `bits` bits (8 or 16) in the end: the page gets a
    /// warning if next to nothing is left of them. Threads that wait for the rows can take part in
    /// `work`, which outlives them; it may be null.
    virtual std::unique_ptr<RowSource> rowsShownIn(int bits, SharedWork* work) const = 0;

    /// Of the pixels as stored. Throws as `properties`.
    virtual std::uint64_t decodedBytes() const
    {
        const PageProperties& page = properties();
        return static_cast<std::uint64_t>(rows()->layout().rowBytes(page.widthPx))
            * static_cast<unsigned>(page.heightPx);
    }

    /// What the page says of itself besides, as it is to be passed on; null: nothing.
    virtual std::shared_ptr<const PageMetadata> metadata() const { return nullptr; }

    /// The coefficients of the pixels in stored order, where a JPEG image of them that can be
    /// turned upright shows what `rows` do; null where there are none. Ends a pass over the pixels.
    /// Throws std::runtime_error.
    virtual std::shared_ptr<JpegBlocks> jpegBlocks() const { return nullptr; }

    /// This source as a page of a TIFF file, whose strips and tags can be copied; null if it is
    /// not.
    virtual const TiffPage* tiffPage() const { return nullptr; }
};

} // namespace pagestack
