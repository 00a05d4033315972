#pragma once

#include "engine/image/formats/JpegBlocks.h"
#include "engine/image/pixels/RowSource.h"
#include "engine/image/verify/PixelDigest.h"

#include <array>
#include <memory>
#include <vector>

namespace pagestack {

/// What a format keeps of a page's pixels, and so what is compared.
enum class KeptPixels {
    Samples,
    Colors, ///< up to 256, one of which may be transparency; else only the size
    Size,
};

/// The pixels that went into a file, or that came out of it.
struct ImageProof
{
    int widthPx = 0;
    int heightPx = 0; ///< rows that there really were
    PixelLayout layout; ///< a palette also where the levels of gray are one
    PixelDigest pixels;
    bool isExact = true; ///< false: `pixels` says nothing
};

/// Takes an image row by row.
class ProofMaker
{
public:
    ProofMaker(int widthPx, PixelLayout layout, KeptPixels kept);

    void add(const std::uint8_t* row);
    ImageProof proof() const;

private:
    void addColors(const std::uint8_t* row);
    bool isNewColor(std::uint32_t color);

    const PixelLayout m_layout;
    const KeptPixels m_kept;
    ImageProof m_proof;
    PixelHash m_hash;
    std::vector<std::uint8_t> m_row; ///< colours and opacity, four bytes a pixel
    std::array<std::uint32_t, 1024> m_colors {}; ///< those met, by a hash; 0: none
    int m_colorCount = 0;
};

/// Reads `rows` to their end.
ImageProof readProof(RowSource& rows, KeptPixels kept);

/// `rows`, of which `proof` tells what was handed out by the end of the pass. It is begun anew at
/// once, and outlives the rows.
std::unique_ptr<RowSource> provedRows(std::unique_ptr<RowSource> rows, KeptPixels kept,
                                      ImageProof& proof);

/// Takes a JPEG image by its coefficients, a row of MCUs after the other. What its digest is of
/// says all about the pixels that any decoder makes of them.
class BlockProofMaker
{
public:
    explicit BlockProofMaker(const JpegFrame& frame);

    /// What lies outside of the image does not count.
    void add(const JpegUnitRow& row);
    ImageProof proof() const;

private:
    const JpegFrame m_frame;
    PixelHash m_hash;
    int m_units = 0;
};

/// `blocks`, of which `proof` tells what was handed out, as `provedRows` does.
std::shared_ptr<JpegBlocks> provedBlocks(std::shared_ptr<JpegBlocks> blocks, ImageProof& proof);

/// Throws std::runtime_error, with what is not as it should be, unless `found` shows what was
/// `written` as far as a format that keeps `kept` can.
void compareProofs(const ImageProof& written, const ImageProof& found, KeptPixels kept);

} // namespace pagestack
