#include "engine/preview/PartOfPage.h"

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

std::unique_ptr<RowSource> PartOfPage::rowsShownIn(int bits) const
{
    auto rows = m_page->rowsShownIn(bits);
    const QRect region
        = m_region.isNull() ? QRect(0, 0, rows->widthPx(), rows->heightPx()) : m_region;
    return std::make_unique<PartRows>(std::move(rows), region, m_isStopped);
}

std::shared_ptr<const PageMetadata> PartOfPage::metadata() const
{
    return m_region.isNull() ? m_page->metadata() : nullptr;
}

const TiffPage* PartOfPage::tiffPage() const
{
    return m_region.isNull() ? m_page->tiffPage() : nullptr;
}

} // namespace pagestack
