#pragma once

#include "engine/image/pixels/PageSource.h"
#include "engine/image/verify/PixelDigest.h"

#include <memory>
#include <vector>

namespace pagestack {

class StagedFile;

/// The samples of a page as a TIFF file has to hold them.
struct TiffPageProof
{
    enum class Way {
        Rows, ///< of the samples as they are stored
        Pieces, ///< strips or tiles of sub-sampled YCbCr
        Shown, ///< pixels, where no TIFF file can hold the samples as they are
    };
    Way way = Way::Rows;
    PixelDigest meaning {}; ///< size, depth, kind of the samples, colour map
    PixelDigest samples {};

    friend bool operator==(const TiffPageProof&, const TiffPageProof&) = default;
};

/// Decodes `page` completely, with a reader of its own, so that the page's messages stay as they
/// are. Throws std::runtime_error when it cannot be decoded. One thread at a time a source.
TiffPageProof proofOf(const PageSource& page);

/// What a TIFF file in the making must hold. One thread at a time.
class TiffProof
{
public:
    /// `proof` is of `page`, which was gathered as the next one.
    void add(std::shared_ptr<const PageSource> page, const TiffPageProof& proof);

    /// Reads the complete `file` back, whose pages must be those that were added. Strips and tiles
    /// that were copied are compared as they lie, since the source's were decoded for their proof;
    /// others are decoded. Throws std::runtime_error, with what is wrong with the file.
    void check(StagedFile& file) const;

    bool isEmpty() const { return m_pages.empty(); }

private:
    struct Page
    {
        std::shared_ptr<const PageSource> source;
        TiffPageProof proof;
    };
    std::vector<Page> m_pages;
};

} // namespace pagestack
