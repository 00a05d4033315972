#pragma once

#include "engine/image/tiff/TiffPageTags.h"

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace pagestack {

class OpenTiffFile;

/// The directory of a page that has only common tags, with values of which libtiff has nothing to
/// say: gray, RGB or, as JPEG, YCbCr, whole numbers as resolution, sound strips or tiles. Most
/// scans are of this kind, and it is read in a tenth of the time that libtiff takes.
struct PlainDirectory
{
    struct Piece
    {
        std::uint64_t offset;
        std::uint64_t bytes;
    };
    struct Text
    {
        unsigned tag;
        QByteArray bytes; ///< with the end mark, which is the only one
    };

    TiffPageTags tags;
    std::vector<Piece> pieces; ///< strips or tiles, in their order
    std::uint64_t pieceBytes = 0; ///< of all pieces
    std::vector<Text> texts; ///< by their tags, upwards

    // Of tags that a page may have or not.
    bool hasResolution = false;
    bool hasSampleFormat = false;
    std::optional<int> resolutionUnit;
    std::optional<std::pair<int, int>> pageNumber; ///< from 0, of how many
    std::optional<std::uint32_t> faxOptions; ///< T4Options or T6Options, as the compression is
    std::vector<std::uint8_t> jpegTables;
    bool hasSubsampling = false;
    std::optional<int> samplePositions;
    std::vector<std::uint32_t> blackAndWhite; ///< ReferenceBlackWhite, whole numbers
};

/// None where the page is of another kind, where its chain of directories has a fault, or where it
/// cannot be read: who reads it by libtiff is told what is wrong. Any thread.
std::optional<PlainDirectory> plainDirectory(const OpenTiffFile& file, int index);

} // namespace pagestack
