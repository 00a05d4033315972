#include "engine/settings/OutputCodes.h"

#include <QList>
#include <QStringList>

using namespace Qt::StringLiterals;

namespace pagestack {

QString fileExtension(int outputType)
{
    static const QStringList extensions { u".jpg"_s, u".png"_s, u".tiff"_s, u".bmp"_s, u".gif"_s };
    return extensions.value(outputType, u""_s);
}

std::uint16_t tiffCompressionTag(int index)
{
    static const QList<std::uint16_t> tags { 1, 3, 4, 5, 32773 };
    return tags.value(index, 1);
}

} // namespace pagestack
