#include "mainwindow/preview/ShownImage.h"

#include <memory>

namespace pagestack {

ShownImage shownImage(PagePicture picture)
{
    if (picture.size.isEmpty())
        return { {}, picture.region, picture.pageSize, {} };
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

} // namespace pagestack
