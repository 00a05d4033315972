#include "filelist/ShownThumbnails.h"

#include "engine/preview/PagePicture.h"

#include <exception>

namespace pagestack {

namespace {

    constexpr qint64 pauseOfThumbnailsMs = 60000;
    constexpr int mostThumbnailsKept = 500;

} // namespace

ShownThumbnails::ShownThumbnails(double ratio)
    : m_ratio(ratio)
    , m_looks([this](const FileItem& item) { return look(item); }, pauseOfThumbnailsMs,
              [this] { emit changed(); }, mostThumbnailsKept)
{
}

ShownThumbnails::~ShownThumbnails() { m_isStopped = true; }

/// On a thread of the looks.
QImage ShownThumbnails::look(const FileItem& item) const
try {
    const auto isStopped = [this] { return m_isStopped.load(); };
    PreviewFile file(item.filePath().toLocalFile());
    PictureWish wish;
    wish.most = QSize(side, side) * m_ratio;
    const PagePicture picture = pictureOf(file.open(isStopped), wish, isStopped);
    const QImage image(picture.samples.data(), picture.size.width(), picture.size.height(),
                       qsizetype(picture.size.width()) * picture.channels,
                       picture.channels == 1 ? QImage::Format_Grayscale8 : QImage::Format_RGB888);
    QImage own = image.convertToFormat(QImage::Format_RGB32);
    own.setDevicePixelRatio(m_ratio);
    return own;
} catch (const std::exception&) {
    return {}; // the status of the file says why
}

} // namespace pagestack
