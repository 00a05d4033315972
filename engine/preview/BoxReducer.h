#pragma once

#include <cstdint>
#include <vector>

namespace pagestack {

/// Makes rows of a smaller picture of rows of 8 bits a sample: every pixel is the mean of the box
/// of pixels that it stands for. Pixel `i` of `n` stands for those from boxStart(i, ...) on. One
/// thread.
class BoxReducer
{
public:
    /// Pixels of `channels` samples; `toWidth` is 1 to `fromWidth`.
    BoxReducer(int fromWidth, int toWidth, int channels);

    void add(const std::uint8_t* row);
    /// Writes the means of the rows since the last call, of which there is one at least, to `to`.
    void finishRow(std::uint8_t* to);

    /// The first of `from` pixels that pixel `index` of `to` stands for.
    static std::int64_t boxStart(std::int64_t index, std::int64_t from, std::int64_t to)
    {
        return index * from / to;
    }

private:
    void flush();

    std::size_t m_channels;
    int m_rows = 0; ///< that the sums hold
    int m_pendingRows = 0; ///< of these, in `m_columns` only
    std::vector<std::uint32_t> m_starts; ///< of the boxes in a row, with the end of the last
    std::vector<std::uint16_t> m_columns;
    std::vector<std::uint64_t> m_sums; ///< a box and channel each
};

} // namespace pagestack
