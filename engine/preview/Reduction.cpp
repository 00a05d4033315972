#include "engine/preview/Reduction.h"

#include "engine/image/decode/ColorTransform.h"
#include "engine/image/pixels/RowConversions.h"
#include "engine/image/pixels/UprightRows.h"

#include <stdexcept>

namespace pagestack {

void Reduction::reduce(RowSource& rows, int begin, int first, int end, const IsStopped& isStopped,
                       const std::function<void(const std::vector<std::uint8_t>& row)>& take) const
{
    const int firstRow = firstRowOf(first);
    const int channels = rows.layout().channels();
    const qsizetype skipped = qsizetype { from.x() } * channels;
    const bool isWhole = from.size() == QSize(rows.widthPx(), rows.heightPx());
    BoxReducer reducer(from.width(), to.width(), channels);
    std::vector<std::uint8_t> made(static_cast<std::size_t>(to.width())
                                   * static_cast<unsigned>(channels));
    int row = begin;
    int target = first;
    while (target < end || (isWhole && end == to.height())) {
        if (isStopped())
            throw std::runtime_error("stopped");
        const Band band = rows.nextBand();
        if (band.rows == 0)
            break;
        for (int i = 0; i < band.rows && target < end; ++i, ++row) {
            if (row < firstRow)
                continue;
            reducer.add(band.row(i) + skipped);
            if (row + 1 < firstRowOf(target + 1))
                continue;
            reducer.finishRow(made.data());
            take(made);
            ++target;
        }
    }
}

void finishPicture(PagePicture& picture, const Bitmap& stored, const PageProperties& properties)
{
    auto rows = stored.rowsShownIn(8, nullptr);
    if (!properties.iccProfile.isEmpty()
        && profileKind(properties.iccProfile, rows->layout().model) == ProfileKind::Other)
        rows = srgbRows(std::move(rows), properties.iccProfile);
    rows = adaptRows(uprightRows(std::move(rows), properties.orientation), {});
    picture.channels = rows->layout().channels();
    picture.size = QSize(rows->widthPx(), rows->heightPx());
    const qsizetype rowBytes = rows->rowBytes();
    picture.samples.reserve(static_cast<std::size_t>(rowBytes)
                            * static_cast<unsigned>(rows->heightPx()));
    for (Band band = rows->nextBand(); band.rows > 0; band = rows->nextBand())
        for (int i = 0; i < band.rows; ++i)
            picture.samples.insert(picture.samples.end(), band.row(i), band.row(i) + rowBytes);
}

} // namespace pagestack
