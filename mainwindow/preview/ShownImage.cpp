#include "mainwindow/preview/ShownImage.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>

#include <memory>
#include <stdexcept>

namespace pagestack {

ShownImage shownImage(PagePicture picture)
{
    auto samples = std::make_unique<std::vector<std::uint8_t>>(std::move(picture.samples));
    const auto format = picture.channels == 3 ? QImage::Format_RGB888 : QImage::Format_Grayscale8;
    const std::uint8_t* const bits = samples->data();
    const QImage image(
        bits, picture.size.width(), picture.size.height(),
        qsizetype { picture.size.width() } * picture.channels, format,
        [](void* vector) { delete static_cast<std::vector<std::uint8_t>*>(vector); },
        samples.release());
    return { image, picture.region, picture.pageSize, std::move(picture.losses), picture.hasParts };
}

ShownImage decodedSample(const ResultSample& sample)
{
    if (sample.picture) {
        ShownImage shown = shownImage(*sample.picture);
        shown.region = sample.region;
        shown.pageSize = sample.pageSize;
        return shown;
    }
    QBuffer buffer;
    buffer.setData(sample.file);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    QImage image = reader.read();
    if (image.isNull())
        throw std::runtime_error(reader.errorString().toStdString());
    if (image.colorSpace().isValid() && image.colorSpace() != QColorSpace(QColorSpace::SRgb))
        image.convertToColorSpace(QColorSpace(QColorSpace::SRgb));
    return { image, sample.region, sample.pageSize, {} };
}

ShownImage partOf(const ShownImage& whole, const PictureWish& wish)
{
    const QRect region = regionInPage(wish.region, whole.pageSize).intersected(whole.region);
    if (region.isEmpty())
        return { {}, region, whole.pageSize, {} };
    const QRect place = region.translated(-whole.region.topLeft());
    const QSize size = reducedSize(region.size(), wish.most);
    QImage image = place.size() == whole.image.size() ? whole.image : whole.image.copy(place);
    if (size != image.size())
        image = image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return { image, region, whole.pageSize, {} };
}

} // namespace pagestack
