#include "engine/image/PageEncoding.h"

#include "engine/image/decode/ColorTransform.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/formats/UprightBlocks.h"
#include "engine/image/pixels/ReadAheadRows.h"
#include "engine/image/pixels/UprightRows.h"
#include "engine/image/tiffwriter/LeftOutTags.h"
#include "engine/image/tiffwriter/MultiPageTiffWriter.h"
#include "engine/image/verify/ImageReaders.h"
#include "engine/image/verify/ReadBack.h"
#include "engine/image/verify/TiffProof.h"
#include "engine/settings/OutputCodes.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int anySide = std::numeric_limits<int>::max();
    constexpr TargetPixels bmpPixels { .takesPalette = true, .takes1Bit = true };
    constexpr TargetPixels gifPixels {
        .takesPalette = true, .takesAlpha = true, .takes1Bit = true, .takes2And4Bits = true
    };
    constexpr TargetPixels pngPixels { true, true, true, true, true };
    constexpr std::array encodings {
        PageEncoding { OutputType::Jpeg,
                       "JPEG"_L1,
                       {},
                       true,
                       true,
                       true,
                       jpegMostSidePx,
                       encodeJpeg,
                       KeptPixels::Size,
                       readJpeg,
                       openJpeg,
                       encodeJpegBlocks,
                       readJpegBlocks },
        // The pixels of a PNG take far longer to be written than to be read.
        PageEncoding { OutputType::Png, "PNG"_L1, pngPixels, true, false, true, anySide, encodePng,
                       KeptPixels::Samples, readPng, openPng },
        PageEncoding { OutputType::Tiff, "TIFF"_L1 },
        PageEncoding { OutputType::Bmp, "BMP"_L1, bmpPixels, false, true, false, anySide, encodeBmp,
                       KeptPixels::Samples, readBmp, openBmp },
        PageEncoding { OutputType::Gif, "GIF"_L1, gifPixels, false, true, false, gifMostSidePx,
                       encodeGif, KeptPixels::Colors, readGif, openGif },
    };

    /// A smaller page is done before the exchange between threads has paid.
    constexpr qsizetype leastPixelsReadAhead = 4'000'000;

    std::unique_ptr<RowSource> startPass(const PageSource& source, const PageEncoding& encoding,
                                         SpareThreads* threads)
    {
        // What a format does not take is dropped before the page is turned: it is less to move.
        const TargetPixels& target = encoding.pixels;
        const PageProperties& page = source.properties();
        const bool readsAhead = encoding.readsAhead && threads != nullptr
            && qsizetype { page.widthPx } * page.heightPx >= leastPixelsReadAhead;
        auto work = readsAhead ? std::make_unique<SharedWork>() : nullptr;
        auto rows = source.rowsShownIn(target.takes16Bits ? 16 : 8, work.get());
        rows = uprightRows(adaptRows(std::move(rows), target), page.orientation);
        if (!readsAhead)
            return rows;
        return std::make_unique<ReadAheadRows>(std::move(work), std::move(rows), *threads);
    }

    /// Drops a profile for other pixels than those of `model`: a palette of grays, for one, has
    /// become gray. ICC.1, header: the colour space of the data stands in bytes 16 to 19.
    void matchProfile(PageProperties& page, ColorModel model)
    {
        const bool isGray = model == ColorModel::Gray;
        if (page.iccProfile.mid(16, 4) != (isGray ? "GRAY" : "RGB "))
            page.iccProfile.clear();
    }

    /// What is lost with a profile that tells of other colours than sRGB, which pixels without one
    /// are taken for. Black and white lose nothing.
    QString droppedProfile(const UprightPage& page, const PageEncoding& encoding)
    {
        const QByteArray& profile = page.properties.iccProfile;
        const PixelLayout& layout = page.rows->layout();
        const bool isGray = layout.model == ColorModel::Gray;
        if (encoding.takesProfile || profile.isEmpty() || (isGray && layout.bitsPerSample == 1))
            return {};
        switch (profileKind(profile, layout.model)) {
        case ProfileKind::Srgb:
            return {};
        case ProfileKind::Unusable:
            return u"a broken colour profile, which %1 cannot hold, is dropped"_s.arg(
                encoding.name);
        case ProfileKind::Other:
            break;
        }
        const QString name = profileName(profile);
        return u"the colour profile%1, which %2 cannot hold, is dropped; --srgb converts the "
               "colours"_s.arg(name.isEmpty() ? u""_s : u" '%1'"_s.arg(name), encoding.name);
    }

    /// The page with the JPEG data that it has; null when there are none that say just what the
    /// file is to show, or when they are in doubt: then they are decoded, which tells what is
    /// wrong.
    std::unique_ptr<StagedFile> takenOver(const PageSource& source, UprightPage& page,
                                          const QString& path, const PageEncoding& encoding,
                                          const SaveOptions& options)
    {
        constexpr int losslessQuality = 10;
        if (encoding.encodeBlocks == nullptr || options.reencodes
            || options.jpegQuality < losslessQuality)
            return nullptr;
        const auto leave = [&page, properties = page.properties, leftOut = page.leftOut] {
            page.properties = properties;
            page.leftOut = leftOut;
            return nullptr;
        };
        try {
            std::shared_ptr<JpegBlocks> blocks = source.jpegBlocks();
            if (blocks == nullptr)
                return nullptr;
            blocks = uprightBlocks(std::move(blocks), source.properties().orientation);
            ImageProof written;
            if (options.verifies)
                blocks = provedBlocks(std::move(blocks), written);
            matchProfile(page.properties, blocks->frame().model());
            auto file = std::make_unique<StagedFile>(path);
            encoding.encodeBlocks(page, *blocks, *file);
            if (options.verifies) {
                file->settle(); // what waits in memory would be read instead of the file
                readBack([&] {
                    compareProofs(written, encoding.readBlocksBack(*file), KeptPixels::Samples);
                });
            }
            return file;
        } catch (const UnfitBlocks&) {
            return leave();
        } catch (const RefusedFile&) {
            return leave(); // its pixels may still be written well
        }
    }

    std::unique_ptr<StagedFile> encodedRows(const PageSource& source, UprightPage& page,
                                            const QString& path, const PageEncoding& encoding,
                                            const SaveOptions& options)
    {
        auto file = std::make_unique<StagedFile>(path);
        ImageProof written;
        page.startPass = [&] {
            auto rows = startPass(source, encoding, options.threads);
            return options.verifies ? provedRows(std::move(rows), encoding.kept, written)
                                    : std::move(rows);
        };
        page.rows = page.startPass();
        matchProfile(page.properties, page.rows->layout().model);
        const QString dropped = droppedProfile(page, encoding);
        encoding.encode(page, *file);
        if (options.verifies) {
            file->settle(); // as above
            readBack([&] { compareProofs(written, encoding.readBack(*file), encoding.kept); });
        }
        const TiffPage* tiffPage = options.whole != nullptr ? options.whole : source.tiffPage();
        if (tiffPage != nullptr && !dropped.isEmpty())
            tiffPage->messages().addRemark(dropped);
        return file;
    }

} // namespace

const PageEncoding& pageEncoding(OutputType type)
{
    return *std::ranges::find(encodings, type, &PageEncoding::type);
}

const PageEncoding& pageEncoding(const QString& path)
{
    const QString name = path.mid(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    const QString extension = dot < 0 ? QString() : name.mid(dot);
    for (const PageEncoding& encoding : encodings)
        if (extension == fileExtension(static_cast<int>(encoding.type)))
            return encoding;
    throw std::runtime_error("there is no writer for the extension \""
                             + extension.mid(1).toStdString() + '"');
}

std::unique_ptr<StagedFile> encodedPage(const std::shared_ptr<const PageSource>& source,
                                        const QString& path, const PageEncoding& encoding,
                                        const SaveOptions& options)
{
    if (encoding.type == OutputType::Tiff) {
        MultiPageTiffWriter pages(path, options.tiffCompressionIndex, 1);
        pages.append(source);
        auto file = pages.finish();
        if (options.verifies) {
            TiffProof proof;
            proof.add(source, proofOf(*source));
            readBack([&] { proof.check(*file); });
        }
        return file;
    }
    UprightPage page;
    page.properties = uprightProperties(source->properties());
    // Before any row is made: turning a page upright takes time and memory.
    if (std::max(page.properties.widthPx, page.properties.heightPx) > encoding.mostSidePx)
        throwTooLarge(page.properties, encoding.name);
    const TiffPage* tiffPage = options.whole != nullptr ? options.whole : source->tiffPage();
    if (encoding.holdsMetadata)
        page.metadata = source->metadata();
    if (tiffPage != nullptr) {
        const bool isPart = encoding.holdsMetadata && options.whole != nullptr;
        const auto held = isPart ? options.whole->metadata() : page.metadata;
        page.leftOut = leftOutTags(*tiffPage, held.get());
    }
    page.jpegQuality = options.jpegQuality;
    page.threads = options.threads;
    std::unique_ptr<StagedFile> file = takenOver(*source, page, path, encoding, options);
    if (file != nullptr && tiffPage != nullptr)
        tiffPage->messages().setTakenOver();
    if (file == nullptr)
        file = encodedRows(*source, page, path, encoding, options);
    if (tiffPage != nullptr && encoding.holdsMetadata)
        tiffPage->messages().setLeftOutTags(page.leftOut);
    else if (tiffPage != nullptr)
        tiffPage->messages().setTagsWithoutPlace(page.leftOut);
    if (tiffPage != nullptr && tiffPage->treatment().keepsDate)
        file->setModified(tiffPage->document().stateAtOpening().modifiedNs);
    return file;
}

} // namespace pagestack
