#include "engine/image/PageImage.h"

#include "engine/image/PageEncoding.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/Bitmap.h"
#include "engine/image/pixels/UprightRows.h"
#include "engine/settings/OutputCodes.h"
#include "engine/settings/Settings.h"
#include "engine/support/SystemLog.h"

#include <cmath>
#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

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
                     SpareThreads* threads, StagedFile::Existing existing,
                     const RunOptions& choices)
{
    m_failureLine.clear();
    try {
        return write(path, pageEncoding(path).type,
                     { settings.jpegQuality(), settings.tiffCompressionIndex(), threads, existing,
                       choices.verifies, choices.needsDigests(), choices.reencodes },
                     std::move(prepared));
    } catch (const std::runtime_error& error) {
        m_failureReason = QString::fromStdString(error.what());
        return false;
    }
}

PageDiagnostics PageImage::takeDiagnostics() const
{
    const TiffPage* page = m_source->tiffPage();
    return page ? page->messages().takeDiagnostics() : PageDiagnostics {};
}

void PageImage::adopt(const PageDiagnostics& found) const
{
    if (const TiffPage* page = m_source->tiffPage())
        page->reader().adopt(page->index(), found);
}

/// Puts the page in place. Returns false, with the reason at `m_failureReason`, when that fails.
bool PageImage::write(const QString& path, OutputType type, const SaveOptions& options,
                      PrefetchedPage prepared)
{
    m_digest.reset();
    m_failureReason.clear();
    m_failureLine.clear();
    const PageEncoding& encoding = pageEncoding(type);
    try {
        if (prepared.file)
            adopt(prepared.diagnostics);
        else
            prepared.file = encodedPage(m_source, path, encoding, options);
        if (options.needsDigest && !prepared.digest) {
            prepared.file->settle(); // the bytes of the file, not those that wait for it
            prepared.digest = digestOf(*prepared.file);
        }
        prepared.file->commit(options.existing);
        if (const TiffPage* page = m_source->tiffPage(); page && !prepared.file->isDateKept())
            page->messages().addRemark(StagedFile::dateRemark());
        m_digest = prepared.digest;
        return true;
    } catch (const std::exception& error) {
        m_failureReason = QString::fromStdString(error.what());
        const QString name = encoding.name; // "JPEG", of saveAsJpegWithName
        m_failureLine = u"Erorr in (saveAs%1WithName:) : %2"_s.arg(
            name.at(0) + name.mid(1).toLower(), m_failureReason);
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
    const auto rows
        = uprightRows(adaptRows(m_source->rowsShownIn(8, nullptr), { .takesAlpha = true }),
                      m_source->properties().orientation);
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
