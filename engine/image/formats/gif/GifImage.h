#pragma once

#include "engine/image/formats/gif/LzwCoder.h"
#include "engine/image/pixels/PixelLayout.h"

#include <memory>
#include <optional>

namespace pagestack {

/// A GIF89a file of one image, of which rows of indexes are written from the top on. The file must
/// outlive it. One thread at a time.
class GifImage
{
public:
    enum class Rows {
        Bytes, ///< one a pixel
        Bits, ///< packed from the most significant bit on, for palettes of up to two colours
    };

    /// Writes what comes before the pixels. The sides are 1 to 65535, and the palette has 1
    /// to 256 colours. Throws std::runtime_error when the file takes no more, as do the others.
    GifImage(StagedFile& file, int widthPx, int heightPx, const std::vector<RgbColor>& palette,
             std::optional<int> transparentIndex, Rows rows);

    /// Writes the next row. Its indexes are within the palette.
    void putRow(const std::uint8_t* row) { m_coder->putRow(row); }

    /// Completes the file; after as many rows as the image has.
    void finish();

private:
    StagedFile& m_file;
    std::unique_ptr<LzwCoder> m_coder;
};

} // namespace pagestack
