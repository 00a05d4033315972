#pragma once

#include <QString>

namespace pagestack {

/// How gray and colour become black and white.
enum class Bilevel : int {
    None, ///< they do not
    Threshold, ///< white from `PageTreatment::threshold` on
    Otsu, ///< the same with the threshold that parts a page's levels best
    Dither, ///< error diffusion
};

/// What is done to a page besides what its format asks for. The pages of a document share it.
struct PageTreatment
{
    bool stripsMetadata = false; ///< texts, XMP, Exif, IPTC stay behind; profile and density do not
    bool convertsToSrgb = false; ///< through the embedded profile
    Bilevel bilevel = Bilevel::None;
    int threshold = 128; ///< 1..255, of luminance in 8 bits
    bool keepsCompression = false; ///< of TIFF pages in TIFF files, where their data can be copied
    bool keepsDate = false; ///< outputs get the modification time of their source
    int expectedDpi = 0; ///< pages of another resolution get a warning; 0: none does

    friend bool operator==(const PageTreatment&, const PageTreatment&) = default;
};

/// The choices of a run beside those of Settings. A default-made record is a run without any.
struct RunOptions
{
    PageTreatment treatment;
    bool mirrorsFolders = false; ///< sources' folders are repeated below the output folder
    int digits = 1; ///< of a page number, at least, 1..9; 0: as many as the source's last page has
    QString namePattern; ///< empty: the usual names
    QString pages; ///< those that are converted, "1,3-5,-1"; empty: all
    bool skipsReduced = false; ///< thumbnails and masks are no pages
    bool reencodes = false; ///< JPEG: data that could be taken over are decoded and encoded anew
    bool verifies = false; ///< outputs are read back before they get their names
    bool writesChecksums = false; ///< SHA256SUMS beside the outputs
    bool writesRecord = false; ///< a JSON document of the run, beside its log
    bool tellsDigests = false; ///< to who listens to the run's events

    /// Whether sizes and digests of sources and outputs are wanted.
    bool needsDigests() const { return writesChecksums || writesRecord || tellsDigests; }

    friend bool operator==(const RunOptions&, const RunOptions&) = default;
};

} // namespace pagestack
