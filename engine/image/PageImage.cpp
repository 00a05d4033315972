#include "engine/image/PageImage.h"

#include "engine/image/MultiPageTiffWriter.h"
#include "engine/image/PrefetchedPage.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/formats/Encoders.h"
#include "engine/image/pixels/Bitmap.h"
#include "engine/image/pixels/ReadAheadRows.h"
#include "engine/image/pixels/UprightRows.h"
#include "engine/settings/OutputCodes.h"
#include "engine/settings/Settings.h"
#include "engine/support/SystemLog.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// A smaller page is done before the exchange between threads has paid.
    constexpr qsizetype leastPixelsReadAhead = 4'000'000;

    std::unique_ptr<RowSource> upright(const PageSource& source, const TargetPixels& target)
    {
        // What a format does not take is dropped before the page is turned: it is less to move.
        return uprightRows(adaptRows(source.rowsShownIn(target.takes16Bits ? 16 : 8), target),
                           source.properties().orientation);
    }

    /// The same, read by another thread if there is one of use.
    std::unique_ptr<RowSource> uprightAhead(const PageSource& source, const TargetPixels& target,
                                            SpareThreads* threads)
    {
        auto rows = upright(source, target);
        const qsizetype pixels = qsizetype { rows->widthPx() } * rows->heightPx();
        if (threads == nullptr || pixels < leastPixelsReadAhead)
            return rows;
        return std::make_unique<ReadAheadRows>(std::move(rows), *threads);
    }

    /// The properties of the upright page, with the profile only if it is for pixels like those of
    /// `rows`: a palette of grays, for one, has become gray. ICC.1, header: the colour space of the
    /// data stands in bytes 16 to 19.
    PageProperties uprightPage(const PageSource& source, const RowSource& rows)
    {
        PageProperties page = uprightProperties(source.properties());
        const bool isGray = rows.layout().model == ColorModel::Gray;
        if (page.iccProfile.mid(16, 4) != (isGray ? "GRAY" : "RGB "))
            page.iccProfile.clear();
        return page;
    }

    struct Writer
    {
        OutputType type {};
        QLatin1StringView extension;
        QLatin1StringView name;
    };
    constexpr std::array writers {
        Writer { OutputType::Jpeg, "jpg"_L1, "saveAsJpegWithName"_L1 },
        Writer { OutputType::Png, "png"_L1, "saveAsPngWithName"_L1 },
        Writer { OutputType::Tiff, "tiff"_L1, "saveAsTiffWithName"_L1 },
        Writer { OutputType::Bmp, "bmp"_L1, "saveAsBmpWithName"_L1 },
        Writer { OutputType::Gif, "gif"_L1, "saveAsGifWithName"_L1 },
    };

    /// Throws std::runtime_error when no writer has the extension of `path`.
    OutputType typeByExtension(const QString& path)
    {
        const QString name = path.mid(path.lastIndexOf(u'/') + 1);
        const qsizetype dot = name.lastIndexOf(u'.');
        const QString extension = dot < 0 ? QString() : name.mid(dot + 1);
        for (const Writer& writer : writers)
            if (extension == writer.extension)
                return writer.type;
        throw std::runtime_error("there is no writer for the extension \"" + extension.toStdString()
                                 + '"');
    }

} // namespace

PageImage::PageImage(std::shared_ptr<const PageSource> source)
    : m_source(std::move(source))
{
}

int PageImage::widthPx() const { return m_source->properties().widthPx; }

int PageImage::heightPx() const { return m_source->properties().heightPx; }

bool PageImage::save(const QString& path, const Settings& settings)
{
    return logged(save(path, settings, {}, nullptr));
}

bool PageImage::save(const QString& path, const Settings& settings, PrefetchedPage prepared,
                     SpareThreads* threads, StagedFile::Existing existing)
{
    OutputType type {};
    m_failureLine.clear();
    try {
        type = typeByExtension(path);
    } catch (const std::runtime_error& error) {
        m_failureReason = QString::fromStdString(error.what());
        return false;
    }
    return write(path, type,
                 { settings.jpegQuality(), settings.tiffCompressionIndex(), threads, existing },
                 std::move(prepared));
}

std::unique_ptr<StagedFile> PageImage::stage(const QString& path, const SaveOptions& options) const
{
    std::unique_ptr<StagedFile> file = encoded(path, typeByExtension(path), options);
    file->settle();
    return file;
}

PageDiagnostics PageImage::takeDiagnostics() const
{
    const TiffPage* page = m_source->tiffPage();
    return page ? page->file().messages().takeDiagnostics() : PageDiagnostics {};
}

void PageImage::adopt(const PageDiagnostics& found) const
{
    if (const TiffPage* page = m_source->tiffPage())
        page->file().adopt(page->index(), found);
}

EncodedPieces PageImage::encodePieces(int compressionIndex) const
{
    const TiffPage* page = m_source->tiffPage();
    return page ? pagestack::encodePieces(*page, tiffCompressionTag(compressionIndex))
                : EncodedPieces {};
}

std::uint64_t PageImage::decodedBytes() const
{
    if (const TiffPage* page = m_source->tiffPage())
        return page->tags().decodedBytes();
    const auto rowBytes
        = static_cast<std::uint64_t>(m_source->rows()->layout().rowBytes(widthPx()));
    return rowBytes * static_cast<unsigned>(heightPx());
}

std::unique_ptr<StagedFile> PageImage::encoded(const QString& path, OutputType type,
                                               const SaveOptions& options) const
{
    if (type == OutputType::Tiff) {
        MultiPageTiffWriter pages(path, options.tiffCompressionIndex, 1);
        pages.append(*this);
        return pages.finish();
    }
    if (type == OutputType::Jpeg)
        checkJpegSize(uprightProperties(m_source->properties()));
    else if (type == OutputType::Gif)
        checkGifSize(uprightProperties(m_source->properties()));
    auto file = std::make_unique<StagedFile>(path);
    if (type == OutputType::Gif) {
        encodeGif([&] { return uprightAhead(*m_source, gifPixels(), options.threads); }, *file);
        return file;
    }
    // The pixels of a PNG take far longer to be written than to be read: threads are for that.
    const auto rows = type == OutputType::Png
        ? upright(*m_source, pngPixels())
        : uprightAhead(*m_source, type == OutputType::Jpeg ? jpegPixels() : bmpPixels(),
                       options.threads);
    const PageProperties page = uprightPage(*m_source, *rows);
    if (type == OutputType::Jpeg)
        encodeJpeg(*rows, page, options.jpegQuality, *file);
    else if (type == OutputType::Png)
        encodePng(*rows, page, options.threads, *file);
    else
        encodeBmp(*rows, page, *file);
    return file;
}

/// Puts the page in place. Returns false, with the reason at `m_failureReason`, when that fails.
bool PageImage::write(const QString& path, OutputType type, const SaveOptions& options,
                      PrefetchedPage prepared)
{
    m_failureReason.clear();
    m_failureLine.clear();
    try {
        if (prepared.file)
            adopt(prepared.diagnostics);
        else
            prepared.file = encoded(path, type, options);
        prepared.file->commit(options.existing);
        return true;
    } catch (const std::exception& error) {
        m_failureReason = QString::fromStdString(error.what());
        const auto isOfType = [=](const Writer& writer) { return writer.type == type; };
        m_failureLine = u"Erorr in (%1:) : %2"_s.arg(
            std::find_if(writers.begin(), writers.end(), isOfType)->name, m_failureReason);
        return false;
    }
}

/// Writes to the system log what the last `write` left for it.
bool PageImage::logged(bool isWritten) const
{
    const QStringList lines = takeDiagnostics().logLines;
    for (const QString& line : m_failureLine.isEmpty() ? lines : lines + QStringList(m_failureLine))
        systemLog(line);
    return isWritten;
}

bool PageImage::saveAsBmpWithName(const QString& path)
{
    return logged(write(path, OutputType::Bmp, {}, {}));
}

bool PageImage::saveAsGifWithName(const QString& path)
{
    return logged(write(path, OutputType::Gif, {}, {}));
}

bool PageImage::saveAsPngWithName(const QString& path)
{
    return logged(write(path, OutputType::Png, {}, {}));
}

bool PageImage::saveAsJpegWithName(const QString& path, int quality)
{
    return logged(write(path, OutputType::Jpeg, { .jpegQuality = quality }, {}));
}

bool PageImage::saveAsTiffWithName(const QString& path, int compression)
{
    return logged(write(path, OutputType::Tiff, { .tiffCompressionIndex = compression }, {}));
}

PageImage PageImage::monochromeImage() const
{
    TargetPixels target;
    target.takesAlpha = true;
    const auto rows = upright(*m_source, target);
    const PixelLayout from = rows->layout();
    const int colors = from.colorChannels();
    PixelLayout layout;
    layout.alpha = AlphaKind::Straight;
    std::vector<std::uint8_t> samples;
    samples.reserve(static_cast<std::size_t>(layout.rowBytes(rows->widthPx()))
                    * static_cast<unsigned>(rows->heightPx()));
    for (Band band = rows->nextBand(); band.rows > 0; band = rows->nextBand())
        for (int i = 0; i < band.rows; ++i)
            for (qsizetype x = 0; x < rows->widthPx(); ++x) {
                const std::uint8_t* pixel = band.row(i) + x * from.channels();
                const double red = pixel[0];
                const double green = pixel[colors == 3 ? 1 : 0];
                const double blue = pixel[colors == 3 ? 2 : 0];
                // nearbyint rounds ties to even, as the floating-point environment starts.
                samples.push_back(static_cast<std::uint8_t>(
                    std::nearbyint(0.299 * red + 0.587 * green + 0.114 * blue)));
                samples.push_back(from.alpha == AlphaKind::None ? 255 : pixel[colors]);
            }
    return PageImage(
        std::make_shared<Bitmap>(rows->widthPx(), rows->heightPx(), layout, std::move(samples)));
}

} // namespace pagestack
