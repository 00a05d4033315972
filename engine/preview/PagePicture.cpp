#include "engine/preview/PagePicture.h"

#include "engine/image/decode/DisplayRows.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/RowConversions.h"
#include "engine/image/pixels/UprightRows.h"
#include "engine/preview/BandRoom.h"
#include "engine/preview/Reduction.h"
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

    /// Makes the rows of the picture from `first` up to `end`, as Reduction::reduce does.
    PixelLayout reduceRows(const TiffPage& page, const Reduction& reduction, int first, int end,
                           const IsStopped& isStopped,
                           const std::function<void(const std::vector<std::uint8_t>&)>& take)
    {
        const int firstRow = reduction.firstRowOf(first);
        const auto rows = shownRows(page, reduction, firstRow);
        const auto begin = needsRgbaInterface(page.tags())
            ? 0
            : startRow(page.tags(), static_cast<std::uint32_t>(firstRow));
        reduction.reduce(*rows, static_cast<int>(begin), first, end, isStopped, take);
        return rows->layout();
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
                                [this](const std::vector<std::uint8_t>& row) {
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
    finishPicture(picture, stored, properties);
    return picture;
}

} // namespace pagestack
