#include "filelist/ShownThumbnails.h"

#include "engine/preview/PagePicture.h"

#include <exception>

namespace pagestack {

namespace {

    constexpr qint64 pauseOfThumbnailsMs = 60000;
    constexpr int mostThumbnailsKept = 500;

} // namespace

ShownThumbnails::ShownThumbnails(double ratio)
    : m_isStopped(std::make_shared<std::atomic<bool>>(false))
    , m_looks([ratio, isStopped = m_isStopped](
                  const FileItem& item) { return look(item, ratio, *isStopped); },
              pauseOfThumbnailsMs, [this] { emit changed(); }, mostThumbnailsKept)
{
}

ShownThumbnails::~ShownThumbnails() { *m_isStopped = true; }

/// On a thread of the looks.
QImage ShownThumbnails::look(const FileItem& item, double ratio, const std::atomic<bool>& isStopped)
try {
    const auto isEnded = [&isStopped] { return isStopped.load(); };
    PreviewFile file(item.localFile());
    PictureWish wish;
    wish.most = QSize(side, side) * ratio;
    const PagePicture picture = pictureOf(file.open(isEnded), wish, isEnded);
    const QImage image(picture.samples.data(), picture.size.width(), picture.size.height(),
                       qsizetype(picture.size.width()) * picture.channels,
                       picture.channels == 1 ? QImage::Format_Grayscale8 : QImage::Format_RGB888);
    QImage own = image.convertToFormat(QImage::Format_RGB32);
    own.setDevicePixelRatio(ratio);
    return own;
} catch (const std::exception&) {
    return {}; // the status of the file says why
}

} // namespace pagestack
