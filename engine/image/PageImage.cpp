#include "engine/image/PageImage.h"

#include "engine/image/Bitmap.h"
#include "engine/image/Encoders.h"
#include "engine/image/MultiPageTiff.h"
#include "engine/image/UprightRows.h"
#include "engine/settings/Settings.h"
#include "engine/support/SystemLog.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    std::unique_ptr<RowSource> upright(const PageSource& source, const TargetPixels& target)
    {
        // What a format does not take is dropped before the page is turned: it is less to move.
        return uprightRows(adaptRows(source.rows(), target), source.properties().orientation);
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

    /// Stages a file for `path`, lets `encode` fill it and puts it in place. False, with the reason
    /// at `failureReason`, when that fails; the system log gets it behind `logPrefix`.
    template <typename Encode>
    bool writeStaged(const QString& path, QLatin1StringView logPrefix, QString& failureReason,
                     Encode encode)
    {
        failureReason.clear();
        try {
            StagedFile file(path);
            encode(file);
            file.commit();
            return true;
        } catch (const std::exception& error) {
            failureReason = QString::fromStdString(error.what());
            systemLog(logPrefix + failureReason);
            return false;
        }
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
    const QString name = path.mid(path.lastIndexOf(u'/') + 1);
    const qsizetype dot = name.lastIndexOf(u'.');
    const QString extension = dot < 0 ? QString() : name.mid(dot + 1);
    if (extension == "bmp"_L1)
        return saveAsBmpWithName(path);
    if (extension == "jpg"_L1)
        return saveAsJpegWithName(path, settings.jpegQuality());
    if (extension == "png"_L1)
        return saveAsPngWithName(path);
    if (extension == "gif"_L1)
        return saveAsGifWithName(path);
    if (extension == "tiff"_L1)
        return saveAsTiffWithName(path, settings.tiffCompressionIndex());
    m_failureReason = u"there is no writer for the extension \"%1\""_s.arg(extension);
    return false;
}

bool PageImage::saveAsBmpWithName(const QString& path)
{
    return writeStaged(path, "Erorr in (saveAsBmpWithName:) : "_L1, m_failureReason,
                       [this](StagedFile& file) {
                           const auto rows = upright(*m_source, bmpPixels());
                           encodeBmp(*rows, uprightPage(*m_source, *rows), file);
                       });
}

bool PageImage::saveAsGifWithName(const QString& path)
{
    return writeStaged(path, "Erorr in (saveAsGifWithName:) : "_L1, m_failureReason,
                       [this](StagedFile& file) {
                           encodeGif([this] { return upright(*m_source, gifPixels()); }, file);
                       });
}

bool PageImage::saveAsPngWithName(const QString& path)
{
    return writeStaged(path, "Erorr in (saveAsPngWithName:) : "_L1, m_failureReason,
                       [this](StagedFile& file) {
                           const auto rows = upright(*m_source, pngPixels());
                           encodePng(*rows, uprightPage(*m_source, *rows), file);
                       });
}

bool PageImage::saveAsJpegWithName(const QString& path, int quality)
{
    return writeStaged(path, "Erorr in (saveAsJpegWithName:) : "_L1, m_failureReason,
                       [this, quality](StagedFile& file) {
                           const auto rows = upright(*m_source, jpegPixels());
                           encodeJpeg(*rows, uprightPage(*m_source, *rows), quality, file);
                       });
}

bool PageImage::saveAsTiffWithName(const QString& path, int compression)
{
    m_failureReason.clear();
    try {
        MultiPageTiff file(path, compression, 1);
        file.append(*this);
        if (file.commit())
            return true;
        m_failureReason = file.failureReason();
    } catch (const std::exception& error) {
        m_failureReason = QString::fromStdString(error.what());
    }
    systemLog("Erorr in (saveAsTiffWithName:) : "_L1 + m_failureReason);
    return false;
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
