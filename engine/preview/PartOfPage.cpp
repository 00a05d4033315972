#include "engine/preview/PartOfPage.h"

#include "engine/image/formats/JpegBlocks.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace pagestack {

namespace {

    /// The rows and columns of `region`.
    class PartRows : public RowSource
    {
    public:
        PartRows(std::unique_ptr<RowSource> rows, const QRect& region, IsStopped isStopped)
            : RowSource(region.width(), region.height(), rows->layout())
            , m_rows(std::move(rows))
            , m_region(region)
            , m_isStopped(std::move(isStopped))
        {
        }

        Band nextBand() override
        {
            const int end = m_region.y() + m_region.height();
            while (m_row < end) {
                if (m_isStopped())
                    throw std::runtime_error("stopped");
                const Band band = m_rows->nextBand();
                if (band.rows == 0)
                    break;
                const int from = std::max(m_region.y() - m_row, 0);
                const int to = std::min(end - m_row, band.rows);
                m_row += band.rows;
                if (from >= to)
                    continue;
                const qsizetype left = layout().rowBytes(m_region.x());
                return { band.row(from) + left, to - from, band.strideBytes };
            }
            return {};
        }

    private:
        std::unique_ptr<RowSource> m_rows;
        QRect m_region;
        IsStopped m_isStopped;
        int m_row = 0; ///< the first of the next band
    };

    JpegFrame partFrame(JpegFrame frame, const QRect& region)
    {
        frame.widthPx = region.width();
        frame.heightPx = region.height();
        return frame;
    }

    /// The same of coefficients, of a region that begins with an MCU.
    class PartBlocks : public JpegBlocks
    {
    public:
        PartBlocks(std::shared_ptr<JpegBlocks> blocks, const QRect& region)
            : JpegBlocks(partFrame(blocks->frame(), region))
            , m_blocks(std::move(blocks))
            , m_firstUnit(region.x() / m_frame.unitWidthPx())
            , m_rowsAbove(region.y() / m_frame.unitHeightPx())
            , m_row(m_frame, m_frame.unitsAcross())
        {
        }

        void restart() override
        {
            m_blocks->restart();
            for (int i = 0; i < m_rowsAbove; ++i)
                m_blocks->next();
        }

        const JpegUnitRow& next() override
        {
            const JpegUnitRow& whole = m_blocks->next();
            for (std::size_t c = 0; c < m_frame.components.size(); ++c) {
                const int across = m_frame.components[c].horizontal;
                for (int i = 0; i < m_frame.components[c].vertical; ++i)
                    std::copy_n(whole.row(c, i) + std::ptrdiff_t { m_firstUnit } * across,
                                m_frame.blocksAcross(m_frame.components[c]), m_row.row(c, i));
            }
            return m_row;
        }

        void finish() override { } // the data go on

    private:
        std::shared_ptr<JpegBlocks> m_blocks;
        int m_firstUnit;
        int m_rowsAbove; ///< of MCUs
        JpegUnitRow m_row;
    };

} // namespace

PartOfPage::PartOfPage(std::shared_ptr<const PageSource> page, IsStopped isStopped)
    : m_page(std::move(page))
    , m_properties(m_page->properties())
    , m_isStopped(std::move(isStopped))
{
}

PartOfPage::PartOfPage(std::shared_ptr<const PageSource> page, const QRect& region,
                       IsStopped isStopped)
    : PartOfPage(std::move(page), std::move(isStopped))
{
    m_region = region;
    m_properties.widthPx = region.width();
    m_properties.heightPx = region.height();
}

std::unique_ptr<RowSource> PartOfPage::rowsShownIn(int bits, SharedWork* work) const
{
    auto rows = m_page->rowsShownIn(bits, work);
    const QRect region
        = m_region.isNull() ? QRect(0, 0, rows->widthPx(), rows->heightPx()) : m_region;
    return std::make_unique<PartRows>(std::move(rows), region, m_isStopped);
}

std::shared_ptr<const PageMetadata> PartOfPage::metadata() const
{
    return m_region.isNull() ? m_page->metadata() : nullptr;
}

std::shared_ptr<JpegBlocks> PartOfPage::jpegBlocks() const
{
    std::shared_ptr<JpegBlocks> blocks = m_page->jpegBlocks();
    if (m_region.isNull() || blocks == nullptr)
        return blocks;
    const JpegFrame& frame = blocks->frame();
    const auto isCut = [](int begin, int length, int all, int unit) {
        return begin % unit == 0 && (length % unit == 0 || begin + length == all);
    };
    if (!isCut(m_region.x(), m_region.width(), frame.widthPx, frame.unitWidthPx())
        || !isCut(m_region.y(), m_region.height(), frame.heightPx, frame.unitHeightPx()))
        return nullptr;
    return std::make_shared<PartBlocks>(std::move(blocks), m_region);
}

const TiffPage* PartOfPage::tiffPage() const
{
    return m_region.isNull() ? m_page->tiffPage() : nullptr;
}

} // namespace pagestack
