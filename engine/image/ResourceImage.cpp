#include "engine/image/ResourceImage.h"

#include "engine/image/TiffDocument.h"
#include "engine/support/Application.h"

#include <QFileInfo>

#include <stdexcept>

namespace pagestack {

std::optional<PageImage> createImageWithName(const QString& name)
{
    const QFileInfo info(name);
    const QString path = pathForResource(info.completeBaseName(), info.suffix());
    if (path.isNull())
        return std::nullopt;
    try {
        return TiffDocument(path).page(0);
    } catch (const std::exception&) {
        return std::nullopt; // the caller is told by the missing image
    }
}

} // namespace pagestack
