#include "engine/settings/OutputCodes.h"

using namespace Qt::StringLiterals;

namespace pagestack {

QString fileExtension(int outputType)
{
    switch (static_cast<OutputType>(outputType)) {
    case OutputType::Jpeg:
        return u".jpg"_s;
    case OutputType::Png:
        return u".png"_s;
    case OutputType::Tiff:
        return u".tiff"_s;
    case OutputType::Bmp:
        return u".bmp"_s;
    case OutputType::Gif:
        return u".gif"_s;
    }
    return u""_s;
}

std::uint16_t tiffCompressionTag(int index)
{
    switch (static_cast<TiffCompression>(index)) {
    case TiffCompression::None:
        return 1;
    case TiffCompression::CcittGroup3:
        return 3;
    case TiffCompression::CcittGroup4:
        return 4;
    case TiffCompression::Lzw:
        return 5;
    case TiffCompression::PackBits:
        return 32773;
    }
    return 1;
}

} // namespace pagestack
