#include "engine/image/metadata/MetadataTags.h"

#include <algorithm>
#include <array>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    // TIFF 6.0, sections 8, 10, 12, 16, 20 and 22; Exif 2.32; GeoTIFF 1.1; GDAL. Those from 40091
    // on are texts of a file manager in UTF-16.
    constexpr std::array tagTable {
        MetadataTag { 269, "DocumentName"_L1, true },
        MetadataTag { 270, "ImageDescription"_L1, true },
        MetadataTag { 271, "Make"_L1, true },
        MetadataTag { 272, "Model"_L1, true },
        MetadataTag { 285, "PageName"_L1, true },
        MetadataTag { 286, "XPosition"_L1, true },
        MetadataTag { 287, "YPosition"_L1, true },
        MetadataTag { 290, "GrayResponseUnit"_L1, false, true, true },
        MetadataTag { 291, "GrayResponseCurve"_L1, false, true, true },
        MetadataTag { 297, "PageNumber"_L1, true },
        MetadataTag { 301, "TransferFunction"_L1, false, true, true },
        MetadataTag { 305, "Software"_L1, true },
        MetadataTag { 306, "DateTime"_L1, true },
        MetadataTag { 315, "Artist"_L1, true },
        MetadataTag { 316, "HostComputer"_L1, true },
        MetadataTag { 318, "WhitePoint"_L1, true },
        MetadataTag { 319, "PrimaryChromaticities"_L1, true },
        MetadataTag { 326, "BadFaxLines"_L1, true, true },
        MetadataTag { 327, "CleanFaxData"_L1, true, true },
        MetadataTag { 328, "ConsecutiveBadFaxLines"_L1, true, true },
        MetadataTag { 333, "InkNames"_L1, false, true, true },
        MetadataTag { 334, "NumberOfInks"_L1, false, true, true },
        MetadataTag { 337, "TargetPrinter"_L1, true },
        MetadataTag { 340, "SMinSampleValue"_L1, false, true, true },
        MetadataTag { 341, "SMaxSampleValue"_L1, false, true, true },
        MetadataTag { 342, "TransferRange"_L1, false, true, true },
        MetadataTag { 18246, "Rating"_L1, true, true },
        MetadataTag { 18249, "RatingPercent"_L1, true, true },
        MetadataTag { 33432, "Copyright"_L1, true },
        MetadataTag { 33434, "ExposureTime"_L1, true, true },
        MetadataTag { 33437, "FNumber"_L1, true, true },
        MetadataTag { 33550, "ModelPixelScale"_L1, false, true },
        MetadataTag { 33922, "ModelTiepoint"_L1, false, true },
        MetadataTag { 34264, "ModelTransformation"_L1, false, true },
        MetadataTag { 34735, "GeoKeyDirectory"_L1, false, true },
        MetadataTag { 34736, "GeoDoubleParams"_L1, false, true },
        MetadataTag { 34737, "GeoAsciiParams"_L1, false, true },
        MetadataTag { 34855, "ISOSpeedRatings"_L1, true, true },
        MetadataTag { 34858, "TimeZoneOffset"_L1, true, true },
        MetadataTag { 36867, "DateTimeOriginal"_L1, true, true },
        MetadataTag { 37386, "FocalLength"_L1, true, true },
        MetadataTag { 40091, "XPTitle"_L1, true, true },
        MetadataTag { 40092, "XPComment"_L1, true, true },
        MetadataTag { 40093, "XPAuthor"_L1, true, true },
        MetadataTag { 40094, "XPKeywords"_L1, true, true },
        MetadataTag { 40095, "XPSubject"_L1, true, true },
        MetadataTag { 42112, "GDAL_METADATA"_L1, false, true },
        MetadataTag { 42113, "GDAL_NODATA"_L1, false, true, true },
        MetadataTag { 50844, "RPCCoefficient"_L1, false, true },
    };

} // namespace

const MetadataTag* metadataTag(unsigned tag)
{
    const auto row = std::ranges::lower_bound(tagTable, tag, {}, &MetadataTag::tag);
    return row == tagTable.end() || row->tag != tag ? nullptr : &*row;
}

} // namespace pagestack
