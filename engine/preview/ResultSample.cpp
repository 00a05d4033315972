#include "engine/preview/ResultSample.h"

#include "engine/image/PageEncoding.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/UprightRows.h"
#include "engine/preview/PartOfPage.h"
#include "engine/preview/StoredRegion.h"

#include <QDir>
#include <QUuid>

#include <algorithm>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// A page of 300 dpi up to A3 is looked at as a whole.
    constexpr std::int64_t mostPixels = 20'000'000;
    constexpr int partSidePx = 2048;
    constexpr int packedStep = 8; ///< a part begins with a whole byte

    /// The part around `center`, of the page as it is stored.
    QRect partAround(const QPoint& center, const QSize& stored)
    {
        const auto span = [](int middle, int all) {
            const int length = std::min(partSidePx, all);
            const int begin = std::clamp(middle - length / 2, 0, all - length);
            return std::pair(begin - begin % packedStep, length);
        };
        const auto [x, width] = span(center.x(), stored.width());
        const auto [y, height] = span(center.y(), stored.height());
        return { x, y, width, height };
    }

    QString temporaryName(OutputType type)
    {
        return QDir::temp().filePath(u"pagestack-"_s + QUuid::createUuid().toString(QUuid::Id128)
                                     + fileExtension(static_cast<int>(type)));
    }

    QByteArray bytesOf(StagedFile& file)
    {
        QByteArray bytes(static_cast<qsizetype>(file.size()), Qt::Uninitialized);
        file.readAt(0, { reinterpret_cast<std::uint8_t*>(bytes.data()), file.size() });
        return bytes;
    }

} // namespace

ResultSample resultSample(const std::shared_ptr<const OpenTiffFile>& file, int index,
                          const ConversionOptions& options, const QPoint& center,
                          const IsStopped& isStopped)
{
    const auto page = std::make_shared<const TiffPage>(std::make_shared<TiffReader>(file), index,
                                                       options.run.treatment);
    const PageProperties& stored = page->properties();
    const PageProperties upright = uprightProperties(stored);
    ResultSample sample;
    sample.type = options.outputType;
    sample.pageSize = QSize(upright.widthPx, upright.heightPx);
    sample.region = QRect(QPoint(), sample.pageSize);
    const std::int64_t pixels = std::int64_t { stored.widthPx } * stored.heightPx;
    sample.isEstimated = pixels > mostPixels;
    std::shared_ptr<const PageSource> source = std::make_shared<PartOfPage>(page, isStopped);
    if (sample.isEstimated) {
        const QSize size(stored.widthPx, stored.heightPx);
        const QRect wanted
            = storedRegion(QRect(center, QSize(1, 1)), sample.pageSize, stored.orientation);
        const QRect part = partAround(wanted.topLeft(), size);
        source = std::make_shared<PartOfPage>(page, part, isStopped);
        sample.region = uprightRegion(part, sample.pageSize, stored.orientation);
    }
    const QString name = temporaryName(options.outputType);
    const auto made
        = encodedPage(source, name, pageEncoding(options.outputType),
                      { .jpegQuality = options.jpegQuality,
                        .tiffCompressionIndex = static_cast<int>(options.tiffCompression) });
    sample.bytes = static_cast<std::int64_t>(made->size());
    if (sample.isEstimated)
        sample.bytes = static_cast<std::int64_t>(
            static_cast<double>(sample.bytes) * static_cast<double>(pixels)
            / (static_cast<double>(sample.region.width()) * sample.region.height()));
    const PageDiagnostics found = page->messages().takeDiagnostics();
    sample.losses = found.warnings + found.remarks;
    if (options.outputType != OutputType::Tiff) {
        sample.file = bytesOf(*made);
        return sample;
    }
    made->settle();
    const auto result = std::make_shared<const OpenTiffFile>(name, *made);
    sample.picture = pictureOf(result, { 0, {}, sample.region.size() }, isStopped);
    return sample;
}

} // namespace pagestack
