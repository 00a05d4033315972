#pragma once

#include "engine/files/StagedFile.h"
#include "engine/image/formats/Encoders.h"
#include "engine/image/verify/ImageProof.h"

#include <QString>

#include <memory>

namespace pagestack {

class TiffPage;
struct OpenImage;
enum class OutputType : int;

/// How a page is saved, as far as the format does not say it.
struct SaveOptions
{
    int jpegQuality = 10; ///< as for PageImage::saveAsJpegWithName
    int tiffCompressionIndex = 0; ///< as for PageImage::saveAsTiffWithName
    SpareThreads* threads = nullptr; ///< may help with a large page; null: there are none
    StagedFile::Existing existing = StagedFile::Existing::Replaced; ///< not for `encodedPage`
    bool verifies = false; ///< the complete file is read back and must show the page
    bool needsDigest = false; ///< not for `encodedPage`
    bool reencodes = false; ///< JPEG data of a page are not taken over
    /// The page that the source is a part of, which is told what the file lacks of it; null: none.
    const TiffPage* whole = nullptr;
};

/// A format that a page can be saved in.
struct PageEncoding
{
    OutputType type {};
    QLatin1StringView name; ///< for reasons of failures
    TargetPixels pixels {};
    bool takesProfile = false;
    bool readsAhead = false; ///< a spare thread reads the rows, else it helps the encoder
    bool holdsMetadata = false;
    int mostSidePx = 0; ///< of the upright page
    void (*encode)(UprightPage& page, StagedFile& file) = nullptr; ///< null: the page is copied
    KeptPixels kept {}; ///< of what `encode` gets, as the two below
    ImageProof (*readBack)(ByteFile& file) = nullptr;
    OpenImage (*open)(ByteFile& file) = nullptr; ///< null: it is a TIFF file
    /// For a page whose coefficients are taken over; null: the format has none.
    void (*encodeBlocks)(UprightPage& page, JpegBlocks& blocks, StagedFile& file) = nullptr;
    ImageProof (*readBlocksBack)(ByteFile& file) = nullptr;
};

const PageEncoding& pageEncoding(OutputType type);

/// The encoding for a name that ends in bmp, jpg, png, gif or tiff, compared exactly. Throws
/// std::runtime_error for another extension.
const PageEncoding& pageEncoding(const QString& path);

/// Returns the page as a complete file for `path`, only to be put in place. Throws
/// std::runtime_error, also for a file that does not show the page when that is asked for. One
/// thread at a time a source.
std::unique_ptr<StagedFile> encodedPage(const std::shared_ptr<const PageSource>& source,
                                        const QString& path, const PageEncoding& encoding,
                                        const SaveOptions& options);

} // namespace pagestack
