#pragma once

#include "engine/image/pixels/PageSource.h"
#include "engine/preview/PreviewFile.h"

#include <QRect>

namespace pagestack {

/// A page, or a part of it, that stops being read when that is not wanted any more. A part has its
/// pixels, profile and resolution, but nothing else of the page.
class PartOfPage : public PageSource
{
public:
    /// All of the page.
    PartOfPage(std::shared_ptr<const PageSource> page, IsStopped isStopped);
    /// `region` lies in the stored page; its left side at a multiple of 8, for packed samples.
    PartOfPage(std::shared_ptr<const PageSource> page, const QRect& region, IsStopped isStopped);

    const PageProperties& properties() const override { return m_properties; }
    /// Bands throw std::runtime_error when it is stopped.
    std::unique_ptr<RowSource> rowsShownIn(int bits, SharedWork* work) const override;
    std::shared_ptr<const PageMetadata> metadata() const override;
    /// Null also for a part that does not begin and end with whole MCUs.
    std::shared_ptr<JpegBlocks> jpegBlocks() const override;
    const TiffPage* tiffPage() const override;

private:
    std::shared_ptr<const PageSource> m_page;
    QRect m_region; ///< null: all
    PageProperties m_properties;
    IsStopped m_isStopped;
};

} // namespace pagestack
