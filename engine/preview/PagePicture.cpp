#include "engine/preview/PagePicture.h"

#include "engine/image/decode/ColorTransform.h"
#include "engine/image/decode/DisplayRows.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/Bitmap.h"
#include "engine/image/pixels/RowConversions.h"
#include "engine/image/pixels/UprightRows.h"
#include "engine/preview/BandRoom.h"
#include "engine/preview/BoxReducer.h"
#include "engine/preview/StoredRegion.h"
#include "engine/threads/StopScope.h"

#include <tiffio.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace pagestack {

namespace {

    /// A smaller region is read before another thread has begun.
    constexpr std::int64_t leastPixelsForHelp = 4'000'000;
    constexpr int mostReaders = 4;

    /// The stored rows and columns that become a picture, and its size before it is turned.
    struct Reduction
    {
        QRect from;
        QSize to;

        int firstRowOf(int row) const
        {
            return from.y()
                + static_cast<int>(BoxReducer::boxStart(row, from.height(), to.height()));
        }
    };

    /// 8 bits a sample, gray or RGB, from a row that is at or above `firstRow`.
    std::unique_ptr<RowSource> shownRows(const TiffPage& page, const Reduction& reduction,
                                         int firstRow)
    {
        page.checkSize();
        if (needsRgbaInterface(page.tags()))
            return adaptRows(displayRows(page, 8), {});
        const auto number = [](int value) { return static_cast<std::uint32_t>(value); };
        const PagePart part { startRow(page.tags(), number(firstRow)), number(reduction.from.x()),
                              number(reduction.from.x() + reduction.from.width()) };
        return adaptRows(displayRows(page, 8, part), {});
    }

    /// Makes the rows of the picture from `first` up to `end`, a packed row each call of `take`.
    template <typename Take>
    PixelLayout reduceRows(const TiffPage& page, const Reduction& reduction, int first, int end,
                           const IsStopped& isStopped, Take take)
    {
        const int firstRow = reduction.firstRowOf(first);
        const auto rows = shownRows(page, reduction, firstRow);
        PixelLayout layout = rows->layout();
        const int channels = layout.channels();
        const qsizetype skipped = qsizetype { reduction.from.x() } * channels;
        const bool isWhole = reduction.from.size() == QSize(rows->widthPx(), rows->heightPx());
        BoxReducer reducer(reduction.from.width(), reduction.to.width(), channels);
        std::vector<std::uint8_t> made(static_cast<std::size_t>(reduction.to.width())
                                       * static_cast<unsigned>(channels));
        int row = needsRgbaInterface(page.tags())
            ? 0
            : static_cast<int>(startRow(page.tags(), static_cast<std::uint32_t>(firstRow)));
        int target = first;
        while (target < end || (isWhole && end == reduction.to.height())) {
            if (isStopped())
                throw std::runtime_error("stopped");
            const Band band = rows->nextBand();
            if (band.rows == 0) // of a whole page, what comes behind the last row is judged as well
                break;
            for (int i = 0; i < band.rows && target < end; ++i, ++row) {
                if (row < firstRow)
                    continue;
                reducer.add(band.row(i) + skipped);
                if (row + 1 < reduction.firstRowOf(target + 1))
                    continue;
                reducer.finishRow(made.data());
                take(target++, made);
            }
        }
        return layout;
    }

    /// How many threads can read the page side by side.
    int readersFor(const TiffPageTags& tags, const Reduction& reduction)
    {
        const std::int64_t pixels
            = std::int64_t { reduction.from.width() } * reduction.from.height();
        // The range of deeper samples is judged over the whole page, and so are the rows of a fax.
        if (pixels < leastPixelsForHelp || tags.bitsPerSample > 8
            || (tags.isFax() && tags.compression != COMPRESSION_CCITTFAX4)
            || needsRgbaInterface(tags))
            return 1;
        const int most
            = std::min(static_cast<int>(std::thread::hardware_concurrency()), mostReaders);
        // Rows that have to be read before those that are wanted would be read twice.
        const auto middle
            = static_cast<std::uint32_t>(reduction.from.y() + reduction.from.height() / 2);
        const bool isDivisible = middle - startRow(tags, middle)
                < static_cast<std::uint32_t>(reduction.from.height()) / 16U
            && heldBytes(tags) * static_cast<unsigned>(std::max(most, 1)) <= BandRoom::mostBytes;
        return isDivisible ? std::max(most, 1) : 1;
    }

    /// A page with the reader of one thread, and its share of the picture.
    struct Share
    {
        std::shared_ptr<TiffReader> reader;
        int first = 0;
        int end = 0;
        PixelLayout layout {};
        std::vector<std::uint8_t> samples {};
        std::exception_ptr failure {};

        void read(int index, const Reduction& reduction, const IsStopped& isStopped) noexcept
        try {
            const StopScope scope(isStopped, StopScope::Reach::PagesToo);
            const TiffPage page(reader, index);
            layout = reduceRows(page, reduction, first, end, isStopped,
                                [this](int, const std::vector<std::uint8_t>& row) {
                                    samples.insert(samples.end(), row.begin(), row.end());
                                });
        } catch (...) {
            failure = std::current_exception();
        }
    };

    std::vector<Share> sharesOf(const std::shared_ptr<const OpenTiffFile>& file, int readers,
                                int rows)
    {
        std::vector<Share> shares(static_cast<std::size_t>(std::min(readers, rows)));
        const auto count = static_cast<int>(shares.size());
        for (int i = 0; i < count; ++i) {
            Share& share = shares[static_cast<std::size_t>(i)];
            share.reader = std::make_shared<TiffReader>(file);
            share.first = static_cast<int>(std::int64_t { rows } * i / count);
            share.end = static_cast<int>(std::int64_t { rows } * (i + 1) / count);
        }
        return shares;
    }

    void readAll(std::vector<Share>& shares, int index, const Reduction& reduction,
                 const IsStopped& isStopped)
    {
        std::vector<std::thread> threads;
        std::size_t begun = 1;
        try {
            for (; begun < shares.size(); ++begun)
                threads.emplace_back(
                    [&, share = &shares[begun]] { share->read(index, reduction, isStopped); });
        } catch (const std::system_error&) {
            // The system has no more threads; the rest is for this one.
        }
        shares.front().read(index, reduction, isStopped);
        for (; begun < shares.size(); ++begun)
            shares[begun].read(index, reduction, isStopped);
        for (std::thread& thread : threads)
            thread.join();
        for (const Share& share : shares)
            if (share.failure)
                std::rethrow_exception(share.failure);
    }

    /// The stored picture, upright and in sRGB.
    void finish(PagePicture& picture, const Bitmap& stored, const PageProperties& properties)
    {
        auto rows = stored.rowsShownIn(8);
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

} // namespace

QRect regionInPage(const QRect& region, const QSize& page)
{
    const QRect all(QPoint(), page);
    const QRect inside = region.intersected(all);
    return inside.isEmpty() ? all : inside;
}

QSize reducedSize(const QSize& region, const QSize& most)
{
    const double scale = std::min({ 1.0, static_cast<double>(most.width()) / region.width(),
                                    static_cast<double>(most.height()) / region.height() });
    const auto side = [scale](int from) {
        return std::clamp(static_cast<int>(std::lround(from * scale)), 1, from);
    };
    return { side(region.width()), side(region.height()) };
}

PagePicture pictureOf(const std::shared_ptr<const OpenTiffFile>& file, const PictureWish& wish,
                      const IsStopped& isStopped)
{
    checkPage(*file, wish.page);
    auto first = std::make_shared<TiffReader>(file);
    const TiffPage page(first, wish.page);
    const PageProperties& properties = page.properties();
    const PageProperties upright = uprightProperties(properties);
    PagePicture picture;
    picture.pageSize = QSize(upright.widthPx, upright.heightPx);
    picture.region = regionInPage(wish.region, picture.pageSize);
    Reduction reduction { storedRegion(picture.region, picture.pageSize, properties.orientation),
                          reducedSize(picture.region.size(), wish.most) };
    if (isTurned(properties.orientation))
        reduction.to.transpose();

    picture.hasParts = !isReadFromCopy(page);

    const BandRoom room(heldBytes(page.tags()), isStopped);
    std::vector<Share> shares
        = sharesOf(file, readersFor(page.tags(), reduction), reduction.to.height());
    readAll(shares, wish.page, reduction, isStopped);
    std::vector<std::uint8_t> samples;
    for (Share& share : shares) {
        samples.insert(samples.end(), share.samples.begin(), share.samples.end());
        const PageDiagnostics found = share.reader->messages().takeDiagnostics();
        for (const QString& loss : found.warnings + found.remarks)
            if (!picture.losses.contains(loss))
                picture.losses.append(loss);
    }
    const Bitmap stored(reduction.to.width(), reduction.to.height(), shares.front().layout,
                        std::move(samples));
    finish(picture, stored, properties);
    return picture;
}

} // namespace pagestack
