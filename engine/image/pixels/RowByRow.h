#pragma once

#include "engine/image/pixels/RowSource.h"

#include <functional>
#include <memory>
#include <vector>

namespace pagestack {

/// Rows that are made one at a time of those of larger bands, in bands that stay in the cache.
class RowByRow : public RowSource
{
public:
    Band nextBand() override;

protected:
    RowByRow(int widthPx, int heightPx, PixelLayout layout);

    /// Goes on to the next band and returns its number of rows; 0 after the last.
    virtual int fetch() = 0;
    /// Makes row `index` of that band and writes it to `to`.
    virtual void make(int index, std::uint8_t* to) = 0;

private:
    int m_mostRows; ///< of a band
    int m_fetched = 0;
    int m_made = 0; ///< of `m_fetched`
    std::vector<std::uint8_t> m_samples;
};

using RowFunction = std::function<void(const std::uint8_t* from, std::uint8_t* to, int pixels)>;

/// The rows of `source`, each put through `step`, which makes a row of `layout` of it.
std::unique_ptr<RowSource> steppedRows(std::unique_ptr<RowSource> source, PixelLayout layout,
                                       RowFunction step);

} // namespace pagestack
