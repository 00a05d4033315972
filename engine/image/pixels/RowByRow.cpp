#include "engine/image/pixels/RowByRow.h"

#include <algorithm>

namespace pagestack {

namespace {

    constexpr qsizetype wantedBytes = qsizetype { 128 } * 1024;

    class SteppedRows : public RowByRow
    {
    public:
        SteppedRows(std::unique_ptr<RowSource> source, PixelLayout layout, RowFunction step)
            : RowByRow(source->widthPx(), source->heightPx(), std::move(layout))
            , m_source(std::move(source))
            , m_step(std::move(step))
        {
        }

    private:
        int fetch() override
        {
            m_band = m_source->nextBand();
            return m_band.rows;
        }
        void make(int index, std::uint8_t* to) override
        {
            m_step(m_band.row(index), to, widthPx());
        }

        std::unique_ptr<RowSource> m_source;
        RowFunction m_step;
        Band m_band;
    };

} // namespace

RowByRow::RowByRow(int widthPx, int heightPx, PixelLayout layout)
    : RowSource(widthPx, heightPx, std::move(layout))
    , m_mostRows(static_cast<int>(std::max<qsizetype>(1, wantedBytes / rowBytes())))
{
}

Band RowByRow::nextBand()
{
    if (m_made == m_fetched) {
        m_fetched = fetch();
        m_made = 0;
    }
    const int rows = std::min(m_mostRows, m_fetched - m_made);
    const qsizetype stride = rowBytes();
    m_samples.resize(static_cast<std::size_t>(rows * stride));
    for (int i = 0; i < rows; ++i)
        make(m_made++, m_samples.data() + i * stride);
    return { m_samples.data(), rows, stride };
}

std::unique_ptr<RowSource> steppedRows(std::unique_ptr<RowSource> source, PixelLayout layout,
                                       RowFunction step)
{
    return std::make_unique<SteppedRows>(std::move(source), std::move(layout), std::move(step));
}

} // namespace pagestack
