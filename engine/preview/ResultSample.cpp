#include "engine/preview/ResultSample.h"

#include "engine/files/StagedNames.h"
#include "engine/image/PageEncoding.h"
#include "engine/image/decode/StoredRows.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/UprightRows.h"
#include "engine/image/tiffwriter/LeftOutTags.h"
#include "engine/image/tiffwriter/TiffPageWriter.h"
#include "engine/preview/BandRoom.h"
#include "engine/preview/PartOfPage.h"
#include "engine/preview/StoredRegion.h"
#include "engine/threads/StopScope.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <limits>
#include <memory>
#include <stdexcept>
#include <unistd.h>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// A page of 300 dpi up to A3 is looked at as a whole.
    constexpr std::int64_t mostPixels = 20'000'000;
    constexpr std::uint64_t mostPageBytes = std::uint64_t { 128 } * 1024 * 1024;
    constexpr int partSidePx = 2048;
    constexpr std::int64_t mostBmpBytes = std::numeric_limits<std::uint32_t>::max();
    constexpr int packedStep = 32; ///< a part begins with a whole byte, and an MCU of a JPEG page

    /// The part around `center`, of the page as it is stored.
    QRect partAround(const QPoint& center, const QSize& stored)
    {
        const auto span = [](int middle, int all) {
            const int length = std::min(partSidePx, all);
            const int begin = std::clamp(middle - length / 2, 0, all - length);
            const int first = begin - begin % packedStep;
            return std::pair(first, begin == all - length ? all - first : length);
        };
        const auto [x, width] = span(center.x(), stored.width());
        const auto [y, height] = span(center.y(), stored.height());
        return { x, y, width, height };
    }

    /// By a name that nobody gives to a folder of their own.
    const QString folderName = u".pagestack-compare-XXXXXX"_s;

    /// Folders of programs that were killed. One that is in use has a file that its program owns,
    /// or is about to have it.
    void removeLeftFolders(const QDir& temporary)
    {
        constexpr qint64 youngestS = 60;
        QString pattern = folderName;
        const QFileInfoList folders = temporary.entryInfoList(
            { pattern.replace(u'X', u'?') }, QDir::Dirs | QDir::Hidden | QDir::NoSymLinks);
        for (const QFileInfo& folder : folders) {
            const auto others = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup
                | QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
            if (folder.ownerId() != ::geteuid() || (folder.permissions() & others) != 0
                || folder.lastModified().secsTo(QDateTime::currentDateTime()) < youngestS)
                continue;
            removeLeftStagedFiles(folder.filePath());
            temporary.rmdir(folder.fileName()); // stays where there is anything else
        }
    }

    /// The file is made in a folder of its own, which nobody else may enter.
    QString nameIn(const QTemporaryDir& folder, OutputType type)
    {
        if (!folder.isValid())
            throw std::runtime_error("cannot make a temporary folder: "
                                     + folder.errorString().toStdString());
        return folder.filePath(u"page"_s + fileExtension(static_cast<int>(type)));
    }

    /// Before a part of it is encoded, which might fit.
    void checkSides(const PageProperties& upright, const PageEncoding& encoding)
    {
        if (encoding.encode != nullptr
            && std::max(upright.widthPx, upright.heightPx) > encoding.mostSidePx)
            throwTooLarge(upright, encoding.name);
    }

    QStringList lossesOf(const PageDiagnostics& found)
    {
        constexpr qsizetype mostNames = 5;
        QStringList losses = found.warnings + found.remarks;
        if (!found.leftOutTags.isEmpty())
            losses.append(leftOutText(found.leftOutTags, mostNames));
        return losses;
    }

    /// How many times as large as that of its part the file of a page is.
    double growth(const TiffPage& page, const QSize& part, const ResultFile& result)
    {
        const PageProperties& whole = page.properties();
        // A TIFF file holds the samples as they are stored, of the part those that are shown.
        if (result.tiff() != nullptr && keepsSamples(page)) {
            const TiffPage written(std::make_shared<TiffReader>(result.tiff()), 0);
            return static_cast<double>(page.decodedBytes())
                / static_cast<double>(written.decodedBytes());
        }
        return static_cast<double>(whole.widthPx) * whole.heightPx
            / (static_cast<double>(part.width()) * part.height());
    }

} // namespace

ResultSample resultSample(const std::shared_ptr<const OpenTiffFile>& file, int index,
                          const ConversionOptions& options, const QPoint& center,
                          const IsStopped& isStopped)
{
    const StopScope scope(isStopped, StopScope::Reach::PagesToo);
    checkPage(*file, index);
    const PageEncoding& encoding = pageEncoding(options.outputType);
    const auto page = std::make_shared<const TiffPage>(
        std::make_shared<TiffReader>(file), index,
        withoutIdleTreatment(options.run.treatment, options.outputType));
    const PageProperties stored = page->properties();
    const PageProperties upright = uprightProperties(stored);
    checkSides(upright, encoding);
    ResultSample sample;
    sample.type = options.outputType;
    sample.pageSize = QSize(upright.widthPx, upright.heightPx);
    sample.region = QRect(QPoint(), sample.pageSize);
    const std::int64_t pixels = std::int64_t { stored.widthPx } * stored.heightPx;
    sample.isEstimated = pixels > mostPixels || page->decodedBytes() > mostPageBytes;
    std::shared_ptr<const PageSource> source = std::make_shared<PartOfPage>(page, isStopped);
    if (sample.isEstimated) {
        const QSize size(stored.widthPx, stored.heightPx);
        const QRect wanted
            = storedRegion(QRect(center, QSize(1, 1)), sample.pageSize, stored.orientation);
        const QRect part = partAround(wanted.topLeft(), size);
        source = std::make_shared<PartOfPage>(page, part, isStopped);
        sample.region = uprightRegion(part, sample.pageSize, stored.orientation);
    }
    removeLeftFolders(QDir::temp());
    std::unique_ptr<const QTemporaryDir> folder;
    QString name;
    const auto made = [&] {
        const BandRoom room(heldBytes(page->tags()), isStopped);
        // After the wait for room, so that it is not empty for long.
        folder = std::make_unique<const QTemporaryDir>(QDir::temp().filePath(folderName));
        name = nameIn(*folder, options.outputType);
        return encodedPage(source, name, encoding,
                           { .jpegQuality = options.jpegQuality,
                             .tiffCompressionIndex = static_cast<int>(options.tiffCompression),
                             .reencodes = options.run.reencodes,
                             .whole = sample.isEstimated ? page.get() : nullptr });
    }();
    made->settle();
    sample.file = std::make_shared<const ResultFile>(sample.type, name, *made);
    sample.bytes = static_cast<std::int64_t>(made->size());
    if (sample.isEstimated)
        sample.bytes = static_cast<std::int64_t>(
            static_cast<double>(sample.bytes) * growth(*page, sample.region.size(), *sample.file));
    if (options.outputType == OutputType::Bmp && sample.bytes > mostBmpBytes)
        throwTooLarge(upright, encoding.name);
    sample.losses = lossesOf(page->messages().takeDiagnostics());
    return sample;
}

PagePicture pictureOf(const ResultSample& sample, const PictureWish& wish,
                      const IsStopped& isStopped)
{
    PagePicture picture;
    picture.region = regionInPage(wish.region, sample.pageSize).intersected(sample.region);
    if (!picture.region.isEmpty()) {
        const QPoint corner = sample.region.topLeft();
        picture = sample.file->picture(sample.region.size(), picture.region.translated(-corner),
                                       wish.most, isStopped);
        picture.region.translate(corner);
    }
    picture.pageSize = sample.pageSize;
    picture.losses.clear(); // of the page, which the sample has
    return picture;
}

} // namespace pagestack
